#pragma once

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>

#include "netconf/state/commits.h"
#include "netconf/state/database.h"
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
  explicit Journal(const std::filesystem::path& file);

  /// Nothing was stored yet: begin() comes first.
  [[nodiscard]] bool is_new() const { return newest_ == 0; }
  /// Stores the configuration that the history begins with.
  void begin(const store::Datastore& datastore, const Author& author);

  [[nodiscard]] Number newest() const { return newest_; }
  Connection& connection() { return database_.connection(); }

  [[nodiscard]] std::optional<LeftUnconfirmed> left_unconfirmed();

  /// Stores a commit, and what waits to be confirmed after it. When it returns, both outlive the
  /// process and the machine's power. A commit that changes nothing has no number. `after` is the
  /// configuration with the commit; null if the datastore does not have it yet.
  void record(const Commit& commit, const std::optional<Unconfirmed>& unconfirmed,
              const store::Datastore* after);

 private:
  void keep(const std::optional<Unconfirmed>& unconfirmed);
  [[nodiscard]] bool is_snapshot_due(std::size_t size) const;

  OwnedDatabase database_;
  Number newest_ = 0;
  bool has_unconfirmed_ = false;
  std::size_t snapshot_size_ = 0;
  std::size_t size_since_ = 0;  ///< of the changes after the snapshot
};

}  // namespace tarnd::netconf::state
