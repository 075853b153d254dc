#pragma once

#include <chrono>
#include <optional>
#include <string>

#include "netconf/operation.h"

namespace tarnd::netconf {

/// Refuses a change of running that would go between a confirmed commit and what confirms it. The
/// one that may confirm it has its session or, if it outlives that, its persist-id.
void check_pending_allows(const Run& run);

/// Commits the candidate; what it is given waits to be confirmed then.
using CommitFunction = std::string (*)(const Run&, const std::optional<PendingCommit>&);

/// Does the commit, which may be confirmed, confirm one, or be neither.
std::string commit_with_return(const Run& run, CommitFunction commit);

std::string cancel_commit(const Run& run);

/// Takes a pending commit back if its time is over.
void end_late_commit(Card& card, std::chrono::steady_clock::time_point now);
/// Takes a pending commit back if it ends with this session.
void end_pending_of(Card& card, SessionId session);
/// Takes a commit back that waited to be confirmed when the server before ended, or goes on
/// waiting: it outlives a process if it outlives its session, but no start of the machine (RFC
/// 6241, section 8.4). To be called first, with the configuration to go back to. Throws
/// state::Failure.
void resume_pending(Card& card);

}  // namespace tarnd::netconf
