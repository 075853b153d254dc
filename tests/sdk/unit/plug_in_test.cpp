#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <thread>

#include "base.h"
#include "cl_elapsed_time.h"
#include "gpon_bw_limit.h"
#include "gpon_card_valid.h"
#include "gpon_config_modify.h"
#include "gpon_itf_grp_validation.h"
#include "gpon_link_mode_validation.h"
#include "gpon_onu_gateway_ip.h"
#include "gpon_onu_password_valid.h"
#include "gpon_ponlink_fec_confirm.h"
#include "gpon_vlan_limit.h"
#include "gpon_vlan_match.h"
#include "stub_platform.h"
#include "valid_service_port.h"

static_assert(C_ENUM_VALUE == 28 && C_LIST == 31 && C_BINARY == 39 && C_IPV4_AND_PLEN == 48);

namespace sdk {
namespace {

constexpr int kSock = 7;

/// The plug-in on a platform of the other shape.
class PlugIn : public ::testing::Test {
 protected:
  PlugIn() {
    platform() = Platform();
    user_.usid = 42;
    tctx_.uinfo = &user_;
    tctx_.vcb_opaque = &sock_;
  }

  /// The keypath of a leaf of a PON interface: /config/interface/<list>{1 1 3}/<leaf>.
  static confd_hkeypath_t interface_leaf(std::uint32_t list, std::uint32_t leaf) {
    confd_hkeypath_t keypath{};
    keypath.len = 5;
    keypath.v[0][0] = name_tag(leaf);
    keypath.v[1][0] = number(1);
    keypath.v[1][1] = number(1);
    keypath.v[1][2] = number(3);
    keypath.v[2][0] = name_tag(list);
    return keypath;
  }

  int sock_ = kSock;
  confd_user_info user_{};
  confd_trans_ctx tctx_{};
};

using Entry = std::array<confd_value_t, SP_CONFD_VALUES_PER_OBJECT>;

Entry service_port(int interface_at, int onu_at, int gem_at) {
  Entry values;
  values.fill(nothing());
  values[SP_CONFD_VAL_OFFSET_SP] = number(9);
  values.at(static_cast<std::size_t>(interface_at)) = text("1/1/3");
  values.at(static_cast<std::size_t>(onu_at)) = number(5);
  values.at(static_cast<std::size_t>(gem_at)) = number(2);
  return values;
}

Entry gpon_service_port() {
  return service_port(SP_CONFD_VAL_OFFSET_GPON_INTERFACE, SP_CONFD_VAL_OFFSET_GPON_ONU,
                      SP_CONFD_VAL_OFFSET_GPON_GEM);
}

Entry xgspon_service_port() {
  return service_port(SP_CONFD_VAL_OFFSET_XGSPON_INTERFACE, SP_CONFD_VAL_OFFSET_XGSPON_ONU,
                      SP_CONFD_VAL_OFFSET_XGSPON_GEM);
}

// Values and keypaths

TEST_F(PlugIn, PathsOfAnInterfaceComeFromTheKeypath) {
  const confd_hkeypath_t keypath = interface_leaf(base_xgspon, base_upstream_fec);
  std::string path;
  ASSERT_TRUE(get_interface_path(&keypath, path));
  EXPECT_EQ(path, "/config/interface/xgspon{1 1 3}");
  ASSERT_TRUE(get_fec_path(&keypath, "/base", path));
  EXPECT_EQ(path, "/base/upstream-fec");
}

TEST_F(PlugIn, OtherNodesHaveNoInterfacePath) {
  const confd_hkeypath_t keypath = interface_leaf(base_onu, base_id);
  std::string path = "untouched";
  EXPECT_FALSE(get_interface_path(&keypath, path));
  EXPECT_FALSE(get_fec_path(&keypath, "/base", path));
  EXPECT_EQ(path, "untouched");
}

TEST_F(PlugIn, AssertionsNameTheValueAsTheSourceWritesIt) {
  confd_hkeypath_t keypath = interface_leaf(base_gpon, base_upstream_fec);
  keypath.v[1][1] = text("1");
  std::string path;
  EXPECT_DEATH(get_interface_path(&keypath, path),
               "\\(&keypath->v\\[1\\]\\[1\\]\\)->type == C_UINT32");
  std::free(CONFD_GET_BUFPTR(&keypath.v[1][1]));
}

TEST_F(PlugIn, AuthenticationMethodIsReadOfTheKeypathsCard) {
  platform().numbers["/config/gpon{1/1}/onu-auth-method"] = 2;
  confd_hkeypath_t keypath = interface_leaf(base_gpon, base_onu);
  EXPECT_EQ(getAuthMethod(kSock, &tctx_, &keypath), 2);
}

TEST_F(PlugIn, NewModeIsTheUsersNotice) {
  platform().numbers["/config/interface/xgspon{1 1 3}/onu"] = 0;
  confd_hkeypath_t keypath = interface_leaf(base_xgspon, base_operation_mode);
  confd_value_t combo = enumeration(2);
  EXPECT_EQ(pon_mode_validation(kSock, &tctx_, &keypath, &combo), CONFD_OK);
  EXPECT_THAT(platform().messages,
              ::testing::ElementsAre(::testing::StartsWith("42: WARNING: combo mode configured")));
}

TEST_F(PlugIn, RequestIsDispatchedFromTheTransactionContext) {
  char request[] = "interface_gpon_validation";
  tctx_.validate_opaque = request;
  confd_hkeypath_t keypath{};
  platform().numbers["/config/interface/gpon"] = 7;
  EXPECT_EQ(validate(&tctx_, &keypath, nullptr), CONFD_ERR);
  EXPECT_EQ(platform().user_text,
            "GPON interfaces cannot be deleted because they are physical ports.");
  platform().numbers["/config/interface/gpon"] = 8;
  EXPECT_EQ(validate(&tctx_, &keypath, nullptr), CONFD_OK);
}

// Value arrays and tagged values

TEST_F(PlugIn, ServicePortIsReadOfEitherBranch) {
  for (Entry values : {gpon_service_port(), xgspon_service_port()}) {
    CONFD_SET_INT32(&values[SP_CONFD_VAL_OFFSET_MATCH_VLAN], 100);
    std::uint32_t sp = 0;
    std::uint32_t onu = 0;
    std::uint32_t gem = 0;
    std::int32_t match = 0;
    std::int32_t action = 0;
    std::string link;
    platform().freed = 0;
    ASSERT_EQ(service_port_get_leafs(values.data(), sp, link, onu, gem, match, action), 0);
    EXPECT_EQ(std::tie(sp, onu, gem), std::make_tuple(9U, 5U, 2U));
    EXPECT_EQ(link, "1 1 3");
    EXPECT_EQ(match, 100);
    EXPECT_EQ(action, -1);
    EXPECT_EQ(platform().freed, 1);
  }
}

TEST_F(PlugIn, ServicePortWithoutABranchIsRefused) {
  Entry values;
  values.fill(nothing());
  std::uint32_t id = 0;
  std::int32_t vlan = 0;
  std::string link;
  EXPECT_EQ(service_port_get_leafs(values.data(), id, link, id, id, vlan, vlan), -1);
  fm_port_type type{};
  EXPECT_EQ(get_ponlink_type(values.data(), &type), -1);
}

TEST_F(PlugIn, KindOfLinkIsThatOfTheBranch) {
  fm_port_type type{};
  Entry gpon = gpon_service_port();
  ASSERT_EQ(get_ponlink_type(gpon.data(), &type), 0);
  EXPECT_EQ(type, FM_PORT_TYPE_GPON);
  Entry xgspon = xgspon_service_port();
  ASSERT_EQ(get_ponlink_type(xgspon.data(), &type), 0);
  EXPECT_EQ(type, FM_PORT_TYPE_XGSPON);
  confd_free_value(&gpon[SP_CONFD_VAL_OFFSET_GPON_INTERFACE]);
  confd_free_value(&xgspon[SP_CONFD_VAL_OFFSET_XGSPON_INTERFACE]);
}

TEST_F(PlugIn, TaggedServicePortIsReadOfTheNamedBranch) {
  std::array<confd_tag_value_t, 18> tv{};
  tv[10].v = text("1/1/5");
  tv[12].v = number(6);
  tv[14].v = number(3);
  std::uint32_t onu = 0;
  std::uint32_t gem = 0;
  std::string link;
  const confd_hkeypath_t keypath{};
  ASSERT_EQ(sp_get_values(kSock, &tctx_, &keypath, link, onu, gem, 9, limid_type_xgspon, tv.data(),
                          static_cast<int>(tv.size())),
            0);
  EXPECT_EQ(link, "1 1 5");
  EXPECT_EQ(std::tie(onu, gem), std::make_tuple(6U, 3U));
}

TEST_F(PlugIn, BandwidthProfileIsReducedToWhatItReserves) {
  struct Case {
    std::vector<std::size_t> figures;  // positions with 10, 20, 30
    std::uint32_t fixed;
    std::uint32_t total;
  };
  const std::vector<Case> cases = {
      {{3}, 10, 10}, {{5}, 0, 10}, {{7, 8}, 0, 10}, {{10}, 0, 0}, {{12, 13, 14}, 10, 20}};
  for (const Case& profile : cases) {
    std::array<confd_value_t, 15> values;
    values.fill(nothing());
    values[0] = text("home");
    std::uint32_t figure = 0;
    for (const std::size_t position : profile.figures) values.at(position) = number(figure += 10);
    std::string name;
    std::uint32_t fixed = 0;
    std::uint32_t total = 0;
    EXPECT_EQ(loadBwProf(values.data(), name, fixed, total), 0);
    EXPECT_EQ(name, "home");
    EXPECT_EQ(fixed, profile.fixed);
    EXPECT_EQ(total, profile.total);
  }
}

TEST_F(PlugIn, BandwidthProfileWithoutTrafficTypeIsRefused) {
  std::array<confd_value_t, 15> values;
  values.fill(nothing());
  values[0] = text("empty");
  std::string name;
  std::uint32_t figure = 0;
  EXPECT_EQ(loadBwProf(values.data(), name, figure, figure), -1);
  EXPECT_EQ(platform().freed, 1);
}

// Cursors, queries, changes

TEST_F(PlugIn, PortWithoutAVlanIsUntagged) {
  const std::string list = "/rg/wan-ip-connection";
  platform().lists[list] = {text("wan")};
  platform().numbers[list + "{wan}/itf-grouping/"] = 1;
  platform().lists[list + "{wan}/itf-grouping/ports"] = {enumeration(0), enumeration(0)};
  valid::GroupedPorts seen;
  EXPECT_EQ(check_port_vlan(kSock, &tctx_, seen, list), CONFD_ERR);
  EXPECT_EQ(platform().user_text,
            "Port eth1 untagged cannot be used in more than one interface grouping");

  // Only the code of a missing leaf says so; its neighbours are failures.
  for (const int failure : {CONFD_ERR_ALREADY_EXISTS, CONFD_ERR_BADPATH, CONFD_ERR_UNAVAILABLE}) {
    platform().failure = failure;
    platform().user_text.clear();
    seen.clear();
    EXPECT_EQ(check_port_vlan(kSock, &tctx_, seen, list), CONFD_ERR);
    EXPECT_EQ(platform().user_text, "");
    EXPECT_TRUE(seen.empty());
  }
  confd_free_value(&platform().lists[list].front());
}

TEST_F(PlugIn, OnusAreCountedLinkByLink) {
  platform().lists["/config/interface/gpon/"] = {number(1), number(2)};
  platform().lists["/config/interface/xgspon/"] = {number(3)};
  platform().numbers["/config/interface/gpon/{1}/onu"] = 4;
  platform().numbers["/config/interface/xgspon/{3}/onu"] = 5;
  EXPECT_EQ(get_number_onus_in_candidate(kSock, &tctx_), 9);
}

TEST_F(PlugIn, MissingLineProfilesOfALinkAreNamed) {
  line_prof_to_bandwidth = {{"home", {}}};
  platform().selected = {text("home"), text("gone")};
  EXPECT_EQ(validate_ponlink_bw(kSock, &tctx_, "1", "3"), CONFD_ERR);
  EXPECT_EQ(platform().user_text, "Line profile gone doesn't not exist.");
  line_prof_to_bandwidth.clear();
}

TEST_F(PlugIn, ModificationEndsTheWalkOverTheChanges) {
  for (const maapi_iter_op op : {MOP_NOOP, MOP_CREATED, MOP_DELETED, MOP_SDK_7}) {
    std::uint8_t modified = 0;
    EXPECT_EQ(diffIter(nullptr, op, nullptr, nullptr, &modified), ITER_CONTINUE);
    EXPECT_EQ(modified, 0);
  }
  std::uint8_t modified = 0;
  EXPECT_EQ(diffIter(nullptr, MOP_MODIFIED, nullptr, nullptr, &modified), ITER_STOP);
  EXPECT_EQ(modified, 1);
}

// What needs no platform

TEST(PlugInRules, TwentyMappingsAPort) {
  std::unordered_map<std::uint32_t, std::uint32_t> counter;
  for (int i = 0; i < 20; ++i) EXPECT_EQ(check_vlan_counter(1, counter), CONFD_OK);
  EXPECT_EQ(check_vlan_counter(1, counter), CONFD_ERR);
  EXPECT_EQ(check_vlan_counter(2, counter), CONFD_OK);
}

TEST(PlugInRules, SameMatchOfAPortConflicts) {
  std::multimap<std::uint32_t, vlanMatch_t> table;
  EXPECT_EQ(check_vlan_match(1, "10", "any", table), CONFD_OK);
  EXPECT_EQ(check_vlan_match(1, "10", "3", table), CONFD_ERR);
  EXPECT_EQ(check_vlan_match(2, "10", "3", table), CONFD_OK);
}

TEST(PlugInRules, NetworkIsSharedUpToThePrefix) {
  EXPECT_EQ(chk_same_net(0x0A000001, 0x0A0000FE, 24), 0);
  EXPECT_EQ(chk_same_net(0x0A000001, 0x0A0001FE, 24), -1);
}

TEST(PlugInRules, TrafficBelongsToTheFirstServicePort) {
  MatchOverlapValidation matches;
  std::string message;
  EXPECT_FALSE(matches.ServicePortMatchOverlaps(1, message, FM_PORT_TYPE_GPON, "1 1 3", 5, 2, 10));
  EXPECT_TRUE(matches.ServicePortMatchOverlaps(4, message, FM_PORT_TYPE_GPON, "1 1 3", 5, 2, 10));
  EXPECT_EQ(message, "Service-port 1 and 4 have conflicting matches.");
}

TEST(PlugInRules, RepeatedCredentialsAreReported) {
  std::multimap<std::string, std::string> credentials = {{"A", "onu 1"}, {"A", "onu 2"}};
  std::stringstream report;
  std::int32_t result = CONFD_OK;
  evaluateOnuSerialPassword(report, credentials, "password", &result);
  EXPECT_EQ(result, CONFD_ERR);
  EXPECT_EQ(report.str(), "onu 1 password: [A]\nonu 2 password: [A]\n");
}

TEST(PlugInRules, KindsOfLinksHaveNames) {
  EXPECT_STREQ(ponlink_type_name(FM_PORT_TYPE_GPON), "gpon");
  EXPECT_STREQ(ponlink_type_name(FM_PORT_TYPE_XGSPON), "xgspon");
}

TEST(PlugInRules, StoppedTimeStays) {
  cl_ElapsedTime timer;
  std::this_thread::sleep_for(std::chrono::milliseconds(2));
  timer.stop();
  const std::int64_t msecs = timer.get_elapsed_time_msec();
  EXPECT_GE(msecs, 2);
  // cppcheck-suppress knownConditionTrueFalse ; time goes on
  EXPECT_EQ(timer.get_elapsed_time_msec(), msecs);
}

}  // namespace
}  // namespace sdk
