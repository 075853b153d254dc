// Keypaths that are too short or of other types, and new values of other types: a validator ends
// the process with the assertion that names what it expected, or answers as for a node that does
// not exist.

#include <functional>

#include "tests/catalogue/dispatch.h"
#include "tests/support/assertion.h"
#include "tests/support/card_fixture.h"
#include "tests/support/platform_in_place.h"
#include "valid_service_port.h"

// Included last: it includes base.h, whose macros are plain words that other headers use.
#include "tests/support/keypaths.h"

namespace tarnd::test {
namespace {

using Elements = std::vector<std::vector<confd_value_t>>;

const Outcome kAccepted{CONFD_OK, ""};
const Outcome kRejectedSilently{CONFD_ERR, ""};
constexpr const char* kConfdUnreadable = "Failed accessing confd data.";

/// The keypath of a leaf of interface 1/1/1.
confd_hkeypath_t link_leaf(std::uint32_t leaf, std::uint32_t list) {
  return link_child_keypath(leaf, list, 1, 1, 1);
}

class HostileContext : public CardFixture {
 protected:
  HostileContext() { running(whole_card()); }

  Outcome ask(const std::string& request, confd_hkeypath_t path, confd_value_t new_value = none()) {
    return dispatch(open(), request, &path, &new_value);
  }
};

// ---- Answers

TEST_F(HostileContext, TheOnuListAloneIsNoListOfAnyLink) {
  EXPECT_EQ(ask("onu_gem_check", keypath({{tag(base_onu)}})), kRejectedSilently);
}

TEST_F(HostileContext, FecOfAnotherListIsUnreadable) {
  EXPECT_EQ(ask("fec_confirmation_warning", link_leaf(base_upstream_fec, base_service_port)),
            (Outcome{CONFD_ERR, kConfdUnreadable}));
}

TEST_F(HostileContext, AModeWithoutANameIsReportedWithoutOne) {
  EXPECT_EQ(ask("pon_mode_validation", link_leaf(base_operation_mode, base_xgspon), enumeration(3)),
            (Outcome{CONFD_ERR,
                     "It's not possible to change the operation mode of PON 1 1 1 to . Please "
                     "remove all ONUs associated with it before.\n"}));
}

TEST_F(HostileContext, WithoutOneShotProvisioningAnyKeypathIsAccepted) {
  running("");
  EXPECT_EQ(ask("rg_prof_one_shot_check", keypath({})), kAccepted);
  EXPECT_EQ(ask("rg_prof_one_shot_check", keypath({{number(7)}})), kAccepted);
}

TEST_F(HostileContext, LinkKeysOfOtherTypesAreTakenAsTheyPrint) {
  const auto onus_of = [](const confd_value_t& slot, const confd_value_t& port) {
    return keypath({{tag(base_onu)},
                    {number(1), slot, port},
                    {tag(base_gpon)},
                    {tag(base_interface)},
                    {tag(base_config)}});
  };
  EXPECT_EQ(ask("onu_bw_check", onus_of(text("1"), text("1"))), kAccepted);
  EXPECT_EQ(ask("onu_bw_check", onus_of(text("]"), number(1))), kRejectedSilently);
  EXPECT_EQ(ask("onu_bw_check", onus_of(number(4294967295U), number(1))), kAccepted);
}

// ---- Assertions

struct AssertionRow {
  const char* request;
  std::function<confd_hkeypath_t()> path;
  confd_value_t new_value;
  const char* source;
  const char* function;
  const char* expectation;
};

confd_hkeypath_t with_element(confd_hkeypath_t path, int element, int key,
                              const confd_value_t& value) {
  path.v[element][key] = value;
  return path;
}

confd_hkeypath_t fec_with(int element, int key) {
  return with_element(link_leaf(base_upstream_fec, base_gpon), element, key, text("1"));
}

confd_hkeypath_t mode_with(int key) {
  return with_element(link_leaf(base_operation_mode, base_xgspon), 1, key, text("1"));
}

std::vector<AssertionRow> assertion_rows() {
  const auto entry = [] { return keypath({{number(7)}, {number(7)}, {number(7)}}); };
  const auto fec = [] { return link_leaf(base_upstream_fec, base_gpon); };
  const auto mode = [] { return link_leaf(base_operation_mode, base_xgspon); };
  constexpr const char* kFec = "gpon_ponlink_fec_confirm";
  constexpr const char* kMode = "gpon_link_mode_validation";
  constexpr const char* kModeChecks = ".*";
  constexpr const char* kProfileName = "(&keypath->v[2][0])->type == C_BUF";
  constexpr const char* kOneShotTag = "(&keypath->v[0][0])->type == C_XMLTAG";
  return {
      {"vlan_match_check", entry, none(), "gpon_vlan_match", "validate_vlan_match", kProfileName},
      {"vlan_limit_check", entry, none(), "gpon_vlan_limit", "validate_vlan_limit", kProfileName},
      {"onu_pwd_sn_unique_check",
       [] {
         return keypath({{tag(base_onu)}, {number(1)}});
       },
       none(), "gpon_onu_password_valid", "getAuthMethod", "(&keypath->v[1][1])->type == C_UINT32"},
      {"onu_gem_check", entry, none(), "gpon_onu_gem_check", "validate_onu_gem_check",
       "(&(keypath->v[0][0]))->type == C_XMLTAG"},
      {"fec_confirmation_warning", [] { return keypath({{tag(base_upstream_fec)}}); }, none(), kFec,
       "get_interface_path", "(&keypath->v[1][1])->type == C_UINT32"},
      {"fec_confirmation_warning", [] { return fec_with(1, 1); }, none(), kFec,
       "get_interface_path", "(&keypath->v[1][1])->type == C_UINT32"},
      {"fec_confirmation_warning", [] { return fec_with(1, 2); }, none(), kFec,
       "get_interface_path", "(&keypath->v[1][2])->type == C_UINT32"},
      {"fec_confirmation_warning", [] { return fec_with(2, 0); }, none(), kFec,
       "get_interface_path", "(&keypath->v[2][0])->type == C_XMLTAG"},
      {"fec_confirmation_warning", fec, none(), kFec, "ponlink_fec_confirmation",
       "(newval)->type == C_BOOL"},
      {"fec_confirmation_warning", fec, enumeration(1), kFec, "ponlink_fec_confirmation",
       "(newval)->type == C_BOOL"},
      {"tr069_profile_password_length_check", entry, number(25), "gpon_tr069_profile_validation",
       ".*", "(newval)->type == C_BUF"},
      {"pon_mode_validation", [] { return mode_with(0); }, enumeration(1), kMode, kModeChecks,
       "(&keypath->v[1][0])->type == C_UINT32"},
      {"pon_mode_validation", [] { return mode_with(1); }, enumeration(1), kMode, kModeChecks,
       "(&keypath->v[1][1])->type == C_UINT32"},
      {"pon_mode_validation", [] { return mode_with(2); }, enumeration(1), kMode, kModeChecks,
       "(&keypath->v[1][2])->type == C_UINT32"},
      {"pon_mode_validation", mode, none(), kMode, "pon_mode_validation",
       "(newMode)->type == C_ENUM_VALUE"},
      {"pon_mode_validation", mode, boolean(1), kMode, "pon_mode_validation",
       "(newMode)->type == C_ENUM_VALUE"},
      {"rg_prof_one_shot_check", entry, none(), "gpon_onu_rg_profile_validation", ".*",
       kOneShotTag},
  };
}

using HostileContextDeathTest = HostileContext;

TEST_F(HostileContextDeathTest, AWrongTypeIsNamedByTheAssertion) {
  for (const AssertionRow& row : assertion_rows()) {
    EXPECT_EXIT(ask(row.request, row.path(), row.new_value), testing::KilledBySignal(SIGABRT),
                assertion(row.source, row.function, row.expectation))
        << row.request;
  }
}

TEST_F(HostileContextDeathTest, ANodeThatTheModelDoesNotMeanEndsTheProcess) {
  struct Row {
    const char* request;
    const char* validator;
    const char* source;
  };
  for (const Row& row :
       {Row{"onu_gem_check", "validate_onu_gem_check", "gpon_onu_gem_check"},
        Row{"fec_confirmation_warning", "ponlink_fec_confirmation", "gpon_ponlink_fec_confirm"}}) {
    EXPECT_EXIT(ask(row.request, keypath({{tag(base_service_port)}})), testing::ExitedWithCode(1),
                std::string("Backtrace:\n(.|\n)*Fault 1 raised by ") + row.validator +
                    " at src/validation/" + row.source + "\\.cpp:[1-9][0-9]*: XMLTAG is invalid\n$")
        << row.request;
  }
}

// ---- Keypaths inside the configuration

TEST_F(HostileContext, AServicePortsIdIsTakenOnlyFromWithinAnEntry) {
  struct Row {
    Elements elements;
    int result;
  };
  const confd_value_t list = tag(base_service_port);
  const confd_value_t root = tag(base_config);
  const std::vector<Row> rows{
      {{}, -1},
      {{{root}}, -1},
      {{{list}, {root}}, -1},
      {{{number(7)}, {list}, {root}}, 0},
      // A leaf in the entry: the next element is the key and no tag.
      {{{tag(base_id)}, {number(7)}, {list}, {root}}, -1},
      {{{tag(base_id)}, {tag(base_gpon)}, {number(7)}, {list}, {root}}, 0},
      // Another list.
      {{{number(7)}, {tag(base_onu)}, {root}}, -1},
      {{{none()}, {none()}, {none()}}, -1},
  };
  for (std::size_t i = 0; i < rows.size(); ++i) {
    confd_hkeypath_t path = keypath(rows[i].elements);
    std::uint32_t sp = 0;
    EXPECT_EQ(sp_get_id(-1, nullptr, &path, sp), rows[i].result) << i;
    EXPECT_EQ(sp, rows[i].result == 0 ? 7U : 0U) << i;
  }
}

TEST_F(HostileContextDeathTest, AGroupedPortIsAnEnumeration) {
  const InPlace in_place;
  InPlace::entry = [](maapi_cursor& cursor) {
    if (cursor.keys[0].type == C_ENUM_VALUE) cursor.keys[0] = number(1);
  };
  const Scenario groupings = scenario("itf_grp_validation");
  EXPECT_EXIT(
      dispatch(open(groupings.change), groupings), testing::KilledBySignal(SIGABRT),
      assertion("gpon_itf_grp_validation", ".*", "(&port_cursor.keys[0])->type == C_ENUM_VALUE"));
}

TEST_F(HostileContext, APortBeyondTheTableOfNamesIsNotLookedUp) {
  const InPlace in_place;
  InPlace::entry = [](maapi_cursor& cursor) {
    if (cursor.keys[0].type == C_ENUM_VALUE) cursor.keys[0] = enumeration(6);
  };
  const Scenario groupings = scenario("itf_grp_validation");
  EXPECT_EQ(dispatch(open(groupings.change), groupings), kRejectedSilently);
}

}  // namespace
}  // namespace tarnd::test
