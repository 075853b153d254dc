#include "tests/support/matchers.h"

#include <algorithm>
#include <utility>

namespace tarnd {
namespace {

std::string shown(std::string_view verdict, const std::string& text) {
  return std::string(verdict) + ", " + (text.empty() ? "no text" : "text \"" + text + "\"");
}

}  // namespace

void PrintTo(const Answer& answer, std::ostream* out) {
  *out << shown(to_string(answer.result), answer.text);
}

void PrintTo(const CommitReport& report, std::ostream* out) {
  *out << to_string(report.result);
  for (const Answer& answer : report.answers) {
    *out << "\n    " << answer.request << ": " << shown(to_string(answer.result), answer.text);
  }
}

}  // namespace tarnd

namespace tarnd::test {
namespace {

Verdict verdict_of(CommitResult result) {
  switch (result) {
    case CommitResult::kAccepted:
      return Verdict::kOk;
    case CommitResult::kRejected:
      return Verdict::kError;
    case CommitResult::kUnconfirmed:
      return Verdict::kWarning;
  }
  return Verdict::kError;
}

/// The text of the verdict: none for an accepted commit, whose warnings were confirmed.
std::string text_of(const CommitReport& report) {
  const Verdict verdict = verdict_of(report.result);
  if (verdict == Verdict::kOk) return "";
  const auto decisive = std::find_if(report.answers.begin(), report.answers.end(),
                                     [&](const Answer& one) { return one.result == verdict; });
  return decisive != report.answers.end() ? decisive->text : "";
}

std::string description(Verdict verdict) {
  switch (verdict) {
    case Verdict::kOk:
      return "accepted";
    case Verdict::kError:
      return "rejected";
    case Verdict::kWarning:
      return "to be confirmed";
  }
  return "?";
}

}  // namespace

VerdictMatcher::VerdictMatcher(Verdict verdict, testing::Matcher<std::string> text)
    : verdict_(verdict), text_(std::move(text)) {}

bool VerdictMatcher::MatchAndExplain(const Answer& answer,
                                     testing::MatchResultListener* listener) const {
  return answer.result == verdict_ && text_.MatchAndExplain(answer.text, listener);
}

bool VerdictMatcher::MatchAndExplain(const CommitReport& report,
                                     testing::MatchResultListener* listener) const {
  return verdict_of(report.result) == verdict_ && text_.MatchAndExplain(text_of(report), listener);
}

void VerdictMatcher::DescribeTo(std::ostream* out) const {
  *out << "is " << description(verdict_) << " with a text that ";
  text_.DescribeTo(out);
}

void VerdictMatcher::DescribeNegationTo(std::ostream* out) const {
  *out << "is not " << description(verdict_) << " with a text that ";
  text_.DescribeTo(out);
}

VerdictMatcher Accepted() {
  return {Verdict::kOk, testing::Eq(std::string())};
}

VerdictMatcher Rejected(const testing::Matcher<std::string>& text) {
  return {Verdict::kError, text};
}

VerdictMatcher AsksToConfirm(const testing::Matcher<std::string>& text) {
  return {Verdict::kWarning, text};
}

}  // namespace tarnd::test
