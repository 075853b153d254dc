#include "gpon_vlan_limit.h"

#include <cstdint>
#include <string>
#include <unordered_map>
#include <vector>

#include "tests/support/card_fixture.h"
#include "tests/support/recorded_calls.h"
#include "tests/support/trace_capture.h"

// Last, for its macros.
#include "tests/support/keypaths.h"

namespace tarnd::test {
namespace {

constexpr const char* kRequest = "vlan_limit_check";
constexpr const char* kMapping = "/config/profile/gpon/service-profile{sp}/vlan-mapping{a1}";
constexpr const char* kTooMany =
    "Maximum number of VLAN Mappings exceeded. There cannot be more than 20 VLAN Mappings per "
    "Ethernet UNI port.";
constexpr const char* kUnreadable = "Failed accessing transaction data.";
constexpr const char* kUnreadableNote =
    "Failed getting service profiles uni ethernet port information.";

// `count` mappings with different names that begin with the prefix.
std::string mappings(int count, const std::string& prefix, const std::string& target) {
  std::string all;
  for (int i = 1; i <= count; ++i) {
    all += vlan_mapping(prefix + std::to_string(i), target);
  }
  return all;
}

class VlanLimitCheck : public CardFixture {
 protected:
  Answer answer_for(const std::string& content) {
    return answer_of(kRequest, service_profile("sp", content));
  }
};

TEST_F(VlanLimitCheck, AnEthernetPortMayHaveTwentyMappings) {
  EXPECT_THAT(answer_for(mappings(20, "a", on_ethernet({1}))), Accepted());
}

TEST_F(VlanLimitCheck, TheTwentyFirstMappingOfAnEthernetPortIsRejected) {
  EXPECT_THAT(answer_for(mappings(21, "a", on_ethernet({1}))), Rejected(kTooMany));
}

TEST_F(VlanLimitCheck, EveryPortHasItsOwnCount) {
  EXPECT_THAT(answer_for(mappings(20, "a", on_ethernet({1})) + mappings(20, "b", on_ethernet({2}))),
              Accepted());
  EXPECT_THAT(answer_for(mappings(20, "c", on_ethernet({3, 4}))), Accepted());
}

TEST_F(VlanLimitCheck, AnyPortOfAMappingMayExceedTheLimit) {
  EXPECT_THAT(
      answer_for(mappings(20, "a", on_ethernet({2})) + vlan_mapping("b", on_ethernet({1, 2, 3}))),
      Rejected(kTooMany));
}

TEST_F(VlanLimitCheck, TheVeipHasTheSameLimitAndText) {
  EXPECT_THAT(answer_for(mappings(20, "a", on_veip())), Accepted());
  EXPECT_THAT(answer_for(mappings(21, "a", on_veip())), Rejected(kTooMany));
}

TEST_F(VlanLimitCheck, TheVeipSharesItsCountWithEthernetPort127) {
  EXPECT_THAT(answer_for(mappings(20, "a", on_ethernet({127})) + vlan_mapping("b", on_veip())),
              Rejected(kTooMany));
}

TEST_F(VlanLimitCheck, BesideEthernetPortsTheVeipIsNotCounted) {
  std::string content = mappings(20, "a", on_veip());
  content += vlan_mapping("b", on_ethernet({1}) + on_veip());
  EXPECT_THAT(answer_for(content), Accepted());
}

TEST_F(VlanLimitCheck, AMappingWithoutAPortIsNotCounted) {
  EXPECT_THAT(answer_for(mappings(20, "a", on_ethernet({1})) + mappings(21, "b", "")), Accepted());
}

TEST_F(VlanLimitCheck, OnlyTheMappingsOfTheProfileCount) {
  running(service_profile("other", mappings(20, "a", on_ethernet({1}))));
  EXPECT_THAT(answer_for(vlan_mapping("a1", on_ethernet({1}))), Accepted());
}

TEST_F(VlanLimitCheck, ACommittedProfileMayNotGetATwentyFirstMapping) {
  running(service_profile("sp", mappings(20, "a", on_ethernet({1}))));
  EXPECT_THAT(answer_for(vlan_mapping("b", on_ethernet({1}))), Rejected(kTooMany));
}

TEST_F(VlanLimitCheck, AProfileWithoutMappingsIsAccepted) {
  const Answer answer = request(kRequest, kMapping);
  EXPECT_EQ(answer.result, Verdict::kOk);
  EXPECT_EQ(answer.text, "");
}

TEST_F(VlanLimitCheck, NamesMayHoldPercentSignsAndQuotes) {
  const std::string content = mappings(21, "a'%s", on_ethernet({1}));
  const Answer answer = answer_of(kRequest, service_profile("50%d'", content));
  EXPECT_EQ(answer.result, Verdict::kError);
  EXPECT_EQ(answer.text, kTooMany);
}

TEST_F(VlanLimitCheck, UnreadablePortsReject) {
  const std::string content = mappings(3, "a", on_ethernet({1}));
  fail_call(PlatformCall::maapi_get_list_elem, 2);
  EXPECT_THAT(answer_for(content), Rejected(kUnreadable));
  EXPECT_EQ(calls(PlatformCall::Logger_Debug), 1U);
  EXPECT_EQ(calls(PlatformCall::maapi_get_list_elem), 2U) << "the walk must end there";
}

TEST_F(VlanLimitCheck, UnreadablePortsAreNotedInTheDebugLog) {
  TraceCapture trace(TraceLevel::kDetail);
  fail_call(PlatformCall::maapi_get_list_elem);
  EXPECT_THAT(answer_for(vlan_mapping("a", on_ethernet({1}))), Rejected(kUnreadable));
  EXPECT_TRUE(trace.has(kUnreadableNote));
}

TEST_F(VlanLimitCheck, AMappingWhosePortsCannotBeLookedUpIsNotCounted) {
  const std::string change = service_profile("sp", mappings(21, "a", on_ethernet({1})));
  EXPECT_EQ(request(kRequest, kMapping, change).text, kTooMany);
  fail_call(PlatformCall::maapi_exists);
  EXPECT_EQ(request(kRequest, kMapping, change).result, Verdict::kOk);
}

TEST_F(VlanLimitCheck, AListThatCannotBeWalkedIsAccepted) {
  fail_call(PlatformCall::maapi_init_cursor);
  const std::string change = service_profile("sp", mappings(21, "a", on_ethernet({1})));
  EXPECT_EQ(request(kRequest, kMapping, change).result, Verdict::kOk);
  EXPECT_EQ(calls(PlatformCall::maapi_destroy_cursor), 0U);
}

TEST_F(VlanLimitCheck, WhatIsOpenedIsClosedForAnyAnswer) {
  confd_hkeypath_t keypath = mapping_keypath("sp");
  const auto answer_and_open_cursors = [&](const std::string& content) {
    ValidationSession& session = open(service_profile("sp", content));
    const std::int32_t result = validate_vlan_limit(sock(), tctx(), &keypath, nullptr);
    EXPECT_EQ(session.open_resources().cursors, 0) << content;
    return result;
  };
  EXPECT_EQ(answer_and_open_cursors(mappings(20, "a", on_ethernet({1}))), CONFD_OK);
  EXPECT_EQ(answer_and_open_cursors(mappings(21, "a", on_ethernet({1}))), CONFD_ERR);
  EXPECT_EQ(answer_and_open_cursors(mappings(21, "a", on_veip())), CONFD_ERR);
  fail_call(PlatformCall::maapi_get_list_elem);
  EXPECT_EQ(answer_and_open_cursors(mappings(1, "a", on_ethernet({1}))), CONFD_ERR);
}

TEST_F(VlanLimitCheck, EveryPortValueIsReleased) {
  EXPECT_THAT(answer_for(mappings(2, "a", on_ethernet({1, 2, 3}))), Accepted());
  // Each of the two new mappings is validated, and each time both are read.
  EXPECT_EQ(calls(PlatformCall::confd_free_value), 12U);
}

TEST_F(VlanLimitCheck, OfPortsThatCannotBeReadNothingIsReleased) {
  fail_call(PlatformCall::maapi_get_list_elem);
  EXPECT_THAT(answer_for(vlan_mapping("a", on_ethernet({1}))), Rejected(kUnreadable));
  EXPECT_EQ(calls(PlatformCall::confd_free_value), 0U);
}

TEST_F(VlanLimitCheck, ThePlatformIsCalledInOrder) {
  running(service_profile("sp",
                          vlan_mapping("a1", on_ethernet({1, 2})) + mappings(21, "b", on_veip())));
  const RecordedCalls recorded;
  request(kRequest, kMapping);
  std::vector<std::string> expected{
      "qzconfd_maapi_socket_get", "maapi_init_cursor", "maapi_get_next",  "maapi_exists",
      "maapi_get_list_elem",      "confd_free_value",  "confd_free_value"};
  for (int i = 1; i <= 21; ++i) {
    // The Ethernet ports, then the VEIP.
    expected.insert(expected.end(), {"maapi_get_next", "maapi_exists", "maapi_exists"});
  }
  expected.insert(expected.end(), {"maapi_destroy_cursor", "confd_trans_seterr"});
  EXPECT_EQ(recorded.names(), expected);
}

TEST_F(VlanLimitCheck, TheTraceShowsTheResult) {
  TraceCapture trace(TraceLevel::kFlow);
  EXPECT_THAT(answer_for(mappings(21, "a", on_veip())), Rejected(kTooMany));
  EXPECT_TRUE(trace.has("validate_vlan_limit begin"));
  EXPECT_TRUE(trace.has("validate_vlan_limit end - ERROR - elapsed time "));
}

using VlanLimitCheckDeathTest = VlanLimitCheck;

TEST_F(VlanLimitCheckDeathTest, AProfileKeyThatIsNoTextEndsTheProcess) {
  confd_hkeypath_t keypath = mapping_keypath("sp");
  CONFD_SET_UINT32(&keypath.v[2][0], 1);
  open();
  EXPECT_DEATH(validate_vlan_limit(sock(), tctx(), &keypath, nullptr),
               "\\(&keypath->v\\[2\\]\\[0\\]\\)->type == C_BUF");
}

TEST(VlanCounter, TheTwentyFirstIsTooMuchAndStaysCounted) {
  std::unordered_map<std::uint32_t, std::uint32_t> counter;
  for (int i = 1; i <= 20; ++i) {
    EXPECT_EQ(check_vlan_counter(1, counter), 0) << i;
  }
  EXPECT_EQ(check_vlan_counter(1, counter), -1);
  EXPECT_EQ(counter.at(1), 21U);
  EXPECT_EQ(check_vlan_counter(1, counter), -1);
  EXPECT_EQ(counter.at(1), 22U);
  EXPECT_EQ(check_vlan_counter(2, counter), 0);
}

TEST(VlanCounter, PortsAreDistinguishedByTheLowEightBits) {
  std::unordered_map<std::uint32_t, std::uint32_t> counter;
  EXPECT_EQ(check_vlan_counter(0x101, counter), 0);
  EXPECT_EQ(check_vlan_counter(1, counter), 0);
  EXPECT_EQ(check_vlan_counter(255, counter), 0);
  EXPECT_EQ(counter, (std::unordered_map<std::uint32_t, std::uint32_t>{{1, 2}, {255, 1}}));
}

}  // namespace
}  // namespace tarnd::test
