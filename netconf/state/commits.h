#pragma once

#include <cstdint>
#include <ctime>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "netconf/state/sqlite.h"
#include "standalone/daemon/daemon.h"
#include "standalone/store/item_changes.h"

namespace tarnd::netconf::state {

/// Commits count from 1, which is the configuration that the state began with.
using Number = std::int64_t;

enum class Kind {
  kImport,   ///< what a file had; no validator was asked
  kCommit,   ///< validated
  kReturn,   ///< a confirmed commit was taken back
  kRollback  ///< validated; what earlier commits did was taken back
};

/// "import", "commit", "return", "rollback".
std::string_view to_string(Kind kind);

/// Who made a commit, and what was said of it.
struct Author {
  std::string user;
  std::uint32_t session = 0;  ///< 0: no session
  std::optional<std::string> label;
  std::optional<std::string> comment;
};

struct Commit {
  Number number = 0;                       ///< 0 before it is stored
  std::int64_t time = std::time(nullptr);  ///< seconds since 1970
  Kind kind = Kind::kCommit;
  Author author;
  std::vector<store::ItemChange> changes;
  std::vector<Answer> answers;  ///< of a commit that was done its warnings were accepted
  std::vector<std::string> notices;
};

/// A commit as a list of commits shows it.
struct CommitLine {
  Number number = 0;
  std::int64_t time = 0;
  Kind kind = Kind::kCommit;
  Author author;
  std::int64_t changes = 0;  ///< items
};

// All throw Failure.

/// Stores a commit under the next number, which is returned. `size` is increased by the bytes of
/// its changes.
Number append(Connection& connection, const Commit& commit, std::size_t& size);
/// The numbers of the newest commit and of the oldest one; 0 for a state without commits.
Number newest(Connection& connection);
Number oldest(Connection& connection);
/// The bytes that the changes of the commits after this one have.
std::size_t size_after(Connection& connection, Number number);
/// The newest commits, the newest first.
std::vector<CommitLine> list(Connection& connection, std::int64_t most);
/// Throws Failure if there is no such commit.
void check_number(Connection& connection, Number number);
/// The same.
Commit read(Connection& connection, Number number);
/// The changes of the commits from one number to another, both included, in this order; the second
/// may be the smaller one.
void for_each_change(Connection& connection, Number from, Number to,
                     const std::function<void(Number, std::vector<store::ItemChange>)>& take);

}  // namespace tarnd::netconf::state
