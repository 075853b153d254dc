#pragma once

#include <span>

#include "netconf/state/sqlite.h"

namespace tarnd::netconf::state {

/// The steps that make the tables, the oldest first. A state has the first `user_version` of them;
/// a step never changes once it was released.
std::span<const char* const> schema_steps();

/// Whether the file is a new one, in which nothing was made yet.
bool is_new(Connection& connection);

/// Refuses a file that is no state, or one of a newer version. Throws Failure.
void check_version(Connection& connection, std::span<const char* const> steps = schema_steps());

/// Runs the steps that the state does not have yet; to be called within a transaction. Throws
/// Failure.
void migrate(Connection& connection, std::span<const char* const> steps = schema_steps());

}  // namespace tarnd::netconf::state
