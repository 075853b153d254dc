// A level that is off costs nothing: its records are neither written nor made.

#include <algorithm>
#include <map>

#include "gpon_vald_trace_itf.h"
#include "tests/robustness/expected_trace.h"

namespace tarnd::test {
namespace {

constexpr TraceLevel kEveryLevel[] = {TraceLevel::kOff, TraceLevel::kFlow, TraceLevel::kEntry,
                                      TraceLevel::kDetail};

/// Texts made of keypaths, of values and of the names of nodes.
struct Prints {
  std::uint64_t keypaths = 0;
  std::uint64_t values = 0;
  std::uint64_t names = 0;

  friend bool operator==(const Prints&, const Prints&) = default;
  friend std::ostream& operator<<(std::ostream& out, const Prints& prints) {
    return out << prints.keypaths << " keypaths, " << prints.values << " values, " << prints.names
               << " names";
  }
};

/// What a validation prints: for its verdict, the more for the flow, and the more for the detail.
struct Work {
  Prints verdict;
  Prints flow;
  Prints detail;
};

const std::map<std::string, Work>& expected_work() {
  static const std::map<std::string, Work> all{
      // Slot and port, three line profiles, three ONUs.
      {"onu_bw_check", {{0, 8}, {}, {}}},
      // Slot and port of four links, four ONUs.
      {"onu_pwd_sn_unique_check", {{0, 12}, {}, {}}},
      {"onu_pwd_sn_unique_check_passwords", {{0, 12}, {}, {}}},
      {"onu_pwd_sn_unique_check_rejected", {{0, 11}, {}, {}}},
      // The list, the modified ONU; the line profile for three service ports.
      {"onu_gem_check", {{2, 3}, {}, {1, 0}}},
      {"onu_gem_check_deleted", {{1, 0}, {}, {1, 0}}},
      // The list; of the changes, the card's entry and the switch; an ONU without a profile, and
      // the name of the leaf that it lacks.
      {"one_shot_prov_check", {{}, {3, 1, 1}, {}}},
      {"rg_prof_one_shot_check_exchanged", {{1, 0}, {}, {}}},
      {"rg_prof_one_shot_check_override", {{}, {}, {1, 0}}},
      {"pon_mode_validation", {{}, {}, {1, 0}}},
      // Three line profiles, slot and port of two links, two ONUs.
      {"ponlink_bw_check", {{0, 9}, {}, {}}},
      // The name of the profile.
      {"line_confirmation_warning", {{0, 1}, {}, {}}},
      {"rg_profile_confirmation_warning", {{0, 1}, {}, {}}},
      {"tr069_profile_confirmation_warning", {{0, 1}, {}, {}}},
      {"sip_agent_profile_confirmation_warning", {{0, 1}, {}, {}}},
      {"voip_media_profile_confirmation_warning", {{0, 1}, {}, {}}},
      {"rg_profile_ssid_unique_check", {{1, 1}, {}, {}}},
      // The profile and its four connections, for the ports and for the networks; in the last
      // record of each the profile's name.
      {"itf_grp_validation", {{2, 8}, {}, {0, 2}}},
      // For the flow each port's keypath, when its id and when its values are read; for the detail
      // the list, and each port's when it is seen and as created. Two line profiles.
      {"sp_gem_check", {{0, 2}, {4, 0}, {5, 0}}},
      // The list, and a port when it is seen and as created.
      {"service_port_global_validation", {{}, {}, {3, 0}}},
  };
  return all;
}

using CallsByName = std::map<std::string_view, std::uint64_t>;

class TraceLevels : public TraceTest, public testing::WithParamInterface<Validation> {
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
  const auto row = expected_work().find(GetParam().name);
  const Work work = row != expected_work().end() ? row->second : Work{};
  EXPECT_EQ(prints_at(TraceLevel::kOff), work.verdict);
  EXPECT_EQ(prints_at(TraceLevel::kFlow), sum(work.verdict, work.flow));
  EXPECT_EQ(prints_at(TraceLevel::kEntry), sum(work.verdict, work.flow));
  EXPECT_EQ(prints_at(TraceLevel::kDetail), sum(sum(work.verdict, work.flow), work.detail));
}

// Where nothing fails, the texts of errors are nobody's business either.
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

TEST_P(TraceLevels, ChangeNoAnswer) {
  ValidationSession& session = open(GetParam().change);
  const Outcome silent = dispatch(session, GetParam().request, GetParam().keypath);
  for (const TraceLevel level : kEveryLevel) {
    traced(level,
           [&] { EXPECT_EQ(dispatch(session, GetParam().request, GetParam().keypath), silent); });
  }
}

INSTANTIATE_TEST_SUITE_P(Of, TraceLevels, testing::ValuesIn(whole_validations()), test_name);

}  // namespace
}  // namespace tarnd::test
