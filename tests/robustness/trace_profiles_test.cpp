// The records of the validators on profiles, path by path.

#include "tests/catalogue/expected_trace.h"
#include "tests/support/platform_in_place.h"

namespace tarnd::test {
namespace {

std::string profile_of(const std::string& kind, const std::string& name,
                       const std::string& content = "") {
  return profiles(element(kind, element("name", name) + content));
}

// ---- Committed configuration

class TraceCommitted : public TraceTest {
 protected:
  static constexpr const char* kRequest = "config_modified_check";
  static constexpr const char* kValidator = "validate_config_modify";
  static constexpr const char* kProfiles = "/config/profile/gpon/bandwidth-profile";

  static std::string fixed(const std::string& name, const std::string& kbits) {
    return bandwidth_profile(name, element("type-1", element("fixed", kbits)));
  }
};

TEST_F(TraceCommitted, HasTheVerdictOnly) {
  running(fixed("old", "1"));
  expect_records(records_of(kRequest, kProfiles, fixed("new", "1")),
                 {begin(kValidator), end(kValidator, "OK")});
  expect_records(records_of(kRequest, kProfiles, fixed("old", "2")),
                 {begin(kValidator), end(kValidator, "ERROR")});
  expect_records(records_of_failed(PlatformCall::maapi_keypath_diff_iterate, 1, kRequest, kProfiles,
                                   fixed("old", "2")),
                 {begin(kValidator), end(kValidator, "OK")});
}

// ---- VLAN mappings

class TraceVlans : public TraceTest {
 protected:
  static constexpr const char* kMapping =
      "/config/profile/gpon/service-profile{services}/vlan-mapping{m1}";
  static constexpr const char* kUnreadable =
      "Failed getting service profiles uni ethernet port information.";

  static std::string mappings(int count) {
    std::string content;
    for (int i = 1; i <= count; ++i) {
      const std::string number = std::to_string(i);
      content += element("vlan-mapping",
                         element("name", "m" + number) +
                             element("match", element("outer", element("vlan-id", number))) +
                             element("uni", element("ethernet", "1")));
    }
    return service_profile("services", content);
  }
};

TEST_F(TraceVlans, LimitHasTheVerdictOnly) {
  running(mappings(20));
  expect_records(records_of("vlan_limit_check", kMapping),
                 {begin("validate_vlan_limit"), end("validate_vlan_limit", "OK")});
  running(mappings(21));
  expect_records(records_of("vlan_limit_check", kMapping),
                 {begin("validate_vlan_limit"), end("validate_vlan_limit", "ERROR")});
}

TEST_F(TraceVlans, MatchLeavesNoTrace) {
  running(mappings(2));
  expect_records(records_of("vlan_match_check", kMapping), {});
  running(service_profile("services", element("vlan-mapping", element("name", "m1"))));
  expect_records(records_of("vlan_match_check", kMapping), {});
}

TEST_F(TraceVlans, PortsThatCannotBeReadAreNotedInTheDebugLog) {
  running(mappings(2));
  const PlatformCall failing = PlatformCall::maapi_get_list_elem;
  expect_records(
      records_of_failed(failing, 1, "vlan_limit_check", kMapping),
      {begin("validate_vlan_limit"), debug_log(kUnreadable), end("validate_vlan_limit", "ERROR")});
  expect_records(records_of_failed(failing, 1, "vlan_match_check", kMapping),
                 {debug_log(kUnreadable)});
}

TEST_F(TraceVlans, AMatchThatCannotBeReadIsNotedInTheDebugLog) {
  running(mappings(2));
  for (int nth = 1; nth <= 2; ++nth) {
    expect_records(
        records_of_failed(PlatformCall::maapi_get_elem, nth, "vlan_match_check", kMapping),
        {debug_log(kUnreadable)});
  }
}

// ---- Changes of profiles in use

struct Kind {
  const char* profile;
  const char* request;
  const char* validator;
  const char* source;
  const char* user;  ///< "onu", "references" or "pots"
};

void PrintTo(const Kind& kind, std::ostream* out) {
  *out << kind.profile;
}

std::string request_of(const testing::TestParamInfo<Kind>& info) {
  return info.param.request;
}

class TraceInUse : public TraceTest, public testing::WithParamInterface<Kind> {
 protected:
  const std::string profile_ = GetParam().profile;
  const std::string validator_ = GetParam().validator;
  const Source source_{GetParam().source};
  const std::string checks_ =
      source_.detail(validator_, "Check if " + profile_ + " gold has been edited.");

  void users(int count) {
    const std::string reference = element(profile_, "gold");
    std::string content;
    for (int id = 1; id <= count; ++id) content += onu(id, referring(reference));
    running(profile_of(profile_, "gold") + gpon_link(1, content));
  }

  Records of(const std::string& name) {
    return records_of(GetParam().request, "/config/profile/gpon/" + profile_ + "{" + name + "}",
                      profile_of(profile_, name));
  }

  /// The record of the card's links, which only the line profiles' users need.
  [[nodiscard]] Records links_looked_at() const {
    if (profile_ != "line-profile") return {};
    return {source_.flow(validator_, "itfType:gpon")};
  }

  void expect_users_asked_for(const Records& written, const Records& rest) {
    Records expected{begin(validator_), checks_};
    for (const Records& part : {links_looked_at(), rest}) {
      expected.insert(expected.end(), part.begin(), part.end());
    }
    expect_records(written, expected);
  }

 private:
  static std::string referring(const std::string& reference) {
    const std::string user = GetParam().user;
    if (user == "references") return element("profile-references", reference);
    if (user == "pots") return element("pots", element("port", "1") + reference);
    return reference;
  }
};

TEST_P(TraceInUse, OfUsers) {
  users(2);
  expect_users_asked_for(of("gold"),
                         {source_.flow(validator_, "There are 2 onus associated with gold"),
                          end(validator_, "WARNING")});
}

TEST_P(TraceInUse, OfNoUser) {
  users(0);
  expect_users_asked_for(
      of("gold"),
      {source_.flow(validator_, "There are 0 onus associated with gold"), end(validator_, "OK")});
}

TEST_P(TraceInUse, OfANewProfile) {
  users(1);
  expect_records(
      of("silver"),
      {begin(validator_),
       source_.detail(validator_, "Check if " + profile_ + " silver has been edited."),
       source_.detail(validator_, profile_ + " silver was not edited"), end(validator_, "OK")});
}

TEST_P(TraceInUse, OfACommittedProfileThatCannotBeLookedUp) {
  users(1);
  for (const PlatformCall failing :
       {PlatformCall::qzconfd_config_session_start, PlatformCall::cdb_exists}) {
    fail_call(failing);
    expect_records(of("gold"), {begin(validator_), checks_, end(validator_, "ERROR")});
  }
}

TEST_P(TraceInUse, OfUsersThatCannotBeCounted) {
  users(1);
  fail_call(PlatformCall::maapi_xpath_eval_expr);
  expect_users_asked_for(
      of("gold"),
      {source_.flow(validator_,
                    "There was an error (maapi_xpath_eval_expr is not answered) checking if there "
                    "is any ONU using " +
                        profile_ + " gold."),
       end(validator_, "ERROR")});
}

TEST_P(TraceInUse, OfACountThatIsNoNumber) {
  const InPlace in_place;
  users(1);
  open();
  fail_call(PlatformCall::maapi_exists);
  EXPECT_EQ(maapi_exists(sock(), tctx()->thandle, "/config"), CONFD_ERR);  // the last error
  let_calls_pass();
  InPlace::xpath = {CONFD_OK, "many"};
  expect_users_asked_for(
      of("gold"), {source_.flow(validator_,
                                "There was an error (maapi_exists is not answered) (stoi) checking "
                                "if there is any ONU using " +
                                    profile_ + " gold."),
                   end(validator_, "ERROR")});
}

INSTANTIATE_TEST_SUITE_P(
    Of, TraceInUse,
    testing::Values(Kind{"line-profile", "line_confirmation_warning", "line_profile_confirmation",
                         "gpon_line_profile_confirm", "references"},
                    Kind{"rg-profile", "rg_profile_confirmation_warning", "rg_profile_confirmation",
                         "gpon_rg_profile_validation", "onu"},
                    Kind{"tr069-acs-profile", "tr069_profile_confirmation_warning",
                         "tr069_profile_confirmation", "gpon_tr069_profile_validation", "onu"},
                    Kind{"sip-agent-profile", "sip_agent_profile_confirmation_warning",
                         "sip_agent_profile_confirmation", "gpon_sip_agent_validation", "pots"},
                    Kind{"media-profile", "voip_media_profile_confirmation_warning",
                         "voip_media_profile_confirmation", "gpon_voip_media_profile_validation",
                         "pots"}),
    request_of);

using TraceCard = TraceTest;

TEST_F(TraceCard, OfALineProfileOnAnXgsponCard) {
  CardDescription card = CardDescription::standard();
  card.xgspon = true;
  insert(card);
  running(line_profile("gold", "") + gpon_link(1, onu(1, uses_line("gold"))));
  const std::string validator = "line_profile_confirmation";
  const Source source("gpon_line_profile_confirm");
  expect_records(
      records_of("line_confirmation_warning", "/config/profile/gpon/line-profile{gold}"),
      {begin(validator), source.detail(validator, "Check if line-profile gold has been edited."),
       source.flow(validator, "itfType:xgspon"),
       source.flow(validator, "There are 0 onus associated with gold"), end(validator, "OK")});
}

// ---- SSIDs

class TraceSsids : public TraceTest {
 protected:
  static constexpr const char* kValidator = "rg_profile_ssid_unique_check_func";
  const Source source_{"gpon_rg_profile_validation"};
  const std::string checks_ =
      source_.detail(kValidator, "Checking if SSID is unique for (rg) RG-Profile");

  static std::string custom(int id, const std::string& text) {
    return wlan(id, element("custom", text));
  }
  static std::string wlan(int id, const std::string& ssid) {
    return element("wlan", element("id", std::to_string(id)) + element("ssid", ssid));
  }

  Records of(const std::string& wlans) {
    running(rg_profile("rg", wlans));
    return records_of("rg_profile_ssid_unique_check", "/config/profile/gpon/rg-profile{rg}/wlan");
  }

  [[nodiscard]] std::string found(const std::string& ssid) const {
    return source_.flow(kValidator, "SSID is (" + ssid +
                                        ") RG-Profile (/config/profile/gpon/rg-profile{rg}/wlan) "
                                        "wlan.");
  }
  [[nodiscard]] std::string error(const std::string& last_error) const {
    return source_.flow(kValidator, "There was an error (" + last_error +
                                        ") checking if SSID is unique in rg-profile.");
  }
};

TEST_F(TraceSsids, OfDifferentOnes) {
  const std::string composed =
      wlan(2, element("auto", element("onu-serial-number", "") + element("prefix", "A") +
                                  element("suffix", "B")));
  expect_records(of(custom(1, "Home") + composed),
                 {checks_, found("Home"), found("AZQRT12345678B")});
  expect_records(of(""), {checks_});
}

TEST_F(TraceSsids, OfTheSameOneTwice) {
  open();
  fail_call(PlatformCall::maapi_exists);
  EXPECT_EQ(maapi_exists(sock(), tctx()->thandle, "/config"), CONFD_ERR);  // the last error
  let_calls_pass();
  expect_records(of(custom(1, "Home") + custom(2, "Home")),
                 {checks_, found("Home"), found("Home"), error("maapi_exists is not answered")});
}

TEST_F(TraceSsids, OfNone) {
  expect_records(of(custom(1, "Home") + wlan(2, "")),
                 {checks_, found("Home"), source_.detail(kValidator, "SSID not configured")});
}

TEST_F(TraceSsids, OfOneThatCannotBeRead) {
  fail_call(PlatformCall::maapi_get_str_elem);
  expect_records(of(custom(1, "Home")), {checks_, error("maapi_get_str_elem is not answered")});
}

// ---- Passwords

class TracePassword : public TraceTest {
 protected:
  static constexpr const char* kValidator = "tr069_profile_password_length_check_func";

  Records of(const std::string& password_text) {
    running(profile_of("tr069-acs-profile", "acs", element("password", "$0$" + password_text)));
    return records_of("tr069_profile_password_length_check",
                      "/config/profile/gpon/tr069-acs-profile{acs}/password");
  }
};

TEST_F(TracePassword, HasTheVerdictOnly) {
  expect_records(of(std::string(25, 'x')), {begin(kValidator), end(kValidator, "OK")});
  expect_records(of(std::string(26, 'x')), {begin(kValidator), end(kValidator, "ERROR")});
  for (const PlatformCall failing :
       {PlatformCall::maapi_install_crypto_keys, PlatformCall::confd_decrypt}) {
    fail_call(failing);
    expect_records(of("short"), {begin(kValidator), end(kValidator, "ERROR")});
    let_calls_pass();
  }
}

// ---- Interface groupings

class TraceGroupings : public TraceTest {
 protected:
  static constexpr const char* kValidator = "validate_itf_grp";
  const Source source_{"gpon_itf_grp_validation"};

  static std::string wan(const std::string& kind, const std::string& name,
                         const std::string& grouping) {
    return element("wan-" + kind + "-connection", element("name", name) + grouping);
  }
  static std::string grouping(const std::string& content) {
    return element("itf-grouping", content);
  }
  static std::string port(const std::string& name, const std::string& vlan = "") {
    return element("ports", element("port", name) + (vlan.empty() ? "" : element("vlan", vlan)));
  }
  static std::string address(const std::string& text) { return element("ipv4-address", text); }
  static std::string pool(const std::string& start, const std::string& last) {
    return element("dhcp-server", "true") +
           element("dhcp-server-address-pool",
                   element("start-address", start) + element("end-address", last));
  }

  Records of(const std::string& wans) {
    running(rg_profile("rg", wans));
    return records_of("itf_grp_validation", "/config/profile/gpon/rg-profile{rg}");
  }

  // The records by their function.
  [[nodiscard]] std::string ports_record(const std::string& text) const {
    return source_.detail("validate_itf_grp_ports", text);
  }
  [[nodiscard]] std::string port_record(const std::string& text) const {
    return source_.detail("check_port_vlan", text);
  }
  [[nodiscard]] std::string net_record(const std::string& text) const {
    return source_.detail("validate_itf_grp_net", text);
  }
  [[nodiscard]] std::string dhcp_record(const std::string& text) const {
    return source_.detail("validate_itf_grp_dhcp", text);
  }

  const std::string begin_ports_ = ports_record("Checking port+vlan Itf Grp");
  const std::string end_ports_ =
      ports_record("Took # usecs to validate the Interface Groupings Ports from RG-profile rg");
  const std::string begin_nets_ = net_record("Checking port vlan itf grp");
  const std::string end_nets_ = net_record(
      "Took # usecs to validate the Interface Groupings IP and DHCP configurations from RG-profile "
      "rg");
  const std::string wan_list_ = dhcp_record("Checking Itf Grouping DHCP");

  /// The records of one PPPoE connection without ports, up to the read of its address.
  [[nodiscard]] Records up_to_networks() const {
    return {begin(kValidator), begin_ports_, end_ports_, begin_nets_, wan_list_};
  }

  void expect_after_ports(const Records& written, const Records& rest) {
    Records expected = up_to_networks();
    expected.insert(expected.end(), rest.begin(), rest.end());
    expect_records(written, expected);
  }
};

TEST_F(TraceGroupings, OfAProfileWithoutConnections) {
  expect_after_ports(of(""), {wan_list_, wan_list_, end_nets_, end(kValidator, "OK")});
}

TEST_F(TraceGroupings, OfEveryKindOfConnection) {
  expect_records(
      of(wan("pppoe", "internet",
             grouping(port("eth1", "10") + port("wl0") + address("10.0.0.1/24") +
                      pool("10.0.0.2", "10.0.0.9"))) +
         wan("ip", "spare", "") + wan("ip", "tv", grouping(port("eth2"))) +
         wan("ip", "voice", grouping(address("10.0.1.1/24"))) +
         wan("bridge", "office", grouping(port("eth3") + address("10.0.2.1/24")))),
      {begin(kValidator), begin_ports_, port_record("Checking port 0 vlan 10 itf grp"),
       port_record("Checking port 4 vlan 0 itf grp"),
       port_record("Interface Grouping not created for WAN spare. Skipping validation."),
       port_record("Checking port 1 vlan 0 itf grp"), port_record("Checking port 2 vlan 0 itf grp"),
       end_ports_, begin_nets_,
       // PPPoE
       wan_list_,
       // IP
       wan_list_, dhcp_record("No Interface Grouping for wan spare, skipping validation"),
       dhcp_record("IP not configured for this Interface grouping, skipping validation"),
       source_.flow("validate_itf_grp_dhcp",
                    "DHCP not enabled for this Interface grouping, skipping validation of DHCP"),
       // bridge
       wan_list_,
       dhcp_record("WAN bridge does not have DHCP configuration, skipping this part of validation"),
       end_nets_, end(kValidator, "OK")});
}

TEST_F(TraceGroupings, OfAPortUsedTwice) {
  expect_records(of(wan("pppoe", "internet", grouping(port("eth4"))) +
                    wan("ip", "tv", grouping(port("eth4")))),
                 {begin(kValidator), begin_ports_, port_record("Checking port 3 vlan 0 itf grp"),
                  port_record("Checking port 3 vlan 0 itf grp"), end(kValidator, "ERROR")});
}

TEST_F(TraceGroupings, OfAVlanThatCannotBeRead) {
  fail_call(PlatformCall::maapi_get_u_int32_elem);
  expect_records(of(wan("pppoe", "internet", grouping(port("eth1", "10")))),
                 {begin(kValidator), begin_ports_,
                  source_.flow("check_port_vlan",
                               "Failed getting port VLAN for Itf Grouping on WAN from ConfD "
                               "(maapi_get_u_int32_elem is not answered)"),
                  end(kValidator, "ERROR")});
}

TEST_F(TraceGroupings, OfOverlappingNetworks) {
  const std::string networks = wan("pppoe", "one", grouping(address("10.0.0.1/24"))) +
                               wan("pppoe", "two", grouping(address("10.0.0.129/25")));
  const std::string no_dhcp =
      source_.flow("validate_itf_grp_dhcp",
                   "DHCP not enabled for this Interface grouping, skipping validation of DHCP");
  expect_after_ports(of(networks), {no_dhcp, end(kValidator, "ERROR")});
}

TEST_F(TraceGroupings, OfAPoolThatIsRefused) {
  for (const auto& [start, last] :
       {std::pair("10.0.0.9", "10.0.0.2"), std::pair("10.0.1.2", "10.0.1.9"),
        std::pair("10.0.0.2", "10.0.1.9")}) {
    expect_after_ports(
        of(wan("pppoe", "one", grouping(address("10.0.0.1/24") + pool(start, last)))),
        {end(kValidator, "ERROR")});
  }
}

TEST_F(TraceGroupings, OfAddressesThatCannotBeRead) {
  struct Row {
    PlatformCall failing;
    int nth;
    std::string record;
  };
  const std::string network =
      wan("pppoe", "one", grouping(address("10.0.0.1/24") + pool("10.0.0.2", "10.0.0.9")));
  const std::string in = "validate_itf_grp_dhcp";
  for (const Row& row :
       {Row{PlatformCall::maapi_get_ipv4_and_plen_elem, 1,
            dhcp_record("Failed to get ipv4 maapi_get_ipv4_and_plen_elem is not answered")},
        Row{PlatformCall::maapi_get_bool_elem, 1,
            source_.flow(in, "Failed to get DHCP info from ConfD")},
        Row{PlatformCall::maapi_get_ipv4_elem, 1, source_.flow(in, "Failed to get end-address")},
        Row{PlatformCall::maapi_get_ipv4_elem, 2, dhcp_record("Failed to get start-address")}}) {
    fail_call(row.failing, row.nth);
    expect_after_ports(of(network), {row.record, end(kValidator, "ERROR")});
    let_calls_pass();
  }
}

}  // namespace
}  // namespace tarnd::test
