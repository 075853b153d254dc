#pragma once

#include <filesystem>

#include "netconf/state/sqlite.h"
#include "standalone/descriptor.h"

namespace tarnd::netconf::state {

/// The state for the one process that writes to it. Made, but empty, if there is no such file; its
/// tables are brought up to date. Throws Failure.
class OwnedDatabase {
 public:
  explicit OwnedDatabase(const std::filesystem::path& file);
  OwnedDatabase(const OwnedDatabase&) = delete;
  OwnedDatabase& operator=(const OwnedDatabase&) = delete;
  ~OwnedDatabase() = default;

  Connection& connection() { return connection_; }
  /// Empties the log if it has grown enough since the last time.
  void empty_log();
  /// Nothing was made in it yet.
  [[nodiscard]] bool is_new() const { return is_new_; }

 private:
  Descriptor lock_;  // closed last: with it go the locks that SQLite has
  Connection connection_;
  bool is_new_ = false;
  int log_pages_ = 0;
  int log_pages_left_ = 0;  // after it was emptied the last time
};

/// The state for a process that only reads, while another one may write to it. Throws Failure.
Connection open_to_read(const std::filesystem::path& file);

}  // namespace tarnd::netconf::state
