#include "tools/gponval/server_log.h"

#include <cerrno>
#include <cstring>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <utility>

#include "standalone/middleware/trace.h"
#include "tools/gponval/error_line.h"
#include "tools/gponval/options.h"
#include "tools/gponval/usage_error.h"

namespace gponval {
namespace {

namespace fs = std::filesystem;
using tarnd::RecordLevel;
using tarnd::netconf::LogLevel;

LogLevel level_named(const std::string& word) {
  if (word == "error") return LogLevel::kError;
  return word == "warning" ? LogLevel::kWarning : LogLevel::kInfo;
}

RecordLevel record_level(LogLevel level) {
  switch (level) {
    case LogLevel::kError:
      return RecordLevel::kError;
    case LogLevel::kWarning:
      return RecordLevel::kWarning;
    case LogLevel::kInfo:
      break;
  }
  return RecordLevel::kInfo;
}

// The file in quotes, in which "%" begins a field of the record.
std::string rule_for(const std::string& file) {
  if (file.find('"') != std::string::npos) {
    throw UsageError("--log: the name of a log has no double quotes");
  }
  std::string quoted;
  for (const char letter : fs::absolute(file).string()) {
    quoted += letter == '%' ? "%%" : std::string(1, letter);
  }
  return "gponval.* \"" + quoted + "\"; line\n";
}

std::string configuration_for(const std::string& file) {
  const std::ofstream writable(file, std::ios::app);
  if (!writable) throw UsageError("--log: cannot write '" + file + "': " + std::strerror(errno));
  return "[formats]\nline = \"%d(%F %T) %V %m%n\"\n[rules]\n" + rule_for(file);
}

std::string content_of(const std::string& file) {
  std::ifstream in(file);
  std::string content{std::istreambuf_iterator<char>(in), {}};
  if (in && !content.empty()) return content;
  throw UsageError("--log-config: cannot read '" + file +
                   "': " + (in ? "it is empty" : std::strerror(errno)));
}

}  // namespace

void add_log_options(CLI::App& app, LogArguments& arguments, const char* group) {
  CLI::Option* file = app.add_option("--log", arguments.file,
                                     "Where the log goes, instead of standard error; SIGHUP opens\n"
                                     "the file again")
                          ->type_name("FILE")
                          ->group(group);
  CLI::Option* level =
      add_choice(app, "--log-level", arguments.level, {"error", "warning", "info"},
                 "The least that is logged; info has each session and each commit (info)")
          ->group(group);
  app.add_option("--log-config", arguments.configuration,
                 "A configuration of zlog for the categories gponval (this log) and\n"
                 "gpon-valid (the plug-in's trace)")
      ->type_name("FILE")
      ->excludes(file)
      ->excludes(level)
      ->group(group);
}

ServerLog::ServerLog(LogArguments arguments)
    : arguments_(std::move(arguments)), most_(level_named(arguments_.level)) {
  open();
}

void ServerLog::open() const {
  if (arguments_.configuration.has_value()) {
    try {
      tarnd::route_records(content_of(*arguments_.configuration));
    } catch (const UsageError&) {
      throw;
    } catch (const std::exception& error) {
      throw UsageError("--log-config: '" + *arguments_.configuration + "': " + error.what());
    }
  }
  if (arguments_.file.has_value()) tarnd::route_records(configuration_for(*arguments_.file));
}

void ServerLog::write(LogLevel level, const std::string& text) const {
  if (level > most_) return;
  if (arguments_.file.has_value() || arguments_.configuration.has_value()) {
    tarnd::write_record(record_level(level), printable(text));
  } else {
    print_error(text);
  }
}

void ServerLog::reopen() const {
  try {
    open();
    write(LogLevel::kInfo, "the log is opened again");
  } catch (const std::exception& error) {
    write(LogLevel::kError, error.what());
  }
}

}  // namespace gponval
