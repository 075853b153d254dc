#pragma once

#include <unistd.h>
#include <chrono>
#include <cstdio>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "standalone/platform_calls.h"

namespace tarnd::test {

/// Notes the platform calls from now on, all of which pass but those of the kind that is to fail;
/// those of the trace are left out.
class RecordedCalls {
 public:
  explicit RecordedCalls(std::optional<PlatformCall> failing = std::nullopt) {
    set_call_hook([this, failing](PlatformCall call) {
      if (call != PlatformCall::qzmw_trace_register_category) names_.emplace_back(to_string(call));
      return call != failing;
    });
  }
  RecordedCalls(const RecordedCalls&) = delete;
  RecordedCalls& operator=(const RecordedCalls&) = delete;
  ~RecordedCalls() { set_call_hook({}); }

  [[nodiscard]] const std::vector<std::string>& names() const { return names_; }

 private:
  std::vector<std::string> names_;
};

/// Lets each platform call of a kind take some milliseconds from now on.
class SlowCalls {
 public:
  SlowCalls(PlatformCall slow, int msecs) {
    set_call_hook([slow, msecs](PlatformCall call) {
      if (call == slow) std::this_thread::sleep_for(std::chrono::milliseconds(msecs));
      return true;
    });
  }
  SlowCalls(const SlowCalls&) = delete;
  SlowCalls& operator=(const SlowCalls&) = delete;
  ~SlowCalls() { set_call_hook({}); }
};

/// Notes the platform calls that take a path from now on, each with its path, such as
/// "maapi_exists /config/service-port".
class RecordedPaths {
 public:
  RecordedPaths() {
    set_call_hook([this](PlatformCall call) {
      last_call_ = to_string(call);
      return true;
    });
    set_path_hook([this](const std::string& path) {
      // The stand-alone platform may read the path of a call more than once.
      if (!last_call_.empty()) calls_.push_back(last_call_ + " " + path);
      last_call_.clear();
    });
  }
  RecordedPaths(const RecordedPaths&) = delete;
  RecordedPaths& operator=(const RecordedPaths&) = delete;
  ~RecordedPaths() {
    set_call_hook({});
    set_path_hook({});
  }

  [[nodiscard]] const std::vector<std::string>& calls() const { return calls_; }

 private:
  std::string last_call_;
  std::vector<std::string> calls_;
};

/// From now on writes the name of each platform call among the records of the trace, a line such as
/// "CALL maapi_exists", so that a TraceCapture shows the order. The calls of one kind can be made
/// to fail; those of the trace are left out.
class CallsAmongRecords {
 public:
  explicit CallsAmongRecords(std::optional<PlatformCall> failing = std::nullopt) {
    set_call_hook([failing](PlatformCall call) {
      if (call != PlatformCall::qzmw_trace_register_category) {
        dprintf(STDERR_FILENO, "CALL %s\n", std::string(to_string(call)).c_str());
      }
      return call != failing;
    });
  }
  CallsAmongRecords(const CallsAmongRecords&) = delete;
  CallsAmongRecords& operator=(const CallsAmongRecords&) = delete;
  ~CallsAmongRecords() { set_call_hook({}); }
};

}  // namespace tarnd::test
