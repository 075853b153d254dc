#pragma once

#include <chrono>
#include <cstddef>
#include <ctime>
#include <deque>
#include <filesystem>
#include <optional>
#include <string>

#include "netconf/state/commits.h"
#include "netconf/state/database.h"
#include "netconf/state/keeping.h"
#include "standalone/store/transaction.h"

namespace tarnd::netconf::state {

/// The newest commit waits to be confirmed.
struct Unconfirmed {
  std::string persist;  ///< empty: it ends with its session, and so with the process
  std::chrono::seconds left{0};
};

/// One that waited when the process before ended.
struct LeftUnconfirmed {
  Number since = 0;  ///< the commit to go back to
  std::string persist;
  std::chrono::seconds left{0};  ///< negative if the time is over
  bool same_boot = false;        ///< the machine was not started again since then
};

/// The state of the process that serves it. Every function throws Failure, and then has changed
/// nothing.
class Journal {
 public:
  explicit Journal(const std::filesystem::path& file, Keep keep = {});

  /// Nothing was stored yet: begin() comes first.
  [[nodiscard]] bool is_new() const { return newest_ == 0; }
  /// Stores the configuration that the history begins with.
  void begin(const store::Datastore& datastore, const Author& author);

  [[nodiscard]] Number newest() const { return newest_; }
  /// The newest commits, the newest first; so many that they need little room.
  [[nodiscard]] const std::deque<CommitLine>& latest() const { return latest_; }
  Connection& connection() { return database_.connection(); }

  [[nodiscard]] std::optional<LeftUnconfirmed> left_unconfirmed();

  /// Stores a commit, and what waits to be confirmed after it. When it returns, both outlive the
  /// process; sync() comes before a reply reports them. A commit that changes nothing has no
  /// number.
  void record(const Commit& commit, const std::optional<Unconfirmed>& unconfirmed);

  /// When it returns, all that was recorded outlives the machine's power. After a failure nobody
  /// knows what the disk has, so that the process must end without an answer; what follows fails,
  /// too.
  void sync();

  /// What need not be done before an answer: a new snapshot when one is due, old commits go, and
  /// the log is emptied. Nothing is lost if it fails; it is tried again after the next commit.
  void tend(const store::Transaction& candidate);

 private:
  void note(const Commit& commit);
  void keep_unconfirmed(const std::optional<Unconfirmed>& unconfirmed);
  void check_disk_is_known();
  [[nodiscard]] bool is_snapshot_due(std::time_t now) const;
  void renew_snapshot(const store::Transaction& candidate, std::time_t now);

  OwnedDatabase database_;
  const Keep keep_;
  Number newest_ = 0;
  std::deque<CommitLine> latest_;
  bool has_unconfirmed_ = false;
  bool is_synced_ = false;  // a process before may have ended without
  bool is_disk_unknown_ = false;
  bool is_tended_ = false;
  Snapshot snapshot_;           // the newest one
  std::size_t size_since_ = 0;  // of the changes after the snapshot
};

}  // namespace tarnd::netconf::state
