#include "netconf/state/snapshots.h"

#include <utility>
#include <vector>

#include "netconf/state/edit_text.h"
#include "netconf/state/failure.h"
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

void apply(const Connection& connection, store::Transaction& transaction, Number number,
           const std::vector<ItemChange>& changes) {
  try {
    apply_changes(transaction, changes);
    transaction.commit();
  } catch (const InputError& error) {
    damaged(connection, "commit " + std::to_string(number) + " cannot be replayed", error);
  }
}

// Takes commits back, the newest first.
void replay_back(Connection& connection, store::Transaction& transaction, Number from, Number to) {
  for_each_change(connection, from, to, [&](Number number, std::vector<ItemChange> changes) {
    apply(connection, transaction, number, store::reversed(std::move(changes)));
  });
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
  if (nearest < number) replay(connection, transaction, nearest + 1, number);
  if (nearest > number) replay_back(connection, transaction, nearest, number + 1);
}

void take_back(Connection& connection, store::Transaction& transaction, Number newest,
               Number number) {
  if (number == newest) return;
  for_each_change(connection, newest, number + 1, [&](Number, std::vector<ItemChange> changes) {
    apply_changes(transaction, store::reversed(std::move(changes)));
  });
}

void replay(Connection& connection, store::Transaction& transaction, Number from, Number to) {
  if (from > to) return;
  for_each_change(connection, from, to, [&](Number number, const std::vector<ItemChange>& changes) {
    apply(connection, transaction, number, changes);
  });
}

}  // namespace tarnd::netconf::state
