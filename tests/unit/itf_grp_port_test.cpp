#include <array>
#include <string>

#include "gpon_itf_grp_validation.h"
#include "tests/support/card_fixture.h"
#include "tests/support/platform_in_place.h"
#include "tests/support/trace_capture.h"

namespace tarnd::test {
namespace {

constexpr const char* kRequest = "itf_grp_validation";
constexpr const char* kPppoe = "wan-pppoe-connection";
constexpr const char* kIp = "wan-ip-connection";
constexpr const char* kBridge = "wan-bridge-connection";

std::string port(const std::string& name) {
  return element("ports", element("port", name));
}

std::string port(const std::string& name, int vlan) {
  return element("ports", element("port", name) + element("vlan", std::to_string(vlan)));
}

std::string wan(const std::string& list, const std::string& name, const std::string& ports) {
  return element(list, element("name", name) + element("itf-grouping", ports));
}

std::string wan_without_grouping(const std::string& list, const std::string& name) {
  return element(list, element("name", name));
}

class ItfGrpValidationOfPorts : public CardFixture {
 protected:
  std::string text_for(const std::string& wans) {
    const Answer answer = answer_of(kRequest, rg_profile("home", wans));
    EXPECT_EQ(answer.result, answer.text.empty() ? Verdict::kOk : Verdict::kError);
    return answer.text;
  }
};

TEST_F(ItfGrpValidationOfPorts, APortWithItsVlanBelongsToOneGrouping) {
  struct Row {
    std::string wans;
    std::string text;
  };
  const std::array<Row, 17> rows{{
      {wan(kIp, "a", port("eth1") + port("eth2")), ""},
      {wan(kIp, "a", port("eth1")) + wan(kIp, "b", port("eth2")), ""},
      {wan(kIp, "a", port("eth2")) + wan(kIp, "b", port("eth2")),
       "Port eth2 untagged cannot be used in more than one interface grouping"},
      {wan(kPppoe, "a", port("eth1", 100)) + wan(kIp, "a", port("eth1", 100)),
       "Port eth1 with VLAN 100 cannot be used in more than one interface grouping"},
      {wan(kPppoe, "a", port("eth3", 7)) + wan(kBridge, "b", port("eth3", 7)),
       "Port eth3 with VLAN 7 cannot be used in more than one interface grouping"},
      {wan(kIp, "a", port("eth4")) + wan(kBridge, "b", port("eth4")),
       "Port eth4 untagged cannot be used in more than one interface grouping"},
      {wan(kIp, "a", port("wl0")) + wan(kIp, "b", port("wl0")),
       "Port wl0 cannot be used in more than one interface grouping"},
      {wan(kIp, "a", port("wl0", 10)) + wan(kBridge, "b", port("wl0", 10)),
       "Port wl0 cannot be used in more than one interface grouping"},
      {wan(kIp, "a", port("wl0-vap1")) + wan(kIp, "b", port("wl0-vap1")),
       "Port wl0-vap1 cannot be used in more than one interface grouping"},
      {wan(kIp, "a", port("eth1")) + wan(kIp, "b", port("eth1", 10)), ""},
      {wan(kIp, "a", port("eth1", 10)) + wan(kIp, "b", port("eth1", 11)), ""},
      {wan(kIp, "a", port("wl0", 10)) + wan(kIp, "b", port("wl0", 11)), ""},
      {wan(kIp, "a", port("wl0")) + wan(kIp, "b", port("wl0-vap1")), ""},
      {wan(kIp, "a", port("eth1")) + wan(kIp, "b", port("eth1", 0)),
       "Port eth1 untagged cannot be used in more than one interface grouping"},
      {wan(kIp, "a", port("eth1", 4094)) + wan(kIp, "b", port("eth1", 4094)),
       "Port eth1 with VLAN 4094 cannot be used in more than one interface grouping"},
      {wan(kIp, "a", "") + wan(kIp, "b", ""), ""},
      {wan_without_grouping(kIp, "a") + wan(kIp, "b", port("eth1")) + wan(kIp, "c", port("eth1")),
       "Port eth1 untagged cannot be used in more than one interface grouping"},
  }};
  for (const Row& row : rows) {
    running("");
    EXPECT_EQ(text_for(row.wans), row.text) << row.wans;
  }
}

TEST_F(ItfGrpValidationOfPorts, AProfileWithoutGroupingsIsAccepted) {
  TraceCapture trace(TraceLevel::kDetail);
  EXPECT_EQ(text_for(wan_without_grouping(kPppoe, "a") + wan_without_grouping(kBridge, "b")), "");
  for (const std::string name : {"a", "b"}) {
    EXPECT_TRUE(trace.has_record(
        "DETAIL", "Interface Grouping not created for WAN " + name + ". Skipping validation."));
  }
}

TEST_F(ItfGrpValidationOfPorts, AnEmptyProfileIsAccepted) {
  EXPECT_EQ(text_for(""), "");
}

TEST_F(ItfGrpValidationOfPorts, OtherProfilesMayUseTheSamePort) {
  running(rg_profile("work", wan(kIp, "a", port("eth1"))));
  EXPECT_EQ(text_for(wan(kIp, "a", port("eth1"))), "");
}

TEST_F(ItfGrpValidationOfPorts, TheListsGoPppoeThenIpThenBridge) {
  const std::string wans = wan(kBridge, "a", port("eth1")) + wan(kBridge, "b", port("eth2")) +
                           wan(kIp, "a", port("eth1")) + wan(kPppoe, "a", port("eth2"));
  TraceCapture trace(TraceLevel::kDetail);
  EXPECT_EQ(text_for(wans),
            "Port eth1 untagged cannot be used in more than one interface grouping");
  EXPECT_EQ(trace.count("Checking port 1 vlan 0 itf grp"), 1);
  EXPECT_EQ(trace.count("Checking port 0 vlan 0 itf grp"), 2);
}

TEST_F(ItfGrpValidationOfPorts, NamesOfFortyEightCharactersAreRead) {
  const std::string first(48, 'a');
  const std::string second = std::string(47, 'a') + "b";
  EXPECT_EQ(text_for(wan(kIp, first, port("eth1")) + wan(kIp, second, port("eth1"))),
            "Port eth1 untagged cannot be used in more than one interface grouping");
}

TEST_F(ItfGrpValidationOfPorts, AProfileWithTheLongestNameIsRead) {
  const Answer answer = answer_of(
      kRequest,
      rg_profile(std::string(64, 'p'), wan(kIp, std::string(48, 'a'), port("eth1")) +
                                           wan(kBridge, std::string(48, 'b'), port("eth1"))));
  EXPECT_EQ(answer.text, "Port eth1 untagged cannot be used in more than one interface grouping");
}

TEST_F(ItfGrpValidationOfPorts, ANameMayHoldQuotesAndPercentSigns) {
  EXPECT_EQ(text_for(wan(kIp, "%s%n", port("eth1")) + wan(kIp, "o'hara", port("eth1"))),
            "Port eth1 untagged cannot be used in more than one interface grouping");
}

TEST_F(ItfGrpValidationOfPorts, AVlanThatCannotBeReadIsRejectedWithoutAText) {
  fail_call(PlatformCall::maapi_get_u_int32_elem);
  TraceCapture trace(TraceLevel::kFlow);
  const Answer answer = answer_of(kRequest, rg_profile("home", wan(kIp, "a", port("eth1", 100))));
  EXPECT_EQ(answer.result, Verdict::kError);
  EXPECT_EQ(answer.text, "");
  EXPECT_TRUE(trace.has("FLOW check_port_vlan src/validation/"));
  EXPECT_TRUE(trace.has("Failed getting port VLAN for Itf Grouping on WAN from ConfD ("));
  EXPECT_TRUE(trace.has(" validate_itf_grp end - ERROR"));
}

TEST_F(ItfGrpValidationOfPorts, TheTraceShowsTheStepsAndTheTime) {
  TraceCapture trace(TraceLevel::kDetail);
  EXPECT_EQ(text_for(wan(kIp, "a", port("eth1", 100) + port("wl0-vap1"))), "");
  EXPECT_TRUE(trace.has(" validate_itf_grp begin"));
  EXPECT_TRUE(
      trace.has("DETAIL validate_itf_grp_ports src/validation/gpon_itf_grp_validation.cpp:"));
  EXPECT_TRUE(trace.has_record("DETAIL", "Checking port+vlan Itf Grp"));
  EXPECT_TRUE(trace.has_record("DETAIL", "Checking port 0 vlan 100 itf grp"));
  EXPECT_TRUE(trace.has_record("DETAIL", "Checking port 5 vlan 0 itf grp"));
  EXPECT_EQ(trace.count(" check_port_vlan src/validation/"), 2) << "the two ports";
  EXPECT_TRUE(trace.has("Took "));
  EXPECT_TRUE(trace.has(" usecs to validate the Interface Groupings Ports from RG-profile home"));
  EXPECT_TRUE(trace.has(" validate_itf_grp end - OK"));
  EXPECT_EQ(trace.count("FLOW "), 2) << "begin and end";
}

TEST_F(ItfGrpValidationOfPorts, TheTraceShowsFortyEightCharactersOfTheProfilesName) {
  TraceCapture trace(TraceLevel::kDetail);
  answer_of(kRequest, rg_profile(std::string(64, 'p'), ""));
  const std::string end = " from RG-profile " + std::string(48, 'p');
  EXPECT_EQ(trace.count(end), 2) << "of the ports and of the networks";
  EXPECT_EQ(trace.count(end + "p"), 0);
}

TEST_F(ItfGrpValidationOfPorts, TheNetworksAreNotLookedAtAfterARejectedPort) {
  TraceCapture trace(TraceLevel::kDetail);
  text_for(wan(kIp, "a", port("eth2")) + wan(kIp, "b", port("eth2")));
  EXPECT_FALSE(trace.has("validate_itf_grp_net"));
  EXPECT_FALSE(trace.has("usecs to validate"));
}

TEST_F(ItfGrpValidationOfPorts, OneListIsComparedWithThePortsSeenBefore) {
  const std::string list = "/config/profile/gpon/rg-profile{home}/wan-ip-connection";
  ValidationSession& session = open(rg_profile("home", wan(kIp, "a", port("eth2", 5))));

  valid::GroupedPorts seen = {{1, 6}};
  EXPECT_EQ(check_port_vlan(sock(), tctx(), seen, list), CONFD_OK);
  EXPECT_EQ(seen, (valid::GroupedPorts{{1, 5}, {1, 6}}));
  EXPECT_EQ(session.open_resources().cursors, 0);

  EXPECT_EQ(check_port_vlan(sock(), tctx(), seen, list), CONFD_ERR);
  EXPECT_EQ(session.error_text(),
            "Port eth2 with VLAN 5 cannot be used in more than one interface grouping");
  EXPECT_EQ(session.open_resources().cursors, 2) << "of the WANs and of the ports";
}

using ItfGrpValidationOfPortsDeathTest = ItfGrpValidationOfPorts;

TEST_F(ItfGrpValidationOfPortsDeathTest, APortThatIsNoEnumerationIsImpossible) {
  open(rg_profile("home", wan(kIp, "a", port("eth2"))));
  const InPlace in_place;
  InPlace::entry = [](maapi_cursor& cursor) {
    if (cursor.keys[0].type == C_ENUM_VALUE) CONFD_SET_UINT32(&cursor.keys[0], 1);
  };
  valid::GroupedPorts seen;
  EXPECT_DEATH(check_port_vlan(sock(), tctx(), seen,
                               "/config/profile/gpon/rg-profile{home}/wan-ip-connection"),
               R"(\(&port_cursor\.keys\[0\]\)->type == C_ENUM_VALUE)");
}

TEST_F(ItfGrpValidationOfPorts, CursorsStayOpenIfAVlanCannotBeRead) {
  ValidationSession& session = open(rg_profile("home", wan(kIp, "a", port("eth2", 5))));
  fail_call(PlatformCall::maapi_get_u_int32_elem);
  valid::GroupedPorts seen;
  EXPECT_EQ(check_port_vlan(sock(), tctx(), seen,
                            "/config/profile/gpon/rg-profile{home}/wan-ip-connection"),
            CONFD_ERR);
  EXPECT_EQ(session.error_text(), std::nullopt);
  EXPECT_EQ(session.open_resources().cursors, 2);
}

}  // namespace
}  // namespace tarnd::test
