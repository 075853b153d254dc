#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "standalone/middleware/trace.h"
#include "tests/catalogue/dispatch.h"
#include "tests/support/card_fixture.h"

namespace tarnd::test {

/// Records of the trace as "LEVEL function src/validation/file.cpp text". Figures that differ from
/// run to run (times, addresses, sockets) are written as #.
using Records = std::vector<std::string>;

/// Fails the test if they are not the same, and prints the first difference.
void expect_records(const Records& written, const Records& expected);

/// Runs it and returns the records that it wrote at the level and above. Each must have its line
/// number.
Records traced(TraceLevel level, const std::function<void()>& run);

/// The records of one source file:
///   const Source links("gpon_itf_valid");
///   links.flow("validate_itf_pon", "Failed getting gpon ports (...)")
class Source {
 public:
  explicit Source(const std::string& name);

  [[nodiscard]] std::string flow(const std::string& function, const std::string& text) const;
  [[nodiscard]] std::string entry(const std::string& function, const std::string& text) const;
  [[nodiscard]] std::string detail(const std::string& function, const std::string& text) const;

 private:
  std::string file_;
};

/// The two records around a validator.
std::string begin(const std::string& validator);
std::string end(const std::string& validator, const std::string& word);

/// What `Logger::Debug` writes; this is not part of the trace.
std::string debug_log(const std::string& text);

/// The test's own card, and what the validators write for it.
class TraceTest : public CardFixture {
 protected:
  /// The records of a request on the keypath after the change.
  Records records_of(const std::string& request, const std::string& keypath,
                     const std::string& change = "", TraceLevel level = TraceLevel::kDetail);
  /// The same if the n-th call of a kind fails.
  Records records_of_failed(PlatformCall failing, int nth, const std::string& request,
                            const std::string& keypath, const std::string& change = "");
};

}  // namespace tarnd::test
