#pragma once

#include <cstddef>
#include <ctime>
#include <span>
#include <string>

#include "netconf/state/commits.h"
#include "netconf/state/sqlite.h"
#include "standalone/store/transaction.h"

namespace tarnd::netconf::state {

/// Edits the transaction by these changes. Throws InputError.
void apply_changes(store::Transaction& transaction, std::span<const store::ItemChange> changes);

// What follows throws Failure.

/// A configuration that is stored as a whole.
struct Snapshot {
  Number number = 0;     ///< of the commit that led to it; 0: there is no snapshot
  std::time_t time = 0;  ///< of that commit
  std::size_t size = 0;
};

/// The configuration as a snapshot has it: XML without white space.
std::string snapshot_text(const store::Datastore& datastore);

/// Keeps the configuration as it is after a commit. Of the snapshots before, only the oldest ones
/// stay, so many of them.
void keep_snapshot(Connection& connection, Number number, const std::string& configuration,
                   int oldest);
Snapshot newest_snapshot(Connection& connection);

/// Makes the datastore, which no transaction has open, the configuration after a commit, from the
/// snapshot that is nearest.
void restore(Connection& connection, store::Datastore& datastore, Number number);

/// Edits the transaction, which has the configuration after the newest commit, into the one after
/// an earlier commit. Throws InputError, too.
void take_back(Connection& connection, store::Transaction& transaction, Number newest,
               Number number);

/// Commits what leads from the configuration after one commit, which the transaction has, to that
/// after another one.
void replay(Connection& connection, store::Transaction& transaction, Number from, Number to);

}  // namespace tarnd::netconf::state
