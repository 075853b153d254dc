#include "netconf/state/snapshots.h"

#include <algorithm>
#include <memory>
#include <string>

#include "netconf/data_text.h"
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

// By number alone: to sort the configurations themselves takes a temporary file.
Number nearest_snapshot(Connection& connection, Number number) {
  Statement select(connection, "SELECT number FROM snapshots ORDER BY abs(number - ?) LIMIT 1");
  return select.bind(1, number).step() ? select.integer(0) : 0;
}

// Without reading it, which length() does.
std::size_t size_of_snapshot(const Connection& connection, Number number) {
  sqlite3_blob* opened = nullptr;
  const int result = sqlite3_blob_open(connection.handle(), "main", "snapshots", "configuration",
                                       number, 0, &opened);
  const std::unique_ptr<sqlite3_blob, int (*)(sqlite3_blob*)> blob(opened, &sqlite3_blob_close);
  if (result != SQLITE_OK) connection.fail();
  return static_cast<std::size_t>(sqlite3_blob_bytes(blob.get()));
}

Number load_nearest(Connection& connection, store::Datastore& datastore, Number number) {
  const Number nearest = nearest_snapshot(connection, number);
  Statement select(connection, "SELECT configuration FROM snapshots WHERE number = ?");
  if (!select.bind(1, nearest).step()) {
    throw Failure("state '" + connection.name() + "': it has no configuration");
  }
  try {
    datastore.load(select.text(0), Format::kXml);
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

std::string snapshot_text(const store::Datastore& datastore) {
  datastore.settle_order();
  std::string text;
  append_data(text, datastore.root(), Defaults::kExplicit);
  return text;
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
                   "SELECT number, time FROM snapshots JOIN commits USING (number)"
                   " ORDER BY number DESC LIMIT 1");
  if (!select.step()) return {};
  const Number number = select.integer(0);
  return {number, static_cast<std::time_t>(select.integer(1)),
          size_of_snapshot(connection, number)};
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
