#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "standalone/middleware/trace.h"
#include "tests/catalogue/dispatch.h"
#include "tests/support/card_fixture.h"

namespace tarnd::test {

/// Records of the trace as "LEVEL function src/validation/file.cpp text". The figures that differ
/// from run to run (times, addresses, sockets) stand as #.
using Records = std::vector<std::string>;

/// Fails the test where they are not the same and tells the first difference.
void expect_records(const Records& written, const Records& expected);

/// Runs it and gives the records that it wrote at the level and above. Each must tell its line.
Records traced(TraceLevel level, const std::function<void()>& run);

/// What one source file writes:
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

/// What `Logger::Debug` writes, beside the trace.
std::string debug_log(const std::string& text);

/// A card of the test's own, and what its validators write.
class TraceTest : public CardFixture {
 protected:
  /// The records of a request on the keypath after the change.
  Records records_of(const std::string& request, const std::string& keypath,
                     const std::string& change = "", TraceLevel level = TraceLevel::kDetail);
  /// The same where the n-th call of a kind fails.
  Records records_of_failed(PlatformCall failing, int nth, const std::string& request,
                            const std::string& keypath, const std::string& change = "");
};

}  // namespace tarnd::test
