#pragma once

#include <chrono>
#include <ctime>
#include <optional>

#include "netconf/state/commits.h"
#include "netconf/state/snapshots.h"
#include "netconf/state/sqlite.h"

namespace tarnd::netconf::state {

/// How much of the history is kept: at least so many of the newest commits, or at least those of so
/// much time. Without either all of it.
struct Keep {
  std::optional<Number> commits;
  std::optional<std::chrono::seconds> age;

  [[nodiscard]] bool is_all() const { return !commits.has_value() && !age.has_value(); }
};

/// Whether nothing would be lost that has to be kept if the history began with the commit.
bool may_begin_with(const Keep& keep, Number number, std::time_t time, Number newest,
                    std::time_t now);

/// Lets the history begin with the latest snapshot that it may begin with. To be called within a
/// transaction. Throws Failure.
void drop_old_commits(Connection& connection, const Keep& keep, Number newest, std::time_t now);

}  // namespace tarnd::netconf::state
