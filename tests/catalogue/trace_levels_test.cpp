// A disabled level costs nothing: its records are neither written nor composed.

#include <gmock/gmock.h>

#include <algorithm>
#include <map>

#include "gpon_vald_trace_itf.h"
#include "tests/catalogue/expected_trace.h"
#include "tests/support/recorded_calls.h"
#include "tests/support/trace_capture.h"

namespace tarnd::test {
namespace {

constexpr TraceLevel kEveryLevel[] = {TraceLevel::kOff, TraceLevel::kFlow, TraceLevel::kEntry,
                                      TraceLevel::kDetail};

using CallsByName = std::map<std::string_view, std::uint64_t>;

class TraceLevels : public TraceTest, public testing::WithParamInterface<Scenario> {
 protected:
  TraceLevels() { running(whole_card()); }

  Records at(TraceLevel level) {
    return records_of(GetParam().request, GetParam().keypath, GetParam().change, level);
  }

  Prints prints_at(TraceLevel level) {
    const Prints before = prints();
    at(level);
    const Prints after = prints();
    return {after.keypaths - before.keypaths, after.values - before.values,
            after.names - before.names};
  }

  /// The calls that print nothing, by their names.
  CallsByName other_calls_at(TraceLevel level) {
    get_trace_cat();  // registering the category is a call, too
    const CallCounts before = platform_call_counts();
    at(level);
    CallsByName made;
    for (std::size_t i = 0; i < before.size(); ++i) {
      const auto call = static_cast<PlatformCall>(i);
      const std::uint64_t count = platform_call_counts().at(i) - before.at(i);
      if (count != 0 && !prints(call)) made[to_string(call)] = count;
    }
    return made;
  }

 private:
  static bool prints(PlatformCall call) {
    return call == PlatformCall::confd_pp_kpath || call == PlatformCall::confd_pp_value ||
           call == PlatformCall::confd_hash2str;
  }

  [[nodiscard]] Prints prints() const {
    return {calls(PlatformCall::confd_pp_kpath), calls(PlatformCall::confd_pp_value),
            calls(PlatformCall::confd_hash2str)};
  }
};

Prints sum(const Prints& a, const Prints& b) {
  return {a.keypaths + b.keypaths, a.values + b.values, a.names + b.names};
}

TEST_P(TraceLevels, PrintOnlyWhatTheyWrite) {
  const Work& work = GetParam().prints;
  EXPECT_EQ(prints_at(TraceLevel::kOff), work.verdict);
  EXPECT_EQ(prints_at(TraceLevel::kFlow), sum(work.verdict, work.flow));
  EXPECT_EQ(prints_at(TraceLevel::kEntry), sum(work.verdict, work.flow));
  EXPECT_EQ(prints_at(TraceLevel::kDetail), sum(sum(work.verdict, work.flow), work.detail));
}

// If nothing fails, no text of an error is requested either.
TEST_P(TraceLevels, DifferInNoCallThatPrintsNothing) {
  const CallsByName silent = other_calls_at(TraceLevel::kOff);
  EXPECT_FALSE(silent.contains(to_string(PlatformCall::confd_lasterr)));
  for (const TraceLevel level : kEveryLevel) EXPECT_EQ(other_calls_at(level), silent);
}

TEST_P(TraceLevels, LeaveOutWhatIsBelowThem) {
  const Records whole = at(TraceLevel::kDetail);
  const std::vector<std::string> levels{"FLOW ", "ENTRY ", "DETAIL "};
  EXPECT_EQ(at(TraceLevel::kOff), Records());
  for (std::size_t shown = 1; shown <= levels.size(); ++shown) {
    Records expected;
    std::copy_if(
        whole.begin(), whole.end(), std::back_inserter(expected), [&](const std::string& record) {
          return std::any_of(levels.begin(), levels.begin() + static_cast<int>(shown),
                             [&](const std::string& level) { return record.starts_with(level); });
        });
    expect_records(at(kEveryLevel[shown]), expected);
  }
}

// Only a session that its guard closes ends after the record of the end.
TEST_P(TraceLevels, EncloseTheCallsOfAValidatorInItsRecords) {
  ValidationSession& session = open(GetParam().change);
  TraceCapture trace(TraceLevel::kFlow);
  const CallsAmongRecords calls;
  dispatch(session, GetParam());
  const std::vector<std::string>& lines = trace.records();
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(lines.front(), "CALL qzconfd_maapi_socket_get");
  if (!trace.has(" trace_validation_begin ")) return;
  EXPECT_THAT(lines.at(1), testing::HasSubstr(" trace_validation_begin "));
  const bool session_ends_last = lines.back() == "CALL qzconfd_config_session_end";
  EXPECT_THAT(*(lines.end() - (session_ends_last ? 2 : 1)),
              testing::HasSubstr(" trace_validation_end "));
}

TEST_P(TraceLevels, ChangeNoAnswer) {
  ValidationSession& session = open(GetParam().change);
  const Outcome silent = dispatch(session, GetParam());
  for (const TraceLevel level : kEveryLevel) {
    traced(level, [&] { EXPECT_EQ(dispatch(session, GetParam()), silent); });
  }
}

INSTANTIATE_TEST_SUITE_P(Of, TraceLevels, testing::ValuesIn(scenarios()),
                         [](const auto& tested) { return tested.param.name; });

}  // namespace
}  // namespace tarnd::test
