#include "tests/catalogue/expected_trace.h"

#include <algorithm>
#include <array>
#include <regex>
#include <sstream>
#include <string_view>

#include "tests/support/trace_capture.h"

namespace tarnd::test {
namespace {

constexpr std::array<std::string_view, 3> kLevels{"DETAIL ", "ENTRY ", "FLOW "};

bool starts_record(const std::string& line) {
  return std::any_of(kLevels.begin(), kLevels.end(),
                     [&line](std::string_view level) { return line.starts_with(level); });
}

// A text may have several lines; if it ends with a line end, an empty line follows.
std::vector<std::string> split_records(const std::string& written) {
  std::vector<std::string> records;
  std::istringstream lines(written);
  for (std::string line; std::getline(lines, line);) {
    if (starts_record(line)) {
      records.push_back(line);
    } else {
      EXPECT_FALSE(records.empty()) << "no record: " << line;
      if (!records.empty()) records.back() += "\n" + line;
    }
  }
  return records;
}

std::string without_line(const std::string& record) {
  static const std::regex place("^([A-Z]+ \\S+ \\S+):[1-9][0-9]* ");
  EXPECT_TRUE(std::regex_search(record, place)) << "no line: " << record;
  return std::regex_replace(record, place, "$1 ");
}

std::string masked(std::string record) {
  struct Figure {
    std::regex written;
    const char* masked;
  };
  static const std::array<Figure, 4> figures{{
      {std::regex("elapsed time [0-9]+ msecs\\.$"), "elapsed time # msecs."},
      {std::regex(" Took [0-9]+ (m|u)secs to "), " Took # $1secs to "},
      {std::regex("(old|new)v:(0x[0-9a-f]+|\\(nil\\))"), "$1v:#"},
      {std::regex("cdb_sock=[0-9]+ "), "cdb_sock=# "},
  }};
  for (const Figure& figure : figures) {
    record = std::regex_replace(record, figure.written, figure.masked);
  }
  return record;
}

std::string record(const std::string& level, const std::string& function, const std::string& file,
                   const std::string& text) {
  return level + " " + function + " " + file + " " + text;
}

}  // namespace

void expect_records(const Records& written, const Records& expected) {
  const auto [is, wanted] =
      std::mismatch(written.begin(), written.end(), expected.begin(), expected.end());
  if (is == written.end() && wanted == expected.end()) return;
  ADD_FAILURE() << "record " << is - written.begin() + 1 << "\n  is   "
                << (is != written.end() ? *is : "missing") << "\n  not  "
                << (wanted != expected.end() ? *wanted : "expected");
}

Records traced(TraceLevel level, const std::function<void()>& run) {
  TraceCapture trace(level);
  run();

  Records records;
  for (const std::string& text : split_records(trace.written())) {
    records.push_back(masked(without_line(text)));
  }
  return records;
}

Source::Source(const std::string& name) : file_("src/validation/" + name + ".cpp") {}

std::string Source::flow(const std::string& function, const std::string& text) const {
  return record("FLOW", function, file_, text);
}

std::string Source::entry(const std::string& function, const std::string& text) const {
  return record("ENTRY", function, file_, text);
}

std::string Source::detail(const std::string& function, const std::string& text) const {
  return record("DETAIL", function, file_, text);
}

std::string begin(const std::string& validator) {
  return Source("gpon_vald_trace_itf").flow("trace_validation_begin", validator + " begin");
}

std::string end(const std::string& validator, const std::string& word) {
  return Source("gpon_vald_trace_itf")
      .flow("trace_validation_end", validator + " end - " + word + " - elapsed time # msecs.");
}

std::string debug_log(const std::string& text) {
  return record("DETAIL", "Debug", "standalone/middleware/qzmw", text);
}

Records TraceTest::records_of(const std::string& request, const std::string& keypath,
                              const std::string& change, TraceLevel level) {
  ValidationSession& session = open(change);
  return traced(level, [&] { dispatch(session, request, keypath); });
}

Records TraceTest::records_of_failed(PlatformCall failing, int nth, const std::string& request,
                                     const std::string& keypath, const std::string& change) {
  fail_call(failing, nth);
  Records records = records_of(request, keypath, change);
  let_calls_pass();
  return records;
}

}  // namespace tarnd::test
