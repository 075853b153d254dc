#include "netconf/state/server_address.h"

#include <cstdint>

namespace tarnd::netconf::state {
namespace {

// The table is of this version; one who only reads may meet an older one.
constexpr std::int64_t kSince = 2;

}  // namespace

void keep_server(Connection& connection, const std::string& socket) {
  if (server_of(connection) == socket) return;
  Statement(connection,
            "INSERT INTO server (one, socket) VALUES (1, ?)"
            " ON CONFLICT (one) DO UPDATE SET socket = excluded.socket")
      .bind(1, std::string_view(socket))
      .run();
}

void forget_server(Connection& connection) {
  if (server_of(connection).has_value()) connection.run("DELETE FROM server");
}

std::optional<std::string> server_of(Connection& connection) {
  if (connection.number("PRAGMA user_version") < kSince) return std::nullopt;
  Statement select(connection, "SELECT socket FROM server");
  if (!select.step()) return std::nullopt;
  return select.text(0);
}

}  // namespace tarnd::netconf::state
