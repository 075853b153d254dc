// Every platform call of every validator fails once: the text for the user, what stays open, and
// whether the validator works as before afterwards.

#include <gmock/gmock.h>

#include <algorithm>

#include "gpon_vald_trace_itf.h"
#include "tests/catalogue/dispatch.h"
#include "tests/support/card_fixture.h"
#include "tests/support/trace_capture.h"

namespace tarnd::test {
namespace {

class FailureInjection : public CardFixture, public testing::WithParamInterface<Scenario> {
 protected:
  FailureInjection() {
    running(whole_card());
    answer_of_next_one_ = ask_next_one(open_validation());
  }

  ~FailureInjection() override { clear_trace_cat(); }

  /// A new transaction with the change, before the validation's first platform call.
  ValidationSession& open_validation() {
    clear_trace_cat();  // registering the category is a call, too
    return open(GetParam().change);
  }

  static Outcome ask(ValidationSession& session) { return dispatch(session, GetParam()); }

  /// Another validator in the same transaction.
  static Outcome ask_next_one(ValidationSession& session) {
    static const std::vector<Scenario> all = scenarios();
    const auto same_request = [](const Scenario& one) { return one.request == GetParam().request; };
    auto next = std::find_if(all.begin(), all.end(), same_request);
    next = std::find_if_not(next, all.end(), same_request);
    return dispatch(session, next != all.end() ? *next : all.front());
  }

  static bool ends_the_process(PlatformCall failing) {
    const auto row = GetParam().failures.find(failing);
    return row != GetParam().failures.end() && row->second == kEndsTheProcess;
  }

  /// The calls of an undisturbed validation in their order.
  std::vector<PlatformCall> made_calls() {
    ValidationSession& session = open_validation();
    std::vector<PlatformCall> made;
    set_call_hook([&made](PlatformCall call) {
      made.push_back(call);
      return true;
    });
    ask(session);
    set_call_hook({});
    return made;
  }

  static void fail_nth(std::size_t nth) {
    set_call_hook([nth, seen = std::size_t{0}](PlatformCall) mutable { return ++seen != nth; });
  }

  /// Fails the n-th call, which is `failing`. Then runs another validator in the same transaction,
  /// and validates again in it and in a new one.
  Outcome fail_once(std::size_t nth, PlatformCall failing) {
    ValidationSession& session = open_validation();
    fail_nth(nth);
    Outcome outcome = ask(session);
    set_call_hook({});
    const ValidationSession::OpenResources left = session.open_resources();
    EXPECT_EQ(left.configuration_sessions, 0);
    EXPECT_EQ(left.queries, failing == PlatformCall::maapi_query_stop ? 1 : 0);

    EXPECT_EQ(ask_next_one(session), answer_of_next_one_);
    EXPECT_EQ(ask(session), GetParam().answer);
    EXPECT_EQ(session.open_resources().queries, left.queries);
    EXPECT_EQ(session.open_resources().configuration_sessions, 0);
    EXPECT_EQ(ask(open_validation()), GetParam().answer);
    return outcome;
  }

  /// The result of the failure of each call.
  AnswersOfCalls fail_each() {
    AnswersOfCalls seen;
    const std::vector<PlatformCall> made = made_calls();
    for (std::size_t nth = 1; nth <= made.size(); ++nth) {
      const PlatformCall failing = made[nth - 1];
      Answers& answers = seen[failing];
      if (ends_the_process(failing)) continue;
      SCOPED_TRACE("call " + std::to_string(nth) + ", " + std::string(to_string(failing)));
      answers.insert(fail_once(nth, failing));
    }
    return seen;
  }

  /// The same if the middleware has no category for the trace.
  AnswersOfCalls fail_each_untraced() {
    AnswersOfCalls seen;
    std::vector<PlatformCall> made = made_calls();
    std::erase(made, PlatformCall::qzmw_trace_register_category);
    for (std::size_t nth = 1; nth <= made.size(); ++nth) {
      Answers& answers = seen[made[nth - 1]];
      if (ends_the_process(made[nth - 1])) continue;
      ValidationSession& session = open_validation();
      set_call_hook([nth, others = std::size_t{0}](PlatformCall call) mutable {
        return call != PlatformCall::qzmw_trace_register_category && ++others != nth;
      });
      answers.insert(ask(session));
      set_call_hook({});
    }
    return seen;
  }

  /// Whether a failure may lead to this answer. What stays open if many calls fail is not checked
  /// here.
  static bool is_possible(const Outcome& outcome) {
    const auto same = [&](const Outcome& one) {
      return one.result == outcome.result && one.text == outcome.text;
    };
    const AnswersOfCalls& failures = GetParam().failures;
    return same(GetParam().answer) ||
           std::any_of(failures.begin(), failures.end(), [&](const auto& row) {
             return std::any_of(row.second.begin(), row.second.end(), same);
           });
  }

  static void expect_answers(const AnswersOfCalls& seen) {
    const AnswersOfCalls& failures = GetParam().failures;
    for (const auto& [call, answers] : seen) {
      const auto row = failures.find(call);
      const Answers expected = row != failures.end() ? row->second : Answers{GetParam().answer};
      EXPECT_EQ(answers, expected) << to_string(call);
    }
    for (const auto& [call, answers] : failures) {
      EXPECT_TRUE(seen.contains(call)) << to_string(call) << " is not made";
    }
  }

  Outcome answer_of_next_one_;
};

TEST_P(FailureInjection, ReturnsTheAnswerOfTheFailingCallAndNoMore) {
  EXPECT_EQ(ask(open_validation()), GetParam().answer);
  expect_answers(fail_each());
}

// With the trace there are more calls, those that print for it.
TEST_P(FailureInjection, ReturnsTheSameAnswersWithAFullTrace) {
  TraceCapture trace(TraceLevel::kDetail);
  expect_answers(fail_each());
}

TEST_P(FailureInjection, ReturnsTheSameAnswersWithoutACategoryForTheTrace) {
  expect_answers(fail_each_untraced());
}

// The platform stops answering in the middle: the validator ends with any of its answers.
TEST_P(FailureInjection, EndsWithAnAnswerWhenNoCallIsAnsweredAnyMore) {
  const std::size_t made = made_calls().size();
  for (std::size_t nth = 1; nth <= made; ++nth) {
    SCOPED_TRACE("from call " + std::to_string(nth) + " on");
    ValidationSession& session = open_validation();
    set_call_hook([nth, seen = std::size_t{0}](PlatformCall call) mutable {
      return ++seen < nth || ends_the_process(call);
    });
    const Outcome outcome = ask(session);
    set_call_hook({});
    EXPECT_TRUE(is_possible(outcome)) << outcome;
    EXPECT_EQ(session.open_resources().configuration_sessions, 0);
    EXPECT_LE(session.open_resources().queries, 1);
    EXPECT_EQ(ask(session), GetParam().answer);
  }
}

std::string name_of(const testing::TestParamInfo<Scenario>& info) {
  return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Of, FailureInjection, testing::ValuesIn(scenarios()), name_of);

using FailureInjectionDeathTest = FailureInjection;

TEST_P(FailureInjectionDeathTest, EndsTheProcessWhenTheShapeOfObjectsIsUnknown) {
  const std::vector<PlatformCall> made = made_calls();
  for (std::size_t nth = 1; nth <= made.size(); ++nth) {
    if (!ends_the_process(made[nth - 1])) continue;
    ValidationSession& session = open_validation();
    EXPECT_EXIT(
        {
          fail_nth(nth);
          ask(session);
        },
        testing::ExitedWithCode(1),
        "Backtrace:\n(.|\n)*Fault 1 raised by ConfdGetObjsItf at "
        "src/validation/confd_get_objects_itf\\.cpp:[0-9]+: \\[/config/[^]]*\\] object size "
        "\\((0|-1)\\) differs from expected \\((15|2|26)\\)\\.\n$")
        << "call " << nth << ", " << to_string(made[nth - 1]);
  }
}

std::vector<Scenario> scenarios_that_may_end_the_process() {
  std::vector<Scenario> some = scenarios();
  std::erase_if(some, [](const Scenario& one) {
    return std::none_of(one.failures.begin(), one.failures.end(),
                        [](const auto& row) { return row.second == kEndsTheProcess; });
  });
  return some;
}

INSTANTIATE_TEST_SUITE_P(Of, FailureInjectionDeathTest,
                         testing::ValuesIn(scenarios_that_may_end_the_process()), name_of);

}  // namespace
}  // namespace tarnd::test
