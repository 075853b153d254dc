#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

#include "standalone/middleware/trace.h"

namespace tarnd::test {

/// Keeps what the trace writes from now on, one line for each record: level, function, source and
/// line, text.
class TraceCapture {
 public:
  explicit TraceCapture(TraceLevel level) {
    start_trace(level);
    testing::internal::CaptureStderr();
  }
  TraceCapture(const TraceCapture&) = delete;
  TraceCapture& operator=(const TraceCapture&) = delete;
  ~TraceCapture() {
    records();
    start_trace(TraceLevel::kOff);
  }

  /// Ends the capture and returns all that was written.
  const std::string& written() {
    if (capturing_) {
      capturing_ = false;
      written_ = testing::internal::GetCapturedStderr();
      std::istringstream lines(written_);
      for (std::string line; std::getline(lines, line);) {
        records_.push_back(line);
      }
    }
    return written_;
  }

  /// Ends the capture and returns the records.
  const std::vector<std::string>& records() {
    written();
    return records_;
  }

  /// Ends the capture: is the text part of a record?
  bool has(const std::string& text) { return count(text) > 0; }

  /// Ends the capture. Returns whether there is a record of the level, "FLOW" or "DETAIL", with
  /// exactly this text.
  bool has_record(const std::string& level, const std::string& text) {
    const std::vector<std::string>& all = records();
    return std::any_of(all.begin(), all.end(), [&](const std::string& record) {
      const std::size_t text_at = record.find(' ', record.find(".cpp:")) + 1;
      return record.rfind(level + " ", 0) == 0 && record.substr(text_at) == text;
    });
  }

  /// Ends the capture. Returns the number after the text in the first record that has it, -1 if
  /// none has.
  long figure(const std::string& text) {
    for (const std::string& record : records()) {
      const std::size_t at = record.find(text);
      if (at != std::string::npos) return std::atol(record.c_str() + at + text.size());
    }
    return -1;
  }

  std::ptrdiff_t count(const std::string& text) {
    const std::vector<std::string>& all = records();
    return std::count_if(all.begin(), all.end(), [&text](const std::string& record) {
      return record.find(text) != std::string::npos;
    });
  }

 private:
  bool capturing_ = true;
  std::string written_;
  std::vector<std::string> records_;
};

}  // namespace tarnd::test
