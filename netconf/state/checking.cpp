#include "netconf/state/checking.h"

#include <algorithm>
#include <cstdlib>
#include <stdexcept>
#include <utility>

#include "netconf/state/failure.h"
#include "netconf/state/snapshots.h"
#include "standalone/input_error.h"
#include "standalone/store/transaction.h"

namespace tarnd::netconf::state {
namespace {

using store::Datastore;
using store::Format;
using store::ItemChange;
using store::Transaction;

std::string commit_name(Number number) {
  return "commit " + std::to_string(number);
}

// What an action fails with is one of the problems.
template <typename Action>
void note(std::vector<std::string>& problems, Action action) {
  try {
    action();
  } catch (const Failure& failure) {
    problems.emplace_back(failure.what());
  }
}

void check_file(Connection& connection, std::vector<std::string>& problems) {
  Statement integrity(connection, "PRAGMA integrity_check");
  while (integrity.step()) {
    if (integrity.text(0) != "ok") problems.push_back("the file: " + integrity.text(0));
  }
  Statement keys(connection, "PRAGMA foreign_key_check");
  while (keys.step()) {
    problems.push_back("the table " + keys.text(0) + ": row " + std::to_string(keys.integer(1)) +
                       " names a row that table " + keys.text(2) + " does not have");
  }
}

std::vector<Number> snapshots_of(Connection& connection) {
  Statement select(connection, "SELECT number FROM snapshots ORDER BY number");
  std::vector<Number> numbers;
  while (select.step()) numbers.push_back(select.integer(0));
  return numbers;
}

void load_snapshot(Connection& connection, Datastore& datastore, Number number) {
  Statement select(connection, "SELECT configuration FROM snapshots WHERE number = ?");
  select.bind(1, number).step();
  try {
    datastore.load(select.text(0), Format::kXml);
  } catch (const InputError& error) {
    throw Failure("the snapshot of " + commit_name(number) + " cannot be read: " + error.what());
  }
}

std::vector<ItemChange> in_order(std::vector<ItemChange> changes) {
  std::sort(changes.begin(), changes.end(),
            [](const ItemChange& left, const ItemChange& right) { return left.path < right.path; });
  return changes;
}

// The record of a commit can be read, but not replayed.
class NotReplayed : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

void replay_exactly(Transaction& transaction, Number number,
                    const std::vector<ItemChange>& changes) {
  try {
    apply_changes(transaction, changes);
  } catch (const InputError& error) {
    throw NotReplayed(commit_name(number) + " cannot be replayed: " + error.what());
  }
  if (in_order(transaction.item_changes()) != in_order(changes)) {
    throw NotReplayed(commit_name(number) +
                      " does not fit the configuration before it: it or an "
                      "earlier one was altered");
  }
  transaction.commit();
}

// Replays commits, forwards or backwards, as far as that works. Returns the last one whose
// configuration was reached, `from` at least. If that is not `to`, the record after it cannot be
// read, or `why` says what is wrong.
Number replay_from(Connection& connection, Datastore& datastore, Number from, Number to,
                   std::string& why) {
  Transaction transaction(datastore);
  Number reached = from;
  try {
    while (reached < to) {
      const Number next = reached + 1;
      for_each_change(connection, next, next,
                      [&](Number number, const std::vector<ItemChange>& changes) {
                        replay_exactly(transaction, number, changes);
                      });
      reached = next;
    }
    while (reached > to) {
      for_each_change(connection, reached, reached,
                      [&](Number number, std::vector<ItemChange> changes) {
                        replay_exactly(transaction, number, store::reversed(std::move(changes)));
                      });
      --reached;
    }
  } catch (const NotReplayed& error) {
    why = error.what();
  } catch (const Failure&) {
    why.clear();
  }
  return reached;
}

void check_records(Connection& connection, CheckReport& report) {
  for (Number number = report.oldest; number <= report.newest; ++number) {
    try {
      const Commit commit = read(connection, number);
      if (number == report.oldest || !commit.changes.empty()) continue;
      report.problems.push_back(commit_name(number) + " changes nothing, but was stored");
    } catch (const Failure& failure) {
      report.problems.push_back(commit_name(number) + " cannot be read: " + failure.what());
    }
  }
}

// From each snapshot to the next one, and from the last one to the newest commit.
void check_replay(Connection& connection, const store::Schema& schema, CheckReport& report) {
  Datastore datastore(schema);
  bool is_loaded = false;
  for (auto snapshot = report.snapshots.begin(); snapshot != report.snapshots.end(); ++snapshot) {
    const bool is_last = snapshot + 1 == report.snapshots.end();
    const Number to = is_last ? report.newest : *(snapshot + 1);
    if (!is_loaded) load_snapshot(connection, datastore, *snapshot);
    std::string why;
    is_loaded = replay_from(connection, datastore, *snapshot, to, why) == to;
    if (!why.empty()) report.problems.push_back(why);
    if (!is_loaded || is_last) continue;
    Datastore expected(schema);
    load_snapshot(connection, expected, to);
    is_loaded = datastore.print(Format::kXml) == expected.print(Format::kXml);
    if (!is_loaded) {
      report.problems.push_back("the snapshot of " + commit_name(to) +
                                " is not what the commits before it lead to");
    }
  }
}

// What is certain on both sides of a snapshot.
CommitRange range_around(Connection& connection, const store::Schema& schema, Number snapshot,
                         const CheckReport& report) {
  std::string ignored;
  Datastore datastore(schema);
  load_snapshot(connection, datastore, snapshot);
  CommitRange range;
  range.first = replay_from(connection, datastore, snapshot, report.oldest, ignored);
  load_snapshot(connection, datastore, snapshot);
  range.last = replay_from(connection, datastore, snapshot, report.newest, ignored);
  return range;
}

// restore() begins with the snapshot that is nearest to a commit.
void find_readable(Connection& connection, const store::Schema& schema, CheckReport& report) {
  std::vector<std::pair<Number, CommitRange>> around;
  for (const Number snapshot : report.snapshots) {
    CommitRange range{snapshot, snapshot - 1};
    std::vector<std::string> known;
    note(known, [&] { range = range_around(connection, schema, snapshot, report); });
    around.emplace_back(snapshot, range);
  }
  for (Number number = report.oldest; number <= report.newest; ++number) {
    const auto nearest =
        std::min_element(around.begin(), around.end(), [number](const auto& a, const auto& b) {
          return std::abs(a.first - number) < std::abs(b.first - number);
        });
    if (nearest == around.end()) return;
    const CommitRange& range = nearest->second;
    if (number < range.first || number > range.last) continue;
    if (!report.readable.empty() && report.readable.back().last == number - 1) {
      report.readable.back().last = number;
    } else {
      report.readable.push_back({number, number});
    }
  }
}

void read_numbers(Connection& connection, CheckReport& report) {
  report.version = connection.number("PRAGMA user_version");
  report.oldest = oldest(connection);
  report.newest = newest(connection);
  report.snapshots = snapshots_of(connection);
  report.has_unconfirmed = connection.number("SELECT count(*) FROM pending") != 0;
  if (report.oldest == 0) report.problems.emplace_back("there is no commit");
  if (report.snapshots.empty()) {
    report.problems.emplace_back("there is no snapshot to begin with");
  } else if (report.snapshots.front() != report.oldest) {
    report.problems.push_back("the oldest snapshot is of " + commit_name(report.snapshots.front()) +
                              ", not of " + commit_name(report.oldest));
  }
}

}  // namespace

CheckReport check(Connection& connection, const store::Schema& schema) {
  CheckReport report;
  note(report.problems, [&] { check_file(connection, report.problems); });
  note(report.problems, [&] { read_numbers(connection, report); });
  note(report.problems, [&] { check_records(connection, report); });
  note(report.problems, [&] { check_replay(connection, schema, report); });
  if (report.problems.empty()) {
    report.readable = {{report.oldest, report.newest}};
  } else {
    note(report.problems, [&] { find_readable(connection, schema, report); });
  }
  return report;
}

}  // namespace tarnd::netconf::state
