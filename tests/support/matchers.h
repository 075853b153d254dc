#pragma once

#include <gmock/gmock.h>

#include <ostream>
#include <string>

#include "standalone/daemon/daemon.h"

namespace tarnd {

/// How a failed expectation shows them, such as: ERROR, text "Invalid password length/size".
void PrintTo(const Answer& answer, std::ostream* out);
void PrintTo(const CommitReport& report, std::ostream* out);

}  // namespace tarnd

namespace tarnd::test {

/// Matches the answer of one request, and the report of a commit. The text of a report is that of
/// its first error; in a commit that waits for the user, that of its first warning.
class VerdictMatcher {
 public:
  using is_gtest_matcher = void;

  VerdictMatcher(Verdict verdict, testing::Matcher<std::string> text);

  bool MatchAndExplain(const Answer& answer, testing::MatchResultListener* listener) const;
  bool MatchAndExplain(const CommitReport& report, testing::MatchResultListener* listener) const;
  void DescribeTo(std::ostream* out) const;
  void DescribeNegationTo(std::ostream* out) const;

 private:
  Verdict verdict_;
  testing::Matcher<std::string> text_;
};

/// An OK answer without a text; a commit that went through.
VerdictMatcher Accepted();
/// An error with this text: EXPECT_THAT(answer, Rejected("")), EXPECT_THAT(report,
/// Rejected(HasSubstr("port 7"))).
VerdictMatcher Rejected(const testing::Matcher<std::string>& text);
/// A warning with this text; a commit that the user did not confirm.
VerdictMatcher AsksToConfirm(const testing::Matcher<std::string>& text);

}  // namespace tarnd::test
