#include "gpon_vlan_match.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "tests/support/card_fixture.h"
#include "tests/support/platform_in_place.h"
#include "tests/support/recorded_calls.h"
#include "tests/support/trace_capture.h"

// Last, for its macros.
#include "tests/support/keypaths.h"

namespace tarnd::test {
namespace {

constexpr const char* kRequest = "vlan_match_check";
constexpr const char* kSameMatch =
    "It's not possible to configure two or more vlan rules with the same match.";
constexpr const char* kUnreadable = "Failed accessing transaction data.";
constexpr const char* kUnreadableNote =
    "Failed getting service profiles uni ethernet port information.";

struct Pair {
  vlanMatch_t first;
  vlanMatch_t second;
};

std::string to_string(const Pair& pair) {
  return "(" + pair.first.vlan + ", " + pair.first.cos + ") and (" + pair.second.vlan + ", " +
         pair.second.cos + ")";
}

const std::vector<Pair> kConflicts{
    {{"100", "3"}, {"100", "3"}},      // the same
    {{"any", "any"}, {"any", "any"}},  // the same, and everything
    {{"any", "any"}, {"200", "5"}},    // one matches everything
    {{"any", "any"}, {"any", "5"}},   {{"any", "any"}, {"200", "any"}},
    {{"any", "3"}, {"200", "3"}},    // any VLAN, the same CoS
    {{"100", "any"}, {"100", "5"}},  // the same VLAN, any CoS
};

const std::vector<Pair> kNoConflicts{
    {{"100", "3"}, {"100", "4"}},   {{"100", "3"}, {"200", "3"}},
    {{"any", "3"}, {"200", "4"}},   {{"any", "3"}, {"any", "4"}},
    {{"100", "any"}, {"200", "5"}}, {{"100", "any"}, {"200", "any"}},
    {{"any", "3"}, {"200", "any"}},  // VLAN 200 with CoS 3 fits both, and is let through
};

Pair reversed(const Pair& pair) {
  return {pair.second, pair.first};
}

class VlanMatchCheck : public CardFixture {
 protected:
  Answer answer_for(const std::string& content) {
    return answer_of(kRequest, service_profile("sp", content));
  }

  Answer answer_for(const Pair& pair, const std::string& first_target,
                    const std::string& second_target) {
    return answer_for(
        vlan_mapping("a", matching(pair.first.vlan, pair.first.cos) + first_target) +
        vlan_mapping("b", matching(pair.second.vlan, pair.second.cos) + second_target));
  }
};

TEST_F(VlanMatchCheck, ConflictingMatchesOnOnePortAreRejectedInEitherOrder) {
  for (const Pair& conflict : kConflicts) {
    for (const Pair& pair : {conflict, reversed(conflict)}) {
      running("");
      const Answer answer = answer_for(pair, on_ethernet({1}), on_ethernet({1}));
      EXPECT_EQ(answer.result, Verdict::kError) << to_string(pair);
      EXPECT_EQ(answer.text, kSameMatch) << to_string(pair);
    }
  }
}

TEST_F(VlanMatchCheck, MatchesThatDifferOnOnePortAreAcceptedInEitherOrder) {
  for (const Pair& different : kNoConflicts) {
    for (const Pair& pair : {different, reversed(different)}) {
      running("");
      const Answer answer = answer_for(pair, on_ethernet({1}), on_ethernet({1}));
      EXPECT_EQ(answer.result, Verdict::kOk) << to_string(pair);
      EXPECT_EQ(answer.text, "") << to_string(pair);
    }
  }
}

TEST_F(VlanMatchCheck, DifferentPortsMayHaveTheSameMatch) {
  const Pair same{{"100", "3"}, {"100", "3"}};
  EXPECT_EQ(answer_for(same, on_ethernet({1}), on_ethernet({2})).result, Verdict::kOk);
  EXPECT_EQ(answer_for(same, on_ethernet({1}), on_veip()).result, Verdict::kOk);
}

TEST_F(VlanMatchCheck, OnePortInCommonIsEnough) {
  const Pair same{{"100", "3"}, {"100", "3"}};
  EXPECT_EQ(answer_for(same, on_ethernet({1, 2}), on_ethernet({2, 3})).text, kSameMatch);
}

TEST_F(VlanMatchCheck, EveryEarlierMatchOfThePortIsCompared) {
  EXPECT_THAT(answer_for(vlan_mapping("a", matching("100", "1") + on_ethernet({1})) +
                         vlan_mapping("b", matching("200", "2") + on_ethernet({1})) +
                         vlan_mapping("c", matching("300", "1") + on_ethernet({1})) +
                         vlan_mapping("d", matching("200", "any") + on_ethernet({1}))),
              Rejected(kSameMatch));
}

TEST_F(VlanMatchCheck, TheVeipComparesItsMatches) {
  const Pair same{{"100", "3"}, {"100", "3"}};
  EXPECT_EQ(answer_for(same, on_veip(), on_veip()).text, kSameMatch);
}

TEST_F(VlanMatchCheck, TheVeipSharesEthernetPort127) {
  const Pair same{{"100", "3"}, {"100", "3"}};
  EXPECT_EQ(answer_for(same, on_veip(), on_ethernet({127})).text, kSameMatch);
}

TEST_F(VlanMatchCheck, AMatchThatIsNotConfiguredIsAny) {
  EXPECT_THAT(answer_for(vlan_mapping("a", on_ethernet({1})) +
                         vlan_mapping("b", matching("100", "3") + on_ethernet({1}))),
              Rejected(kSameMatch));
}

TEST_F(VlanMatchCheck, AMappingWithoutAPortIsRejected) {
  EXPECT_THAT(answer_for(vlan_mapping("a", matching("100", "3"))), Rejected(kUnreadable));
  EXPECT_EQ(calls(PlatformCall::Logger_Debug), 0U);
}

TEST_F(VlanMatchCheck, AProfileWithoutMappingsIsAccepted) {
  const Answer answer =
      request(kRequest, "/config/profile/gpon/service-profile{sp}/vlan-mapping{a}");
  EXPECT_EQ(answer.result, Verdict::kOk);
  EXPECT_EQ(answer.text, "");
}

TEST_F(VlanMatchCheck, NamesMayHoldPercentSignsAndQuotes) {
  const std::string content = vlan_mapping("a%s'", matching("100", "3") + on_ethernet({1})) +
                              vlan_mapping("b%x'", matching("100", "3") + on_ethernet({1}));
  EXPECT_EQ(answer_of(kRequest, service_profile("50%d'", content)).text, kSameMatch);
}

TEST_F(VlanMatchCheck, WhatCannotBeReadRejects) {
  const struct {
    PlatformCall call;
    int nth;
  } failures[] = {
      {PlatformCall::maapi_get_elem, 1},    // the VLAN
      {PlatformCall::maapi_get_elem, 2},    // the CoS
      {PlatformCall::confd_cs_node_cd, 1},  // the type of either
      {PlatformCall::confd_cs_node_cd, 2}, {PlatformCall::confd_val2str, 1},
      {PlatformCall::confd_val2str, 2},    {PlatformCall::maapi_get_list_elem, 1},  // the ports
  };
  for (const auto& failure : failures) {
    running("");
    const std::uint64_t noted = calls(PlatformCall::Logger_Debug);
    fail_call(failure.call, failure.nth);
    EXPECT_THAT(answer_for(vlan_mapping("a", matching("100", "3") + on_ethernet({1}))),
                Rejected(kUnreadable));
    EXPECT_EQ(calls(PlatformCall::Logger_Debug), noted + 1)
        << to_string(failure.call) << " " << failure.nth;
  }
}

TEST_F(VlanMatchCheck, WhatIsOpenedIsClosedForAnyAnswer) {
  confd_hkeypath_t keypath = mapping_keypath("sp");
  const auto answer_and_open_cursors = [&](const std::string& content) {
    ValidationSession& session = open(service_profile("sp", content));
    const std::int32_t result = validate_vlan_match(sock(), tctx(), &keypath, nullptr);
    EXPECT_EQ(session.open_resources().cursors, 0) << content;
    return result;
  };
  const std::string one = vlan_mapping("a", on_ethernet({1}));
  EXPECT_EQ(answer_and_open_cursors(one), CONFD_OK);
  EXPECT_EQ(answer_and_open_cursors(one + vlan_mapping("b", on_ethernet({1}))), CONFD_ERR);
  EXPECT_EQ(answer_and_open_cursors(vlan_mapping("a", "")), CONFD_ERR);
  fail_call(PlatformCall::maapi_get_elem);
  EXPECT_EQ(answer_and_open_cursors(one), CONFD_ERR);
}

TEST_F(VlanMatchCheck, EveryPortValueIsReleased) {
  EXPECT_THAT(answer_for(vlan_mapping("a", on_ethernet({1, 2, 3}))), Accepted());
  EXPECT_EQ(calls(PlatformCall::confd_free_value), 3U);
}

TEST_F(VlanMatchCheck, LongNumbersAreDistinguishedToTheirLastDigit) {
  EXPECT_THAT(answer_for({{"4090", "3"}, {"4091", "3"}}, on_ethernet({1}), on_ethernet({1})),
              Accepted());
}

TEST_F(VlanMatchCheck, OnlyANegativeResultMeansThatAValueHasNoText) {
  const InPlace in_place;
  for (const int result : {0, 1}) {
    InPlace::text_result = result;
    EXPECT_THAT(answer_for({{"1", "3"}, {"1", "3"}}, on_ethernet({1}), on_ethernet({1})),
                Rejected(kSameMatch));
  }
  InPlace::text_result = -1;
  EXPECT_THAT(answer_for(vlan_mapping("a", matching("1", "3") + on_ethernet({1}))),
              Rejected(kUnreadable));
}

TEST_F(VlanMatchCheck, TheVlanIsReadBeforeTheCosEachIntoAHundredCharacters) {
  const InPlace in_place;
  running(service_profile("sp", vlan_mapping("a", matching("100", "3") + on_ethernet({1}))));
  const RecordedPaths recorded;
  request(kRequest, "/config/profile/gpon/service-profile{sp}/vlan-mapping{a}");
  const std::string profile = "/config/profile/gpon/service-profile{sp}/vlan-mapping";
  const std::string vlan = profile + "{a}/match/outer/vlan-id";
  const std::string cos = profile + "{a}/match/outer/cos";
  EXPECT_THAT(recorded.calls(),
              testing::ElementsAre("maapi_init_cursor " + profile, "maapi_get_elem " + vlan,
                                   "maapi_get_elem " + cos, "confd_cs_node_cd " + vlan,
                                   "confd_cs_node_cd " + cos,
                                   "maapi_exists " + profile + "{a}/uni/ethernet",
                                   "maapi_get_list_elem " + profile + "{a}/uni/ethernet"));
  EXPECT_THAT(InPlace::text_sizes, testing::ElementsAre(100, 100));
}

TEST_F(VlanMatchCheck, ThePlatformIsCalledInOrder) {
  running(service_profile("sp", vlan_mapping("a", matching("1", "1") + on_ethernet({1})) +
                                    vlan_mapping("b", matching("2", "1") + on_veip()) +
                                    vlan_mapping("c", matching("2", "1") + on_veip())));
  const RecordedCalls recorded;
  request(kRequest, "/config/profile/gpon/service-profile{sp}/vlan-mapping{a}");
  const std::vector<std::string> match{"maapi_get_next",   "maapi_get_elem", "maapi_get_elem",
                                       "confd_cs_node_cd", "confd_val2str",  "confd_cs_node_cd",
                                       "confd_val2str"};
  std::vector<std::string> expected{"qzconfd_maapi_socket_get", "maapi_init_cursor"};
  const auto expect = [&expected](const std::vector<std::string>& names) {
    expected.insert(expected.end(), names.begin(), names.end());
  };
  expect(match);
  expect({"maapi_exists", "maapi_get_list_elem", "confd_free_value"});
  for (int veip_mapping = 1; veip_mapping <= 2; ++veip_mapping) {
    expect(match);
    expect({"maapi_exists", "maapi_exists"});
  }
  expect({"maapi_destroy_cursor", "confd_trans_seterr"});
  EXPECT_EQ(recorded.names(), expected);
}

TEST_F(VlanMatchCheck, NoTraceRecordIsWritten) {
  TraceCapture trace(TraceLevel::kDetail);
  EXPECT_THAT(answer_for(vlan_mapping("a", on_ethernet({1}))), Accepted());
  EXPECT_EQ(trace.records(), std::vector<std::string>());
}

TEST_F(VlanMatchCheck, UnreadableLeavesAreNotedInTheDebugLogOnly) {
  TraceCapture trace(TraceLevel::kDetail);
  fail_call(PlatformCall::maapi_get_elem);
  EXPECT_THAT(answer_for(vlan_mapping("a", on_ethernet({1}))), Rejected(kUnreadable));
  EXPECT_TRUE(trace.has(kUnreadableNote));
  EXPECT_EQ(trace.records().size(), 1U);
}

using VlanMatchCheckDeathTest = VlanMatchCheck;

TEST_F(VlanMatchCheckDeathTest, AProfileKeyThatIsNoTextEndsTheProcess) {
  confd_hkeypath_t keypath = mapping_keypath("sp");
  CONFD_SET_UINT32(&keypath.v[2][0], 1);
  open();
  EXPECT_DEATH(validate_vlan_match(sock(), tctx(), &keypath, nullptr),
               "\\(&keypath->v\\[2\\]\\[0\\]\\)->type == C_BUF");
}

TEST(VlanMatchTable, AConflictIsNotRecorded) {
  std::multimap<std::uint32_t, vlanMatch_t> table;
  EXPECT_EQ(check_vlan_match(1, "100", "3", table), 0);
  EXPECT_EQ(check_vlan_match(1, "100", "any", table), -1);
  EXPECT_EQ(table.size(), 1U);
  EXPECT_EQ(check_vlan_match(1, "100", "5", table), 0) << "the refused match must not count";
}

TEST(VlanMatchTable, PortsAreDistinguishedByTheLowEightBits) {
  std::multimap<std::uint32_t, vlanMatch_t> table;
  EXPECT_EQ(check_vlan_match(0x17F, "100", "3", table), 0);
  EXPECT_EQ(table.count(127), 1U);
  EXPECT_EQ(check_vlan_match(127, "100", "3", table), -1);
}

TEST(VlanMatchTable, TextsAreComparedByteForByte) {
  std::multimap<std::uint32_t, vlanMatch_t> table;
  EXPECT_EQ(check_vlan_match(1, "Any", "3", table), 0);
  EXPECT_EQ(check_vlan_match(1, "any ", "3", table), 0);
  EXPECT_EQ(check_vlan_match(1, "0100", "3", table), 0);
  EXPECT_EQ(check_vlan_match(1, "100", "3", table), 0);
}

}  // namespace
}  // namespace tarnd::test
