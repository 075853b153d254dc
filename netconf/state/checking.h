#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "netconf/state/commits.h"
#include "netconf/state/sqlite.h"
#include "standalone/store/schema.h"

namespace tarnd::netconf::state {

/// Commits in a row, both ends included.
struct CommitRange {
  Number first = 0;
  Number last = 0;
};

struct CheckReport {
  std::int64_t version = 0;  ///< of the tables
  Number oldest = 0;
  Number newest = 0;
  std::vector<Number> snapshots;
  bool has_unconfirmed = false;
  std::vector<std::string> problems;  ///< one line each; none: the state is sound
  /// The commits whose configuration is certain, and found by restore().
  std::vector<CommitRange> readable;
};

/// Checks the file, its tables, and each commit: they are replayed from the oldest snapshot on,
/// have to change what they say, and lead to the later snapshots byte for byte. What is wrong is in
/// the report. To be called within a transaction that reads.
CheckReport check(Connection& connection, const store::Schema& schema);

}  // namespace tarnd::netconf::state
