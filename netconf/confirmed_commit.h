#pragma once

#include <chrono>
#include <string>

#include "netconf/operation.h"

namespace tarnd::netconf {

/// Refuses a change of running that would go between a confirmed commit and what confirms it. The
/// one that may confirm it has its session or, if it outlives that, its persist-id.
void check_pending_allows(const Run& run);

/// Does the commit, which may be confirmed, confirm one, or be neither.
std::string commit_with_return(const Run& run, std::string (*commit)(const Run&));

std::string cancel_commit(const Run& run);

/// Takes a pending commit back if its time is over.
void end_late_commit(Card& card, std::chrono::steady_clock::time_point now);
/// Takes a pending commit back if it ends with this session.
void end_pending_of(Card& card, SessionId session);

}  // namespace tarnd::netconf
