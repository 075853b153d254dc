#include "middleware/qzmw.h"

#include <execinfo.h>
#include <sys/mman.h>
#include <unistd.h>
#include <zlog.h>

#include <array>
#include <cstdio>
#include <stdexcept>
#include <string>

#include "middleware/logger.h"
#include "standalone/middleware/trace.h"
#include "standalone/platform_calls.h"

namespace tarnd {
namespace {

constexpr const char* kLevelsAndFormat =
    "[levels]\n"
    "DETAIL = 10\n"
    "ENTRY = 11\n"
    "FLOW = 12\n"
    "[formats]\n"
    "record = \"%V %U %F:%L %m%n\"\n"
    "[rules]\n";

constexpr const char* kCannotStart = "the log library cannot use its configuration";

constexpr const char* kDebugCategory = "daemon-debug";
constexpr int kDebugLevel = 10;
constexpr std::string_view kDebugSource = "standalone/middleware/qzmw";
constexpr std::string_view kDebugFunction = "Debug";

constexpr int kMostFrames = 64;

bool log_library_runs = false;

// Without a rule nothing is written, and a record costs no more than the test of a bit.
std::string rules_of(TraceLevel level) {
  switch (level) {
    case TraceLevel::kOff:
      return "";
    case TraceLevel::kFlow:
      return "*.FLOW >stderr; record\n";
    case TraceLevel::kEntry:
      return "*.ENTRY >stderr; record\n";
    case TraceLevel::kDetail:
      return "*.DETAIL >stderr; record\n";
  }
  return "";
}

// The configuration as a file, because the log library leaks memory if it is given the text itself.
class FileInMemory {
 public:
  explicit FileInMemory(const std::string& text) : descriptor_(memfd_create("trace", MFD_CLOEXEC)) {
    const ssize_t written = write(descriptor_, text.data(), text.size());
    if (written == static_cast<ssize_t>(text.size())) return;
    close(descriptor_);
    throw std::runtime_error(kCannotStart);
  }
  FileInMemory(const FileInMemory&) = delete;
  FileInMemory& operator=(const FileInMemory&) = delete;
  ~FileInMemory() { close(descriptor_); }
  [[nodiscard]] std::string name() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

 private:
  int descriptor_;
};

// Categories live as long as the process, since the plug-in keeps the one that it registered.
zlog_category_t* category(const char* name) {
  if (!log_library_runs) start_trace(TraceLevel::kOff);
  return zlog_get_category(name);
}

const char* text_of(const char* text) {
  return text != nullptr ? text : "";
}

}  // namespace

void route_records(const std::string& configuration) {
  const FileInMemory file(configuration);
  const int result =
      log_library_runs ? zlog_reload(file.name().c_str()) : zlog_init(file.name().c_str());
  if (result != 0) throw std::runtime_error(kCannotStart);
  log_library_runs = true;
}

void start_trace(TraceLevel level) {
  route_records(kLevelsAndFormat + rules_of(level));
}

void write_record(RecordLevel level, const std::string& text) {
  static zlog_category_t* const own = category("gponval");
  constexpr std::string_view kSource = "gponval";
  constexpr std::string_view kFunction = "serve";
  zlog(own, kSource.data(), kSource.size(), kFunction.data(), kFunction.size(), __LINE__,
       static_cast<int>(level), "%s", text.c_str());
}

}  // namespace tarnd

zlog_category_t* qzmw_trace_register_category(const char* name) {
  if (!tarnd::enter_platform_call(tarnd::PlatformCall::qzmw_trace_register_category)) {
    return nullptr;
  }
  return tarnd::category(name);
}

void Logger::Debug(const std::string& text) {
  tarnd::enter_platform_call(tarnd::PlatformCall::Logger_Debug);
  static zlog_category_t* const category = tarnd::category(tarnd::kDebugCategory);
  zlog(category, tarnd::kDebugSource.data(), tarnd::kDebugSource.size(),
       tarnd::kDebugFunction.data(), tarnd::kDebugFunction.size(), __LINE__, tarnd::kDebugLevel,
       "%s", text.c_str());
}

void qzmw_print_backtrace() {
  tarnd::enter_platform_call(tarnd::PlatformCall::qzmw_print_backtrace);
  std::array<void*, tarnd::kMostFrames> frames{};
  const int depth = backtrace(frames.data(), tarnd::kMostFrames);
  std::fputs("Backtrace:\n", stderr);
  std::fflush(stderr);
  backtrace_symbols_fd(frames.data(), depth, STDERR_FILENO);
}

void qzmw_gen_fault(int kind, const char* module, const char* file, int line, const char* text) {
  tarnd::enter_platform_call(tarnd::PlatformCall::qzmw_gen_fault);
  std::fprintf(stderr, "Fault %d raised by %s at %s:%d: %s\n", kind, tarnd::text_of(module),
               tarnd::text_of(file), line, tarnd::text_of(text));
}
