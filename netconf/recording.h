#pragma once

#include <optional>
#include <string>

#include "netconf/operation.h"
#include "netconf/rpc_error.h"
#include "netconf/state/commits.h"
#include "netconf/state/failure.h"

namespace tarnd::netconf {

/// What is stored of the transaction's commit, which was accepted and is not done yet.
state::Commit accepted_commit(state::Kind kind, state::Author author, const CommitReport& report,
                              const store::Transaction& transaction);

/// Writes down the commit of the prepared candidate, which was accepted and is not done yet, and
/// what waits to be confirmed after it. Refuses the operation if that fails. Does nothing if
/// everything is in memory.
void record_commit(const Run& run, const CommitReport& report,
                   const std::optional<PendingCommit>& pending);

/// Writes down that the pending commit is taken back, before it is. Throws state::Failure.
void record_return(Card& card, const std::string& why);

/// Syncs what was stored to the disk. To be called before a reply reports a commit. Throws
/// state::Failure, after which the server must end.
void sync_commits(Card& card);
/// Does what the stored commits need and no client waits for. Logs what fails.
void tend_commits(Card& card);

RpcError rpc_error(const state::Failure& failure);

}  // namespace tarnd::netconf
