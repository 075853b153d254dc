#include "tests/support/matchers.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace tarnd::test {
namespace {

using testing::HasSubstr;
using testing::Not;
using testing::PrintToString;

Answer answer(Verdict verdict, const std::string& text) {
  return {"a_request", "/config", verdict, text};
}

CommitReport report(CommitResult result, const std::vector<Answer>& answers) {
  return {result, answers, {}};
}

template <typename Value>
std::string complaint(const Value& value, const VerdictMatcher& matcher) {
  testing::StringMatchResultListener listener;
  EXPECT_FALSE(matcher.MatchAndExplain(value, &listener));
  std::ostringstream expected;
  matcher.DescribeTo(&expected);
  return expected.str() + ", but is " + PrintToString(value);
}

TEST(Matchers, CompareVerdictAndText) {
  const Answer ok = answer(Verdict::kOk, "");
  const Answer error = answer(Verdict::kError, "No.");
  const Answer warning = answer(Verdict::kWarning, "Sure?");
  EXPECT_THAT(ok, Accepted());
  EXPECT_THAT(ok, Not(Rejected("")));
  EXPECT_THAT(ok, Not(AsksToConfirm("")));
  EXPECT_THAT(answer(Verdict::kOk, "Well done."), Not(Accepted()));
  EXPECT_THAT(error, Rejected("No."));
  EXPECT_THAT(error, Rejected(HasSubstr("N")));
  EXPECT_THAT(error, Not(Rejected("no.")));
  EXPECT_THAT(error, Not(Accepted()));
  EXPECT_THAT(error, Not(AsksToConfirm("No.")));
  EXPECT_THAT(warning, AsksToConfirm("Sure?"));
  EXPECT_THAT(warning, Not(AsksToConfirm("")));
  EXPECT_THAT(warning, Not(Rejected("Sure?")));
}

TEST(Matchers, TakeTheDecisiveTextOfACommit) {
  const std::vector<Answer> answers{answer(Verdict::kOk, ""), answer(Verdict::kWarning, "Sure?"),
                                    answer(Verdict::kWarning, "Really?"),
                                    answer(Verdict::kError, "No.")};
  EXPECT_THAT(report(CommitResult::kAccepted, answers), Accepted());
  EXPECT_THAT(report(CommitResult::kRejected, answers), Rejected("No."));
  EXPECT_THAT(report(CommitResult::kRejected, answers), Not(Rejected("Sure?")));
  EXPECT_THAT(report(CommitResult::kUnconfirmed, answers), AsksToConfirm("Sure?"));
  EXPECT_THAT(report(CommitResult::kUnconfirmed, answers), Not(Accepted()));
  EXPECT_THAT(report(CommitResult::kRejected, {}), Rejected(""));
}

TEST(Matchers, ShowVerdictAndTextWhenTheyFail) {
  EXPECT_EQ(complaint(answer(Verdict::kError, "No."), Accepted()),
            "is accepted with a text that is equal to \"\", but is ERROR, text \"No.\"");
  EXPECT_EQ(complaint(answer(Verdict::kOk, ""), Rejected("No.")),
            "is rejected with a text that is equal to \"No.\", but is OK, no text");
  EXPECT_EQ(complaint(report(CommitResult::kUnconfirmed,
                             {answer(Verdict::kOk, ""), answer(Verdict::kWarning, "Sure?")}),
                      AsksToConfirm("")),
            "is to be confirmed with a text that is equal to \"\", but is unconfirmed\n"
            "    a_request: OK, no text\n"
            "    a_request: WARNING, text \"Sure?\"");
}

}  // namespace
}  // namespace tarnd::test
