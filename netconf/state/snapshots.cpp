#include "netconf/state/snapshots.h"

#include <algorithm>
#include <string>

#include "netconf/state/edit_text.h"
#include "netconf/state/failure.h"
#include "netconf/state/net_changes.h"
#include "standalone/input_error.h"

namespace tarnd::netconf::state {
namespace {

using store::Format;
using store::ItemChange;

[[noreturn]] void damaged(const Connection& connection, const std::string& what,
                          const InputError& error) {
  throw Failure("state '" + connection.name() + "': " + what + ": " + error.what() +
                "; it is damaged, or of another model");
}

Number load_nearest(Connection& connection, store::Datastore& datastore, Number number) {
  Statement select(connection,
                   "SELECT number, configuration FROM snapshots ORDER BY abs(number - ?) LIMIT 1");
  select.bind(1, number);
  if (!select.step()) throw Failure("state '" + connection.name() + "': it has no configuration");
  const Number nearest = select.integer(0);
  try {
    datastore.load(select.text(1), Format::kXml);
  } catch (const InputError& error) {
    damaged(connection, "the configuration of commit " + std::to_string(nearest) + " is unreadable",
            error);
  }
  return nearest;
}

}  // namespace

void apply_changes(store::Transaction& transaction, std::span<const ItemChange> changes) {
  for (const std::string& text : edit_texts(transaction.datastore().schema(), changes)) {
    transaction.edit(text, Format::kXml);
  }
}

void keep_snapshot(Connection& connection, Number number, const std::string& configuration,
                   int oldest) {
  Statement(connection, "INSERT INTO snapshots (number, configuration) VALUES (?, ?)")
      .bind(1, number)
      .bind(2, std::string_view(configuration))
      .run();
  Statement(connection,
            "DELETE FROM snapshots WHERE number <> ? AND number NOT IN"
            " (SELECT number FROM snapshots ORDER BY number LIMIT ?)")
      .bind(1, number)
      .bind(2, std::int64_t{oldest})
      .run();
}

Snapshot newest_snapshot(Connection& connection) {
  Statement select(connection,
                   "SELECT number, time, length(CAST(configuration AS BLOB)) FROM snapshots"
                   " JOIN commits USING (number) ORDER BY number DESC LIMIT 1");
  if (!select.step()) return {};
  return {select.integer(0), select.integer(1), static_cast<std::size_t>(select.integer(2))};
}

void restore(Connection& connection, store::Datastore& datastore, Number number) {
  const Number nearest = load_nearest(connection, datastore, number);
  store::Transaction transaction(datastore);
  replay(connection, transaction, nearest, number);
}

void take_back(Connection& connection, store::Transaction& transaction, Number newest,
               Number number) {
  apply_changes(transaction, changes_between(connection, newest, number));
}

void replay(Connection& connection, store::Transaction& transaction, Number from, Number to) {
  try {
    apply_changes(transaction, changes_between(connection, from, to));
    transaction.commit();
  } catch (const InputError& error) {
    const std::string first = std::to_string(std::min(from, to) + 1);
    const std::string last = std::to_string(std::max(from, to));
    damaged(connection,
            first == last ? "commit " + first + " cannot be replayed"
                          : "the commits " + first + " to " + last + " cannot be replayed",
            error);
  }
}

}  // namespace tarnd::netconf::state
