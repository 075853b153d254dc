#include "tests/catalogue/requests.h"

#include <algorithm>
#include <stdexcept>

#include "confd_lib.h"
#include "tests/support/configuration.h"

namespace tarnd::test {

const Answers kEndsTheProcess;

namespace {

using Call = PlatformCall;

// ---- Outcomes

const Outcome kAccepted{CONFD_OK, ""};

Outcome rejected(const std::string& text, int cursors_left_open = 0) {
  return {CONFD_ERR, text, cursors_left_open};
}

Outcome rejected_silently(int cursors_left_open = 0) {
  return rejected("", cursors_left_open);
}

Outcome asks(const std::string& text) {
  return {CONFD_VALIDATION_WARN, text};
}

const Answers kPasses{kAccepted};
const Answers kSilent{rejected_silently()};
const Answers kUnreadable{rejected("Failed accessing confd data.")};
const Outcome kTransactionUnreadable = rejected("Failed accessing transaction data.");

std::string missing_lines(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += "Line profile " + line + " doesn't not exist.";
  return text;
}

// The line profiles are read in three ways. If something is missing, the ONUs of link 1 (with the
// line profiles fast, slow and, if one was added, fast again) cannot be added up.
const Outcome kNoLines = rejected(missing_lines({"fast", "slow", "fast"}));
const Outcome kNoLinesOnTheCard = rejected(missing_lines({"fast", "slow"}));
const Outcome kNoSlowLine = rejected(missing_lines({"slow"}));

Outcome missing_gem(int sp, int gem_id) {
  return rejected("Service-port [" + std::to_string(sp) + "] gem [" + std::to_string(gem_id) +
                  "] was not configured to onu [1]");
}

/// Objects of another size end the process, and so does a size that cannot be read.
AnswersOfCalls reading_objects(AnswersOfCalls failures) {
  failures.emplace(Call::confd_max_object_size, kEndsTheProcess);
  failures.emplace(Call::confd_cs_node_cd, kEndsTheProcess);
  return failures;
}

// ---- Nodes and changes

constexpr const char* kOnus = "/config/interface/gpon{1 1 1}/onu";
constexpr const char* kServicePorts = "/config/service-port";
const std::vector<std::string> kOnusOfBothLinks{"/config/interface/gpon/onu",
                                                "/config/interface/xgspon/onu"};

std::string leaf(const std::string& name, const std::string& text) {
  return element(name, text);
}

std::string profile(const std::string& list, const std::string& key) {
  return "/config/profile/gpon/" + list + key;
}

/// ONUs of GPON link 1, with this content.
std::string of_onu(int id, const std::string& content) {
  return gpon_link(1, onu(id, content));
}

std::string new_onu(const Names& n) {
  return of_onu(
      3, element("auth-method", leaf("serial-number", "ZQRT00000009") + leaf("password", "three")) +
             uses_line(n("fast")));
}

std::string of_profile(const std::string& list, const std::string& name,
                       const std::string& content) {
  return profiles(element(list, leaf("name", name) + content));
}

/// A mapping of the service profile "services" on another VLAN and port.
std::string moved_mapping(const Names& n) {
  return service_profile(n("services"),
                         vlan_mapping(n("lan"), matching("101", "") + on_ethernet({3})));
}

std::string mapping_path(const Names& n, const std::string& profile_name,
                         const std::string& mapping) {
  return profile("service-profile", n.key(profile_name)) + "/vlan-mapping" + n.key(mapping);
}

/// Another network for a WAN connection of the RG profile.
std::string moved_network(const Names& n) {
  return rg_profile(n("rg"),
                    element("wan-ip-connection",
                            leaf("name", n("voice")) +
                                element("itf-grouping", leaf("ipv4-address", "192.168.4.1/24"))));
}

std::string two_more_ports() {
  return service_port(4, "gpon", "1/1/1", 1, 1, 40) + service_port(5, "xgspon", "1/1/1", 1, 2, 50);
}

/// The change of a profile that ONUs use.
Scenario change_of_used_profile(const std::string& list, const std::string& change) {
  return {.change = change,
          .answer = asks("Change in " + list +
                         " configuration will result in temporary data loss for all ONUs using "
                         "this profile."),
          .failures = {{Call::qzconfd_maapi_socket_get, kUnreadable},
                       {Call::qzconfd_config_session_start, kUnreadable},
                       {Call::cdb_exists, kUnreadable},
                       {Call::maapi_xpath_eval_expr, kUnreadable}},
          // The profile's name.
          .prints = {.verdict = {.values = 1}}};
}

// ---- The requests

using Row = Request (*)(const Names& n);

const Row kRows[] = {
    [](const Names& n) -> Request {
      return {.name = "onu_bw_check",
              .validator = "validate_max_bandwidth_ponlink",
              .source = "gpon_bw_limit",
              .unit_tests = {"bw_limit_test"},
              .nodes = {"/config/interface/gpon/onu"},
              .call_once = true,
              .instance = kOnus,
              .scenarios = {{.change = new_onu(n),
                             .answer = kAccepted,
                             .failures = reading_objects(
                                 {{Call::qzconfd_maapi_socket_get, kSilent},
                                  {Call::maapi_query_start, kSilent},
                                  {Call::maapi_query_result, kSilent},
                                  {Call::maapi_init_cursor, {kAccepted, kNoLines}},
                                  {Call::maapi_get_next, {kAccepted, kNoLines, kNoSlowLine}}}),
                             // Slot and port, three line profiles, three ONUs.
                             .prints = {.verdict = {.values = 8}}}},
              // A link without slot and port cannot be queried.
              .without_elements = rejected_silently()};
    },
    [](const Names& n) -> Request {
      return {
          .name = "ponlink_bw_check",
          .validator = "validate_max_bandwidth_global",
          .source = "gpon_bw_limit",
          .unit_tests = {"bw_limit_test"},
          .nodes = {profile("bandwidth-profile", ""), profile("line-profile", "")},
          .call_once = true,
          .instance = profile("bandwidth-profile", ""),
          .scenarios = {{.change =
                             bandwidth_profile(n("t6"), element("type-1", leaf("fixed", "1"))),
                         .answer = kAccepted,
                         .failures = reading_objects(
                             {{Call::maapi_query_start, kSilent},
                              {Call::maapi_query_result, kSilent},
                              {Call::maapi_init_cursor, {kAccepted, kNoLinesOnTheCard}},
                              {Call::maapi_get_next, {kAccepted, kNoLinesOnTheCard, kNoSlowLine}}}),
                         // Three line profiles, slot and port of two links, two ONUs.
                         .prints = {.verdict = {.values = 9}}}},
          .without_elements = kAccepted};
    },
    [](const Names&) -> Request {
      return {.name = "config_modified_check",
              .validator = "validate_config_modify",
              .source = "gpon_config_modify",
              .unit_tests = {"config_modify_test"},
              .nodes = {profile("bandwidth-profile", ""), profile("service-profile", ""),
                        kServicePorts},
              .call_once = true,
              .instance = kServicePorts,
              .scenarios = {{.change = two_more_ports(), .answer = kAccepted},
                            {.title = "rejected",
                             .change = service_port(1, "gpon", "1/1/1", 1, 1, 11),
                             .answer = rejected(
                                 "Changing already committed service port is not allowed."),
                             .failures = {{Call::qzconfd_maapi_socket_get, kPasses},
                                          {Call::maapi_keypath_diff_iterate, kPasses}}}},
              // No change is found there.
              .without_elements = kAccepted};
    },
    [](const Names&) -> Request {
      return {
          .name = "onu_gateway_ip_check",
          .validator = "validate_onu_gateway_ip",
          .source = "gpon_onu_gateway_ip",
          .unit_tests = {"onu_gateway_ip_test"},
          .nodes = {"/config/interface/gpon/onu/ip-host", "/config/interface/xgspon/onu/ip-host"},
          .instance = std::string(kOnus) + "{1}/ip-host",
          .scenarios = {{.change =
                             of_onu(1, element("ip-host", leaf("default-gateway", "10.0.0.254"))),
                         .answer = kAccepted,
                         .failures = {{Call::qzconfd_maapi_socket_get, kSilent},
                                      {Call::maapi_get_ipv4_and_plen_elem, kSilent},
                                      {Call::maapi_get_ipv4_elem, kSilent}}}},
          // The node counts as existing, but its leaves cannot be read.
          .without_elements = rejected_silently()};
    },
    // If the look-up fails, the node counts as missing: a mapping on Ethernet ports then has no
    // port, and one on the VEIP is not checked for Ethernet ports.
    [](const Names& n) -> Request {
      return {.name = "vlan_match_check",
              .validator = "validate_vlan_match",
              .source = "gpon_vlan_match",
              .unit_tests = {"vlan_match_test"},
              .nodes = {profile("service-profile", "/vlan-mapping")},
              .instance = mapping_path(n, "twins", "elder"),
              .sign = "It's not possible to configure two or more vlan rules with the same match.",
              .scenarios = {{.keypath = mapping_path(n, "services", "lan"),
                             .change = moved_mapping(n),
                             .answer = kAccepted,
                             .failures = {{Call::maapi_exists, {kAccepted, kTransactionUnreadable}},
                                          {Call::maapi_get_list_elem, {kTransactionUnreadable}},
                                          {Call::maapi_get_elem, {kTransactionUnreadable}},
                                          {Call::confd_cs_node_cd, {kTransactionUnreadable}},
                                          {Call::confd_val2str, {kTransactionUnreadable}}}}},
              .without_elements =
                  Assertion{"validate_vlan_match", "(&keypath->v[2][0])->type == C_BUF"}};
    },
    [](const Names& n) -> Request {
      return {.name = "vlan_limit_check",
              .validator = "validate_vlan_limit",
              .source = "gpon_vlan_limit",
              .unit_tests = {"vlan_limit_test"},
              .nodes = {profile("service-profile", "/vlan-mapping")},
              .instance = mapping_path(n, "services", "lan"),
              .scenarios = {{.change = moved_mapping(n),
                             .answer = kAccepted,
                             .failures = {{Call::maapi_exists, kPasses},
                                          {Call::maapi_get_list_elem, {kTransactionUnreadable}}}}},
              .without_elements =
                  Assertion{"validate_vlan_limit", "(&keypath->v[2][0])->type == C_BUF"}};
    },
    [](const Names& n) -> Request {
      const Outcome repeated = rejected(
          "ONU serial number must be unique and as shown on the product label.\n"
          " Repeated serial numbers:\n"
          "interface gpon 1 onu 1 serial-number: [ZQRT00000001]\n"
          "interface gpon 1 onu 2 serial-number: [ZQRT00000001]\n");
      // Slot and port of four links, four ONUs.
      const Work all_onus{.verdict = {.values = 12}};
      return {
          .name = "onu_pwd_sn_unique_check",
          .validator = "validate_onu_pwd_sn_unique",
          .source = "gpon_onu_password_valid",
          .unit_tests = {"onu_password_test"},
          .nodes = kOnusOfBothLinks,
          .call_once = true,
          .instance = kOnus,
          .scenarios = {{.change = new_onu(n), .answer = kAccepted, .prints = all_onus},
                        {.title = "passwords",
                         .change = new_onu(n) + card_slot(leaf("onu-auth-method", "password")),
                         .answer = kAccepted,
                         .prints = all_onus},
                        {.title = "rejected",
                         .change = of_onu(2, serial_number("ZQRT00000001")),
                         .answer = repeated,
                         .failures = {{Call::qzconfd_maapi_socket_get, kPasses},
                                      {Call::maapi_init_cursor, {kAccepted, repeated}},
                                      {Call::maapi_get_next, {kAccepted, repeated}},
                                      {Call::maapi_get_str_elem, {kAccepted, repeated}}},
                         .prints = {.verdict = {.values = 11}}}},
          .without_elements = Assertion{"getAuthMethod", "(&keypath->v[1][0])->type == C_UINT32"}};
    },
    [](const Names& n) -> Request {
      return {
          .name = "onu_gem_check",
          .validator = "validate_onu_gem_check",
          .source = "gpon_onu_gem_check",
          .unit_tests = {"onu_gem_check_test"},
          .nodes = kOnusOfBothLinks,
          .call_once = true,
          .instance = kOnus,
          .scenarios = {{.change = of_onu(1, uses_line(n("faster"))),
                         .answer = kAccepted,
                         .failures = reading_objects(
                             {{Call::qzconfd_maapi_socket_get, kSilent},
                              {Call::maapi_keypath_diff_iterate, kSilent},
                              {Call::qzconfd_config_session_start,
                               {rejected("Internal error validating onu commit")}},
                              {Call::maapi_get_elem,
                               {missing_gem(1, 1), missing_gem(2, 2), missing_gem(3, 1)}}}),
                         // The list, the modified ONU; the line profile for three service ports.
                         .prints = {.verdict = {.keypaths = 2, .values = 3},
                                    .detail = {.keypaths = 1}}},
                        {.title = "deleted",
                         .change = gpon_link(1, onu(2, "", "delete")),
                         .answer = kAccepted,
                         .failures = reading_objects({{Call::qzconfd_maapi_socket_get, kSilent},
                                                      {Call::maapi_keypath_diff_iterate, kSilent}}),
                         .prints = {.verdict = {.keypaths = 1}, .detail = {.keypaths = 1}}}},
          .without_elements =
              Assertion{"validate_onu_gem_check", "(&(keypath->v[0][0]))->type == C_XMLTAG"}};
    },
    [](const Names&) -> Request {
      return {
          .name = "fec_confirmation_warning",
          .validator = "ponlink_fec_confirmation",
          .source = "gpon_ponlink_fec_confirm",
          .unit_tests = {"fec_confirm_test"},
          .nodes = {"/config/interface/gpon/downstream-fec", "/config/interface/gpon/upstream-fec",
                    "/config/interface/xgspon/downstream-fec",
                    "/config/interface/xgspon/upstream-fec"},
          .instance = "/config/interface/gpon{1 1 1}/downstream-fec",
          .scenarios = {{.change = gpon_link(1, leaf("downstream-fec", "false")),
                         .answer =
                             asks("The change in FEC configuration will result in temporary data "
                                  "loss for all users of this PON link."),
                         .failures = {{Call::qzconfd_config_session_start, kUnreadable},
                                      {Call::cdb_exists, kPasses},
                                      {Call::cdb_get_bool, kUnreadable}}}},
          .without_elements =
              Assertion{"ponlink_fec_confirmation", "(&(keypath->v[0][0]))->type == C_XMLTAG"}};
    },
    [](const Names& n) -> Request {
      return {
          .name = "line_confirmation_warning",
          .validator = "line_profile_confirmation",
          .source = "gpon_line_profile_confirm",
          .unit_tests = {"profile_confirmation_test"},
          .nodes = {profile("line-profile", "")},
          .instance = profile("line-profile", n.key("fast")),
          .scenarios = {change_of_used_profile("line-profile", line_profile(n("fast"), gem(3)))},
          // A profile without a name is not committed.
          .without_elements = kAccepted};
    },
    [](const Names& n) -> Request {
      return {.name = "rg_profile_confirmation_warning",
              .validator = "rg_profile_confirmation",
              .source = "gpon_rg_profile_validation",
              .unit_tests = {"profile_confirmation_test"},
              .nodes = {profile("rg-profile", "")},
              .instance = profile("rg-profile", n.key("rg")),
              .scenarios = {change_of_used_profile("rg-profile", moved_network(n))},
              .without_elements = kAccepted};
    },
    [](const Names& n) -> Request {
      return {.name = "tr069_profile_confirmation_warning",
              .validator = "tr069_profile_confirmation",
              .source = "gpon_tr069_profile_validation",
              .unit_tests = {"profile_confirmation_test"},
              .nodes = {profile("tr069-acs-profile", "")},
              .instance = profile("tr069-acs-profile", n.key("acs")),
              .scenarios = {change_of_used_profile(
                  "tr069-acs-profile",
                  of_profile("tr069-acs-profile", n("acs"), leaf("username", "card")))},
              .without_elements = kAccepted};
    },
    [](const Names& n) -> Request {
      const Answers invalid{rejected("Invalid password length/size")};
      return {.name = "tr069_profile_password_length_check",
              .validator = "tr069_profile_password_length_check_func",
              .source = "gpon_tr069_profile_validation",
              .unit_tests = {"tr069_password_test"},
              .nodes = {profile("tr069-acs-profile", "/password")},
              .instance = profile("tr069-acs-profile", n.key("acs")) + "/password",
              .scenarios = {{.change = of_profile("tr069-acs-profile", n("acs"),
                                                  leaf("password", "$0$second")),
                             .answer = kAccepted,
                             .failures = {{Call::qzconfd_maapi_socket_get, invalid},
                                          {Call::maapi_install_crypto_keys, invalid},
                                          {Call::confd_decrypt, invalid}}}},
              .without_elements = Assertion{".*", "(newval)->type == C_BUF"}};
    },
    [](const Names& n) -> Request {
      return {.name = "rg_profile_ssid_unique_check",
              .validator = "rg_profile_ssid_unique_check_func",
              .source = "gpon_rg_profile_validation",
              .unit_tests = {"ssid_unique_test"},
              .nodes = {profile("rg-profile", "/wlan")},
              .call_once = true,
              .instance = profile("rg-profile", n.key("rg")) + "/wlan",
              .sign = "Checking if SSID is unique for (" + n("rg") + ") RG-Profile",
              .scenarios =
                  {{.change = rg_profile(
                        n("rg"),
                        element("wlan", leaf("id", "1") + element("ssid", leaf("custom", "Away")))),
                    .answer = kAccepted,
                    .failures = {{Call::maapi_exists,
                                  {kAccepted, rejected("must configure one of: auto, custom", 1)}},
                                 {Call::maapi_get_str_elem,
                                  {kAccepted, rejected("Failed accessing confd data.")}}},
                    .prints = {.verdict = {.keypaths = 1, .values = 1}}}},
              // A node that is no list has no entries.
              .without_elements = kAccepted};
    },
    [](const Names&) -> Request {
      return {.name = "sp_gem_check",
              .validator = "validate_sp_gem_check",
              .source = "valid_service_port",
              .unit_tests = {"service_port_gem_test"},
              .nodes = {kServicePorts},
              .call_once = true,
              .instance = kServicePorts,
              .scenarios = {{.change = two_more_ports(),
                             .answer = kAccepted,
                             .failures = {{Call::qzconfd_maapi_socket_get, kSilent},
                                          {Call::maapi_keypath_diff_iterate, kSilent},
                                          {Call::maapi_get_elem,
                                           {missing_gem(4, 1), missing_gem(5, 2)}}},
                             // Two line profiles. For FLOW, each port's keypath twice: when its id
                             // and when its values are read. For DETAIL, the list's, and each
                             // port's when it is visited and when it is found created.
                             .prints = {.verdict = {.values = 2},
                                        .flow = {.keypaths = 4},
                                        .detail = {.keypaths = 5}}}},
              // Changes there are not reported.
              .without_elements = rejected_silently()};
    },
    [](const Names&) -> Request {
      return {
          .name = "service_port_global_validation",
          .validator = "service_port_global_validation",
          .source = "valid_service_port",
          .unit_tests = {"service_port_global_test"},
          .nodes = {kServicePorts},
          .call_once = true,
          .instance = kServicePorts,
          .scenarios = {{.change = two_more_ports(),
                         .answer = kAccepted,
                         .failures = reading_objects({{Call::qzconfd_maapi_socket_get, kSilent},
                                                      {Call::maapi_keypath_diff_iterate, kSilent},
                                                      {Call::maapi_init_cursor, kSilent},
                                                      {Call::maapi_get_objects, kSilent}}),
                         // The list, and a port when it is visited and when it is found created.
                         .prints = {.detail = {.keypaths = 3}}}},
          .without_elements = rejected_silently()};
    },
    [](const Names&) -> Request {
      const Outcome all_go = asks(
          "All Service Ports are being removed causing traffic stop for all ONUs. Are you sure you "
          "want to proceed?");
      return {.name = "service_port_delete_all_warning_check",
              .validator = "service_port_delete_all_warning",
              .source = "valid_service_port",
              .unit_tests = {"service_port_global_test"},
              .nodes = {kServicePorts},
              .call_once = true,
              .instance = kServicePorts,
              .scenarios = {{.change = deleted_service_port(1) + deleted_service_port(2) +
                                       deleted_service_port(3),
                             .answer = all_go,
                             .failures = {{Call::qzconfd_maapi_socket_get, kPasses},
                                          {Call::qzconfd_config_session_start, kPasses},
                                          {Call::cdb_num_instances, kPasses},
                                          // The number of service ports; then, link by link, that
                                          // of ONUs, of which some always remain.
                                          {Call::maapi_num_instances, {kAccepted, all_go}}}}},
              // The keypath is not looked at.
              .without_elements = kAccepted};
    },
    [](const Names&) -> Request {
      const Answers refused{rejected(
          "It's not possible to change the operation mode of PON 1 1 2 to combo. Please remove all "
          "ONUs associated with it before.\n")};
      return {.name = "pon_mode_validation",
              .validator = "pon_mode_validation",
              .source = "gpon_link_mode_validation",
              .unit_tests = {"link_mode_test"},
              .nodes = {"/config/interface/xgspon/operation-mode"},
              .instance = "/config/interface/xgspon{1 1 2}/operation-mode",
              .sign = "Keypath: /config/interface/xgspon{1 1 2}/operation-mode",
              .scenarios = {{.change = xgspon_link(2, leaf("operation-mode", "combo")),
                             .answer = kAccepted,
                             .failures = {{Call::qzconfd_maapi_socket_get, refused},
                                          {Call::maapi_num_instances, refused}},
                             .prints = {.detail = {.keypaths = 1}}}},
              .without_elements = Assertion{".*", "(&keypath->v[1][0])->type == C_UINT32"}};
    },
    [](const Names&) -> Request {
      return {.name = "onu_snmp_rt_warn",
              .validator = "onu_snmp_rt_confirmation",
              .source = "gpon_onu_snmp_rt_confirm",
              .unit_tests = {"onu_snmp_rt_test"},
              .nodes = kOnusOfBothLinks,
              .call_once = true,
              .instance = kOnus,
              .scenarios = {{.change = of_onu(2, element("snmp", leaf("real-time", ""))),
                             .answer = kAccepted,
                             .failures = {{Call::qzconfd_maapi_socket_get, kUnreadable},
                                          {Call::maapi_xpath_eval_expr, kUnreadable}}}},
              // The keypath is not looked at.
              .without_elements = kAccepted};
    },
    [](const Names& n) -> Request {
      return {.name = "sip_agent_profile_confirmation_warning",
              .validator = "sip_agent_profile_confirmation",
              .source = "gpon_sip_agent_validation",
              .unit_tests = {"profile_confirmation_test"},
              .nodes = {profile("sip-agent-profile", "")},
              .instance = profile("sip-agent-profile", n.key("sip")),
              .scenarios = {change_of_used_profile(
                  "sip-agent-profile",
                  of_profile("sip-agent-profile", n("sip"), leaf("proxy-server", "proxy")))},
              .without_elements = kAccepted};
    },
    [](const Names& n) -> Request {
      return {
          .name = "itf_grp_validation",
          .validator = "validate_itf_grp",
          .source = "gpon_itf_grp_validation",
          .unit_tests = {"itf_grp_port_test", "itf_grp_network_test"},
          .nodes = {profile("rg-profile", "")},
          .instance = profile("rg-profile", n.key("rg")),
          .scenarios = {{.change = moved_network(n),
                         .answer = kAccepted,
                         // The cursors of the connections and of the ports stay open.
                         .failures = {{Call::maapi_get_u_int32_elem, {rejected_silently(2)}},
                                      {Call::maapi_get_ipv4_and_plen_elem, {rejected_silently(1)}},
                                      {Call::maapi_get_bool_elem, {rejected_silently(1)}},
                                      {Call::maapi_get_ipv4_elem, {rejected_silently(1)}}},
                         // The profile and its four connections, for the ports and for the
                         // networks; in the last record of each the profile's name.
                         .prints = {.verdict = {.keypaths = 2, .values = 8},
                                    .detail = {.values = 2}}}},
          // A node that is no list has no entries.
          .without_elements = kAccepted};
    },
    [](const Names&) -> Request {
      return {.name = "interface_gpon_validation",
              .validator = "validate_itf_gpon",
              .source = "gpon_itf_valid",
              .unit_tests = {"itf_valid_test"},
              .nodes = {"/config/interface/gpon"},
              .call_once = true,
              .instance = "/config/interface/gpon",
              .sign = "GPON interfaces cannot be deleted because they are physical ports.",
              .scenarios = {{.change = gpon_link(3),
                             .answer = kAccepted,
                             .failures = {{Call::qzconfd_maapi_socket_get, kSilent},
                                          {Call::maapi_num_instances, kSilent}}}},
              // The keypath is not looked at.
              .without_elements = kAccepted};
    },
    [](const Names&) -> Request {
      return {.name = "interface_xgs_validation",
              .validator = "validate_itf_xgspon",
              .source = "gpon_itf_valid",
              .unit_tests = {"itf_valid_test"},
              .nodes = {"/config/interface/xgspon"},
              .call_once = true,
              .instance = "/config/interface/xgspon",
              .sign = "XGSPON interfaces cannot be deleted because they are physical ports.",
              .scenarios = {{.change = xgspon_link(3),
                             .answer = kAccepted,
                             .failures = {{Call::qzconfd_maapi_socket_get, kSilent},
                                          {Call::maapi_num_instances, kSilent}}}},
              .without_elements = kAccepted};
    },
    [](const Names& n) -> Request {
      return {.name = "voip_media_profile_confirmation_warning",
              .validator = "voip_media_profile_confirmation",
              .source = "gpon_voip_media_profile_validation",
              .unit_tests = {"profile_confirmation_test"},
              .nodes = {profile("media-profile", "")},
              .instance = profile("media-profile", n.key("voice")),
              .scenarios = {change_of_used_profile(
                  "media-profile", of_profile("media-profile", n("voice"), leaf("codec", "pcma")))},
              .without_elements = kAccepted};
    },
    [](const Names&) -> Request {
      return {.name = "one_shot_prov_check",
              .validator = "validate_one_shot_prov",
              .source = "gpon_card_valid",
              .unit_tests = {"one_shot_prov_test"},
              .nodes = {"/config/gpon"},
              .call_once = true,
              .instance = "/config/gpon",
              .scenarios =
                  {{.change = card_slot(element("rg-one-shot-prov", "", "delete")),
                    .answer = asks(
                        "The rg-one-shot-prov configuration will not be applied automatically to "
                        "all ONUs using rg-profile. You shall force rg-one-shot-prov provision "
                        "using the command 'rg-reprovision' available on the onu configuration "
                        "tree."),
                    .failures = {{Call::qzconfd_maapi_socket_get, kPasses},
                                 {Call::maapi_keypath_diff_iterate, kPasses}},
                    // The list; of the changes, the card's entry and the switch; an ONU without a
                    // profile, and the name of the leaf that it lacks.
                    .prints = {.flow = {.keypaths = 3, .values = 1, .names = 1}}}},
              // No change is found there.
              .without_elements = kAccepted};
    },
    [](const Names& n) -> Request {
      const Outcome not_provisioned = asks(
          "The rg-profile will not be provisioned automatically for this onu due to "
          "rg-one-shot-prov feature enabled. You shall force rg-profile reprovision using the "
          "command 'rg-reprovision' available on the onu configuration tree.");
      return {.name = "rg_prof_one_shot_check",
              .validator = "validate_rg_prof_one_shot",
              .source = "gpon_onu_rg_profile_validation",
              .unit_tests = {"one_shot_prov_test"},
              .nodes = {"/config/interface/gpon/onu/rg-profile",
                        "/config/interface/gpon/onu/rg-override",
                        "/config/interface/xgspon/onu/rg-profile",
                        "/config/interface/xgspon/onu/rg-override"},
              .instance = std::string(kOnus) + "{2}/rg-profile",
              .scenarios = {{.title = "exchanged",
                             .change = of_onu(2, leaf("rg-profile", n("other"))),
                             .answer = not_provisioned,
                             .failures = {{Call::qzconfd_maapi_socket_get, kPasses},
                                          {Call::maapi_exists, kPasses},
                                          {Call::qzconfd_config_session_start, kUnreadable},
                                          {Call::cdb_exists, kUnreadable}},
                             .prints = {.verdict = {.keypaths = 1}}},
                            {.title = "override",
                             .keypath = std::string(kOnus) + "{2}/rg-override",
                             .change = of_onu(2, element("rg-override", leaf("ssid", "Mine"))),
                             .answer = not_provisioned,
                             .failures = {{Call::qzconfd_maapi_socket_get, kPasses},
                                          {Call::maapi_exists, kPasses},
                                          {Call::maapi_keypath_diff_iterate, kPasses}},
                             .prints = {.detail = {.keypaths = 1}}}},
              .without_elements = Assertion{".*", "(&keypath->v[0][0])->type == C_XMLTAG"}};
    },
};

/// The row, completed with what follows from its other fields.
Request completed(Request request) {
  if (request.sign.empty()) request.sign = " " + request.validator + " begin";
  for (Scenario& one : request.scenarios) {
    one.request = request.name;
    one.name = request.name + (one.title.empty() ? "" : "_" + one.title);
    if (one.keypath.empty()) one.keypath = request.instance;
  }
  return request;
}

}  // namespace

std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
  out << outcome.result << " \"" << outcome.text << '"';
  if (outcome.cursors_left_open != 0) out << ", cursors left: " << outcome.cursors_left_open;
  return out;
}

std::ostream& operator<<(std::ostream& out, const Scenario& scenario) {
  return out << scenario.name;
}

std::vector<Request> requests(const Names& n) {
  std::vector<Request> all;
  for (const Row row : kRows) all.push_back(completed(row(n)));
  return all;
}

std::vector<Scenario> scenarios(const Names& n) {
  std::vector<Scenario> all;
  for (const Request& request : requests(n)) {
    all.insert(all.end(), request.scenarios.begin(), request.scenarios.end());
  }
  return all;
}

Scenario scenario(const std::string& name) {
  const std::vector<Scenario> all = scenarios();
  const auto found =
      std::find_if(all.begin(), all.end(), [&](const Scenario& one) { return one.name == name; });
  if (found == all.end()) throw std::out_of_range("no scenario is named " + name);
  return *found;
}

}  // namespace tarnd::test
