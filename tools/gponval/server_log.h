#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>

#include "netconf/card.h"

namespace gponval {

/// Where the user wants the log of a server. Without a file it is standard error.
struct LogArguments {
  std::optional<std::string> file;
  std::optional<std::string> configuration;  ///< a file for zlog, which then decides all of it
  std::string level = "info";
};

void add_log_options(CLI::App& app, LogArguments& arguments, const char* group);

/// The log of a server.
class ServerLog {
 public:
  /// Throws UsageError if nothing can be written there.
  explicit ServerLog(LogArguments arguments);

  void write(tarnd::netconf::LogLevel level, const std::string& text) const;
  /// Goes on in new files if the old ones were moved away, and reads the configuration again.
  /// A failure is logged where that is possible, and ends nothing.
  void reopen() const;

 private:
  void open() const;

  LogArguments arguments_;
  tarnd::netconf::LogLevel most_;
};

}  // namespace gponval
