#pragma once

#include <optional>
#include <string>
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

}  // namespace tarnd::test
