#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>
#include <vector>

#include "gpon_itf_grp_validation.h"
#include "tests/support/card_fixture.h"
#include "tests/support/recorded_calls.h"
#include "tests/support/trace_capture.h"

namespace tarnd::test {
namespace {

constexpr const char* kRequest = "itf_grp_validation";
constexpr const char* kPppoe = "wan-pppoe-connection";
constexpr const char* kIp = "wan-ip-connection";
constexpr const char* kBridge = "wan-bridge-connection";
constexpr const char* kIpList = "/config/profile/gpon/rg-profile{home}/wan-ip-connection";
constexpr const char* kPoolOrder = "DHCP pool start-address must be lower than the end-address";

std::string wan(const std::string& list, const std::string& name, const std::string& grouping) {
  return element(list, element("name", name) + element("itf-grouping", grouping));
}

std::string network(const std::string& address) {
  return element("ipv4-address", address);
}

std::string pool(const std::string& start, const std::string& end) {
  return element("dhcp-server", "true") +
         element("dhcp-server-address-pool",
                 element("start-address", start) + element("end-address", end));
}

class ItfGrpValidationOfNetworks : public CardFixture {
 protected:
  std::string text_for(const std::string& wans) {
    const Answer answer = answer_of(kRequest, rg_profile("home", wans));
    EXPECT_EQ(answer.result, answer.text.empty() ? Verdict::kOk : Verdict::kError) << wans;
    return answer.text;
  }

  /// Rejected, without a text, and with this record of this level?
  void expect_silent_rejection(const std::string& wans, const std::string& level,
                               const std::string& record) {
    TraceCapture trace(TraceLevel::kDetail);
    const Answer answer = answer_of(kRequest, rg_profile("home", wans));
    EXPECT_EQ(answer.result, Verdict::kError);
    EXPECT_EQ(answer.text, "");
    EXPECT_TRUE(has_record(trace, level, record)) << record;
    EXPECT_TRUE(trace.has(" validate_itf_grp end - ERROR"));
  }

  static bool has_record(TraceCapture& trace, const std::string& level, const std::string& text,
                         const std::string& function = "validate_itf_grp_dhcp") {
    const std::vector<std::string>& records = trace.records();
    return std::any_of(records.begin(), records.end(), [&](const std::string& record) {
      return record.rfind(level + " " + function + " ", 0) == 0 &&
             record.find(" " + text) != std::string::npos;
    });
  }
};

TEST_F(ItfGrpValidationOfNetworks, NetworksDoNotOverlap) {
  struct Row {
    std::string wans;
    std::string text;
  };
  const std::array<Row, 13> rows{{
      {wan(kIp, "a", network("192.168.1.1/24")) + wan(kIp, "b", network("192.168.2.1/24")), ""},
      {wan(kPppoe, "a", network("192.168.1.1/24")) + wan(kIp, "b", network("192.168.1.200/25")),
       "Network 192.168.1.200/25 from WAN b conflicts with network 192.168.1.1/24 from WAN a"},
      {wan(kPppoe, "a", network("192.168.1.200/25")) + wan(kIp, "b", network("192.168.1.1/24")),
       "Network 192.168.1.1/24 from WAN b conflicts with network 192.168.1.200/25 from WAN a"},
      {wan(kPppoe, "a", network("192.168.1.1/25")) + wan(kIp, "b", network("192.168.1.200/25")),
       ""},
      {wan(kIp, "a", network("10.0.0.1/8")) + wan(kIp, "b", network("10.0.0.1/8")),
       "Network 10.0.0.1/8 from WAN b conflicts with network 10.0.0.1/8 from WAN a"},
      {wan(kIp, "a", network("10.1.2.3/32")) + wan(kBridge, "a", network("10.1.2.3/32")),
       "Network 10.1.2.3/32 from WAN a conflicts with network 10.1.2.3/32 from WAN a"},
      {wan(kIp, "a", network("10.1.2.3/32")) + wan(kBridge, "a", network("10.1.2.4/32")), ""},
      {wan(kPppoe, "a", network("10.0.0.1/24")) + wan(kBridge, "b", network("10.0.0.2/24")),
       "Network 10.0.0.2/24 from WAN b conflicts with network 10.0.0.1/24 from WAN a"},
      {wan(kBridge, "a", network("10.0.0.1/24")) + wan(kBridge, "b", network("10.0.0.2/24")),
       "Network 10.0.0.2/24 from WAN b conflicts with network 10.0.0.1/24 from WAN a"},
      {wan(kIp, "a", network("0.0.0.0/0")) + wan(kIp, "b", network("203.0.113.9/32")),
       "Network 203.0.113.9/32 from WAN b conflicts with network 0.0.0.0/0 from WAN a"},
      {wan(kIp, "a", network("10.0.1.1/24")) + wan(kIp, "b", network("10.0.2.1/24")) +
           wan(kIp, "c", network("10.0.0.1/16")),
       "Network 10.0.0.1/16 from WAN c conflicts with network 10.0.1.1/24 from WAN a"},
      {wan(kIp, "a", "") + wan(kIp, "b", "") + element(kIp, element("name", "c")), ""},
      {element(kIp, element("name", "a")) + wan(kIp, "b", "") +
           wan(kIp, "c", network("10.0.0.1/24")) + wan(kIp, "d", network("10.0.0.1/24")),
       "Network 10.0.0.1/24 from WAN d conflicts with network 10.0.0.1/24 from WAN c"},
  }};
  for (const Row& row : rows) {
    running("");
    EXPECT_EQ(text_for(row.wans), row.text) << row.wans;
  }
}

TEST_F(ItfGrpValidationOfNetworks, EveryEarlierNetworkIsCompared) {
  EXPECT_EQ(
      text_for(wan(kPppoe, "a", network("10.0.0.1/24")) + wan(kIp, "b", network("10.0.1.1/24")) +
               wan(kIp, "c", network("10.0.2.1/24")) + wan(kBridge, "d", network("10.0.1.9/24"))),
      "Network 10.0.1.9/24 from WAN d conflicts with network 10.0.1.1/24 from WAN b");
}

TEST_F(ItfGrpValidationOfNetworks, APoolIsComparedWithItsOwnNetwork) {
  const std::string first = wan(kPppoe, "a", network("10.0.0.1/24"));
  EXPECT_EQ(text_for(first + wan(kIp, "b", network("10.0.1.1/24") + pool("10.0.1.5", "10.0.1.9"))),
            "");
  EXPECT_EQ(text_for(first + wan(kIp, "b", network("10.0.1.1/24") + pool("10.0.0.5", "10.0.0.9"))),
            "Start address 10.0.0.5 for DHCP pool is not part of network 10.0.1.1/24");
}

TEST_F(ItfGrpValidationOfNetworks, OtherProfilesMayHaveTheSameNetwork) {
  running(rg_profile("work", wan(kIp, "a", network("10.0.0.1/24"))));
  EXPECT_EQ(text_for(wan(kIp, "a", network("10.0.0.1/24"))), "");
}

TEST_F(ItfGrpValidationOfNetworks, APoolIsOrderedAndInsideItsNetwork) {
  struct Row {
    std::string grouping;
    std::string text;
  };
  const std::string inside = network("10.0.0.1/24");
  const std::array<Row, 13> rows{{
      {inside + pool("10.0.0.5", "10.0.0.99"), ""},
      {inside + pool("10.0.0.5", "10.0.0.5"), ""},
      {inside + pool("10.0.0.0", "10.0.0.255"), ""},
      {inside + pool("10.0.0.6", "10.0.0.5"), kPoolOrder},
      {network("9.0.0.1/0") + pool("127.0.0.1", "128.0.0.1"), ""},
      {network("9.0.0.1/0") + pool("1.0.0.2", "2.0.0.1"), ""},
      {inside + pool("9.0.0.5", "10.0.0.9"),
       "Start address 9.0.0.5 for DHCP pool is not part of network 10.0.0.1/24"},
      {inside + pool("10.0.0.5", "10.0.1.9"),
       "End address 10.0.1.9 for DHCP pool is not part of network 10.0.0.1/24"},
      {inside + pool("10.0.1.5", "10.0.1.9"),
       "Start address 10.0.1.5 for DHCP pool is not part of network 10.0.0.1/24"},
      {inside + pool("10.0.1.9", "10.0.1.5"), kPoolOrder},
      {network("10.0.0.1/32") + pool("10.0.0.1", "10.0.0.1"), ""},
      {network("10.0.0.1/32") + pool("10.0.0.0", "10.0.0.1"),
       "Start address 10.0.0.0 for DHCP pool is not part of network 10.0.0.1/32"},
      {network("10.0.0.2/32") + pool("10.0.0.2", "10.0.0.3"),
       "End address 10.0.0.3 for DHCP pool is not part of network 10.0.0.2/32"},
  }};
  for (const Row& row : rows) {
    running("");
    EXPECT_EQ(text_for(wan(kIp, "a", row.grouping)), row.text) << row.grouping;
    running("");
    EXPECT_EQ(text_for(wan(kPppoe, "a", row.grouping)), row.text) << row.grouping;
  }
}

TEST_F(ItfGrpValidationOfNetworks, APoolWithoutANetworkIsNotLookedAt) {
  TraceCapture trace(TraceLevel::kDetail);
  EXPECT_EQ(text_for(wan(kIp, "a", pool("10.0.0.9", "10.0.0.1"))), "");
  EXPECT_TRUE(has_record(trace, "DETAIL",
                         "IP not configured for this Interface grouping, skipping validation"));
}

TEST_F(ItfGrpValidationOfNetworks, APoolWithoutItsServerIsNotLookedAt) {
  TraceCapture trace(TraceLevel::kDetail);
  const std::string backwards =
      element("dhcp-server-address-pool",
              element("start-address", "10.0.0.9") + element("end-address", "10.0.0.1"));
  EXPECT_EQ(text_for(wan(kIp, "a", network("10.0.0.1/24") + backwards)), "");
  EXPECT_EQ(calls(PlatformCall::maapi_get_ipv4_elem), 0U);
  EXPECT_TRUE(has_record(
      trace, "FLOW", "DHCP not enabled for this Interface grouping, skipping validation of DHCP"));
}

TEST_F(ItfGrpValidationOfNetworks, ThePoolOfABridgeIsNeverRead) {
  TraceCapture trace(TraceLevel::kDetail);
  EXPECT_EQ(text_for(wan(kBridge, "a", network("10.0.0.1/24") + pool("9.9.9.9", "1.1.1.1"))), "");
  EXPECT_EQ(calls(PlatformCall::maapi_get_bool_elem), 0U);
  EXPECT_EQ(calls(PlatformCall::maapi_get_ipv4_elem), 0U);
  EXPECT_TRUE(
      has_record(trace, "DETAIL",
                 "WAN bridge does not have DHCP configuration, skipping this part of validation"));
}

TEST_F(ItfGrpValidationOfNetworks, AConflictIsFoundBeforeTheLaterPools) {
  EXPECT_EQ(text_for(wan(kPppoe, "a", network("10.0.0.1/24")) +
                     wan(kIp, "b", network("10.0.0.1/24") + pool("10.0.0.9", "10.0.0.1"))),
            "Network 10.0.0.1/24 from WAN b conflicts with network 10.0.0.1/24 from WAN a");
  EXPECT_EQ(text_for(wan(kPppoe, "a", network("10.0.0.1/24") + pool("10.0.0.9", "10.0.0.1")) +
                     wan(kIp, "b", network("10.0.0.1/24"))),
            kPoolOrder);
}

TEST_F(ItfGrpValidationOfNetworks, WhatCannotBeReadIsRejectedWithoutAText) {
  const std::string wans = wan(kIp, "a", network("10.0.0.1/24") + pool("10.0.0.5", "10.0.0.9"));
  fail_call(PlatformCall::maapi_get_ipv4_and_plen_elem);
  expect_silent_rejection(wans, "DETAIL", "Failed to get ipv4 ");
  fail_call(PlatformCall::maapi_get_bool_elem);
  expect_silent_rejection(wans, "FLOW", "Failed to get DHCP info from ConfD");
  fail_call(PlatformCall::maapi_get_ipv4_elem, 1);
  expect_silent_rejection(wans, "FLOW", "Failed to get end-address");
  fail_call(PlatformCall::maapi_get_ipv4_elem, 2);
  expect_silent_rejection(wans, "DETAIL", "Failed to get start-address");
}

TEST_F(ItfGrpValidationOfNetworks, APoolWithoutAnAddressIsRejectedWithoutAText) {
  const std::string server = network("10.0.0.1/24") + element("dhcp-server", "true");
  const auto half_pool = [&server](const std::string& leaf) {
    return wan(kIp, "a", server + element("dhcp-server-address-pool", element(leaf, "10.0.0.5")));
  };
  expect_silent_rejection(wan(kIp, "a", server), "FLOW", "Failed to get end-address");
  expect_silent_rejection(half_pool("start-address"), "FLOW", "Failed to get end-address");
  expect_silent_rejection(half_pool("end-address"), "DETAIL", "Failed to get start-address");
}

TEST_F(ItfGrpValidationOfNetworks, TheTraceShowsTheStepsAndTheTime) {
  TraceCapture trace(TraceLevel::kDetail);
  EXPECT_EQ(text_for(wan(kIp, "a", network("10.0.0.1/24")) + element(kIp, element("name", "b"))),
            "");
  EXPECT_TRUE(trace.has("DETAIL validate_itf_grp_net src/validation/gpon_itf_grp_validation.cpp:"));
  EXPECT_TRUE(has_record(trace, "DETAIL", "Checking port vlan itf grp", "validate_itf_grp_net"));
  EXPECT_EQ(trace.count("Checking Itf Grouping DHCP"), 3);
  EXPECT_TRUE(has_record(trace, "DETAIL", "No Interface Grouping for wan b, skipping validation"));
  EXPECT_TRUE(
      trace.has(" usecs to validate the Interface Groupings IP and DHCP configurations "
                "from RG-profile home"));
  EXPECT_TRUE(trace.has(" validate_itf_grp end - OK"));
  EXPECT_EQ(trace.count("FLOW "), 3) << "begin and end, and that there is no DHCP server";
}

TEST_F(ItfGrpValidationOfNetworks, TheTimesAreTracedInMicroseconds) {
  TraceCapture trace(TraceLevel::kDetail);
  const SlowCalls opening(PlatformCall::maapi_init_cursor, 1);
  EXPECT_EQ(text_for(wan(kIp, "a", network("10.0.0.1/24"))), "");
  EXPECT_EQ(trace.count(" Took "), 2);
  for (const std::string& record : trace.records()) {
    const std::size_t at = record.find(" Took ");
    if (at == std::string::npos) continue;
    // Each walk opens a cursor for each of the three lists.
    EXPECT_GE(std::atol(record.c_str() + at + 6), 3000) << record;
  }
}

TEST_F(ItfGrpValidationOfNetworks, ThePlatformIsCalledInOrder) {
  const std::string ports = element("ports", element("port", "eth1"));
  const RecordedCalls recorded;
  answer_of(kRequest,
            rg_profile("home", wan(kIp, "a",
                                   ports + network("10.0.0.1/24") + pool("10.0.0.9", "10.0.0.1"))));
  EXPECT_EQ(recorded.names(),
            (std::vector<std::string>{
                "qzconfd_maapi_socket_get",
                // the ports: PPPoE, IP, bridge
                "confd_pp_kpath", "maapi_init_cursor", "maapi_get_next", "maapi_destroy_cursor",
                "maapi_init_cursor", "maapi_get_next", "confd_pp_value", "maapi_exists",
                "maapi_init_cursor", "maapi_get_next", "maapi_get_u_int32_elem", "maapi_get_next",
                "maapi_destroy_cursor", "maapi_get_next", "maapi_destroy_cursor",  //
                "maapi_init_cursor", "maapi_get_next", "maapi_destroy_cursor",
                // the networks, up to the pool of the IP connection
                "confd_pp_kpath", "maapi_init_cursor", "maapi_get_next", "maapi_destroy_cursor",
                "maapi_init_cursor", "maapi_get_next", "confd_pp_value", "maapi_exists",
                "maapi_exists", "maapi_get_ipv4_and_plen_elem", "maapi_get_bool_elem",
                "maapi_get_ipv4_elem", "maapi_get_ipv4_elem", "confd_trans_seterr"}));
}

TEST_F(ItfGrpValidationOfNetworks, TheRecordOfAStepComesBeforeItsCalls) {
  using Lines = std::vector<testing::Matcher<std::string>>;
  const auto record = [](const std::string& text) { return testing::EndsWith(" " + text); };
  const Lines list{"CALL maapi_init_cursor", "CALL maapi_get_next", "CALL maapi_destroy_cursor"};
  Lines expected;
  const auto then = [&expected](const Lines& lines) {
    expected.insert(expected.end(), lines.begin(), lines.end());
  };
  const Lines time{"CALL confd_pp_value", testing::HasSubstr(" Took ")};
  then({"CALL qzconfd_maapi_socket_get", record("validate_itf_grp begin")});
  then({record("Checking port+vlan Itf Grp"), "CALL confd_pp_kpath"});
  for (int i = 0; i < 3; ++i) then(list);
  then(time);
  then({record("Checking port vlan itf grp"), "CALL confd_pp_kpath"});
  for (int i = 0; i < 3; ++i) {
    then({record("Checking Itf Grouping DHCP")});
    then(list);
  }
  then(time);
  then({testing::HasSubstr(" validate_itf_grp end - OK - ")});

  TraceCapture trace(TraceLevel::kDetail);
  const CallsAmongRecords recorded;
  answer_of(kRequest, rg_profile("home", ""));
  EXPECT_THAT(trace.records(), testing::ElementsAreArray(expected));
}

TEST_F(ItfGrpValidationOfNetworks, OneListIsComparedWithTheNetworksFoundBefore) {
  ValidationSession& session = open(rg_profile("home", wan(kIp, "a", network("10.0.0.1/24"))));
  valid::GroupedNetworks networks;
  EXPECT_EQ(validate_itf_grp_dhcp(sock(), tctx(), kIpList, &networks, false), CONFD_OK);
  ASSERT_EQ(networks.size(), 1U);
  EXPECT_EQ(networks.front().first.to_string(), "10.0.0.1/24");
  EXPECT_EQ(networks.front().second, "a");
  EXPECT_EQ(session.open_resources().cursors, 0);

  EXPECT_EQ(validate_itf_grp_dhcp(sock(), tctx(), kIpList, &networks, false), CONFD_ERR);
  EXPECT_EQ(session.error_text(),
            "Network 10.0.0.1/24 from WAN a conflicts with network 10.0.0.1/24 from WAN a");
  EXPECT_EQ(networks.size(), 1U);
  EXPECT_EQ(session.open_resources().cursors, 1);
}

TEST_F(ItfGrpValidationOfNetworks, TheCursorStaysOpenAfterARejectedPool) {
  ValidationSession& session = open(
      rg_profile("home", wan(kIp, "a", network("10.0.0.1/24") + pool("10.0.0.9", "10.0.0.1"))));
  valid::GroupedNetworks networks;
  EXPECT_EQ(validate_itf_grp_dhcp(sock(), tctx(), kIpList, &networks, false), CONFD_ERR);
  EXPECT_EQ(session.error_text(), kPoolOrder);
  EXPECT_EQ(session.open_resources().cursors, 1);
}

TEST_F(ItfGrpValidationOfNetworks, NamesOfFortyEightCharactersAreShownWhole) {
  const std::string first(48, 'a');
  const std::string second = std::string(47, 'a') + "b";
  EXPECT_EQ(
      text_for(wan(kIp, first, network("10.0.0.1/24")) + wan(kIp, second, network("10.0.0.2/24"))),
      "Network 10.0.0.2/24 from WAN " + second + " conflicts with network 10.0.0.1/24 from WAN " +
          first);
}

}  // namespace
}  // namespace tarnd::test
