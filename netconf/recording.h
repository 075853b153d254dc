#pragma once

#include <optional>
#include <string>

#include "netconf/operation.h"
#include "netconf/rpc_error.h"
#include "netconf/state/failure.h"

namespace tarnd::netconf {

/// Stores the commit of the prepared candidate, which was accepted and is not done yet, and what
/// waits to be confirmed after it. Refuses the operation if it cannot be stored. Does nothing if
/// everything is in memory.
void record_commit(const Run& run, const CommitReport& report,
                   const std::optional<PendingCommit>& pending);

/// Stores that the pending commit is taken back, before it is. Throws state::Failure.
void record_return(Card& card, const std::string& why);

RpcError rpc_error(const state::Failure& failure);

}  // namespace tarnd::netconf
