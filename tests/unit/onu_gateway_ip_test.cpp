#include <array>
#include <string>
#include <vector>

#include "gpon_onu_gateway_ip.h"
#include "tests/support/card_fixture.h"
#include "tests/support/recorded_calls.h"
#include "tests/support/trace_capture.h"

namespace tarnd::test {
namespace {

constexpr const char* kRequest = "onu_gateway_ip_check";
constexpr const char* kIpHost = "/config/interface/gpon{1 1 3}/onu{5}/ip-host";
constexpr const char* kSameAddress = "Onu and Gateway IP addresses must have different values.";
constexpr const char* kOtherNetwork = "Onu and Gateway IP addresses must be in the same network.";

std::string ip_host(const std::string& address, const std::string& gateway) {
  return element("ip-host", element("address", address) + element("default-gateway", gateway));
}

using OnuGatewayIpCheck = CardFixture;

TEST_F(OnuGatewayIpCheck, TheGatewayIsAnotherHostOfTheNetwork) {
  struct Row {
    const char* address;
    const char* gateway;
    const char* text;  // empty: accepted
  };
  const std::array<Row, 14> rows{{
      {"10.0.0.5/24", "10.0.0.1", ""},
      {"10.0.0.5/24", "10.0.1.1", kOtherNetwork},
      {"10.0.0.5/24", "10.0.0.5", kSameAddress},
      {"10.0.0.5/0", "10.0.0.1", kOtherNetwork},
      {"10.0.0.5/0", "10.0.0.5", kSameAddress},
      {"10.0.0.5/32", "10.0.0.6", kOtherNetwork},
      {"10.0.0.5/32", "10.0.0.5", kSameAddress},
      // Only the first bit differs.
      {"10.0.0.5/0", "138.0.0.5", kOtherNetwork},
      {"10.0.0.5/32", "138.0.0.5", kOtherNetwork},
      {"10.0.0.5/31", "10.0.0.4", ""},
      {"10.0.0.5/31", "10.0.0.6", kOtherNetwork},
      {"10.0.0.5/1", "127.255.255.255", ""},
      {"10.0.0.5/1", "128.0.0.1", kOtherNetwork},
      {"10.0.0.5/24", "10.0.0.255", ""},
  }};
  for (const Row& row : rows) {
    running("");
    const Answer answer =
        answer_of(kRequest, gpon_link(3, onu(5, ip_host(row.address, row.gateway))));
    const std::string text = row.text;
    EXPECT_EQ(answer.result, text.empty() ? Verdict::kOk : Verdict::kError)
        << row.address << " " << row.gateway;
    EXPECT_EQ(answer.text, text) << row.address << " " << row.gateway;
  }
}

TEST_F(OnuGatewayIpCheck, OnusOnXgsPonLinksAreCheckedToo) {
  EXPECT_EQ(answer_of(kRequest, xgspon_link(3, onu(5, ip_host("10.0.0.5/24", "10.0.1.1")))).text,
            kOtherNetwork);
}

TEST_F(OnuGatewayIpCheck, AChangedGatewayIsComparedWithTheCommittedAddress) {
  running(gpon_link(3, onu(5, ip_host("10.0.0.5/24", "10.0.0.1"))));
  EXPECT_EQ(
      answer_of(kRequest,
                gpon_link(3, onu(5, element("ip-host", element("default-gateway", "10.0.0.5")))))
          .text,
      kSameAddress);
}

TEST_F(OnuGatewayIpCheck, ADeletedHostIsAcceptedWithoutReads) {
  running(gpon_link(3, onu(5, ip_host("10.0.0.5/24", "10.0.0.1"))));
  const Answer answer =
      request(kRequest, kIpHost, gpon_link(3, onu(5, element("ip-host", "", "delete"))));
  EXPECT_EQ(answer.result, Verdict::kOk);
  EXPECT_EQ(calls(PlatformCall::maapi_exists), 1U);
  EXPECT_EQ(calls(PlatformCall::maapi_get_ipv4_and_plen_elem), 0U);
  EXPECT_EQ(calls(PlatformCall::maapi_get_ipv4_elem), 0U);
}

TEST_F(OnuGatewayIpCheck, AFailedReadIsRejectedWithoutText) {
  running(gpon_link(3, onu(5, ip_host("10.0.0.5/24", "10.0.0.5"))));
  for (const PlatformCall call :
       {PlatformCall::maapi_get_ipv4_and_plen_elem, PlatformCall::maapi_get_ipv4_elem}) {
    fail_call(call);
    const Answer answer = request(kRequest, kIpHost);
    EXPECT_EQ(answer.result, Verdict::kError) << to_string(call);
    EXPECT_EQ(answer.text, "") << to_string(call);
  }
}

TEST_F(OnuGatewayIpCheck, AFailedExistenceTestLeavesItToTheReads) {
  running(gpon_link(3, onu(5, ip_host("10.0.0.5/24", "10.0.0.1"))) +
          gpon_link(4, onu(5, ip_host("10.0.0.5/24", "10.0.0.5"))));
  struct Row {
    const char* keypath;
    Verdict result;
    const char* text;
  };
  const std::array<Row, 3> rows{{
      {kIpHost, Verdict::kOk, ""},
      {"/config/interface/gpon{1 1 4}/onu{5}/ip-host", Verdict::kError, kSameAddress},
      {"/config/interface/gpon{1 1 4}/onu{6}/ip-host", Verdict::kError, ""},
  }};
  for (const Row& row : rows) {
    fail_call(PlatformCall::maapi_exists);
    const Answer answer = request(kRequest, row.keypath);
    EXPECT_EQ(answer.result, row.result) << row.keypath;
    EXPECT_EQ(answer.text, row.text) << row.keypath;
  }
}

TEST_F(OnuGatewayIpCheck, ThePlatformIsCalledInOrder) {
  running(gpon_link(3, onu(5, ip_host("10.0.0.5/24", "10.0.0.5"))));
  const RecordedCalls recorded;
  request(kRequest, kIpHost);
  EXPECT_EQ(recorded.names(),
            (std::vector<std::string>{"qzconfd_maapi_socket_get", "maapi_exists",
                                      "maapi_get_ipv4_and_plen_elem", "maapi_get_ipv4_elem",
                                      "confd_trans_seterr"}));
}

TEST_F(OnuGatewayIpCheck, TheTraceBracketsTheCheck) {
  running(gpon_link(3, onu(5, ip_host("10.0.0.5/24", "10.0.0.5"))));
  TraceCapture trace(TraceLevel::kFlow);
  request(kRequest, kIpHost);
  EXPECT_TRUE(trace.has("validate_onu_gateway_ip begin"));
  EXPECT_TRUE(trace.has("validate_onu_gateway_ip end - ERROR - elapsed time "));
}

TEST(ChkSameNet, ComparesTheBitsOfThePrefix) {
  constexpr std::uint32_t kA = 0x0A000005;  // 10.0.0.5
  struct Row {
    std::uint32_t other;
    std::uint32_t plen;
    int result;
  };
  const std::array<Row, 10> rows{{
      {0x0A000001, 24, 0},
      {0x0A000101, 24, -1},
      {0x0A000101, 23, 0},
      {0x8A000005, 1, -1},
      {0x7FFFFFFF, 1, 0},
      {0x0A000004, 31, 0},
      {0x0A000004, 32, -1},
      {kA, 32, 0},
      // Length 0 compares all bits.
      {0x0A000004, 0, -1},
      {kA, 0, 0},
  }};
  for (const Row& row : rows) {
    EXPECT_EQ(chk_same_net(kA, row.other, row.plen), row.result) << row.other << "/" << row.plen;
  }
}

}  // namespace
}  // namespace tarnd::test
