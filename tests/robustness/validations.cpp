#include "tests/robustness/validations.h"

#include <algorithm>
#include <stdexcept>

#include "gpon_card_valid.h"
#include "standalone/confd/keypath.h"
#include "standalone/confd/values.h"

namespace tarnd::test {
namespace {

std::string leaf(const std::string& name, const std::string& text) {
  return element(name, text);
}

/// A text as it stands in XML.
std::string escaped(const std::string& text) {
  std::string result;
  for (const char c : text) {
    if (c == '&') {
      result += "&amp;";
    } else if (c == '<') {
      result += "&lt;";
    } else {
      result += c;
    }
  }
  return result;
}

/// The names of one card, ready to stand in XML.
class Names {
 public:
  explicit Names(const Naming& name) : name_(name) {}

  std::string operator()(const std::string& plain) const { return escaped(name_(plain)); }
  /// As a key in a path.
  [[nodiscard]] std::string key(const std::string& plain) const {
    return "{" + store::quote_key(name_(plain)) + "}";
  }

 private:
  const Naming& name_;
};

std::string card_profiles(const Names& n) {
  return bandwidth_profile(n("t1"), element("type-1", leaf("fixed", "1000"))) +
         bandwidth_profile(n("t2"), element("type-2", leaf("assured", "2000"))) +
         bandwidth_profile(n("t3"),
                           element("type-3", leaf("assured", "3000") + leaf("maximum", "9000"))) +
         bandwidth_profile(n("t4"), element("type-4", leaf("maximum", "9000"))) +
         bandwidth_profile(n("t5"),
                           element("type-5", leaf("fixed", "1000") + leaf("assured", "5000") +
                                                 leaf("maximum", "9000"))) +
         line_profile(n("fast"), tcont(1, n("t1")) + tcont(2, n("t5")) + gem(1) + gem(2)) +
         line_profile(n("faster"), tcont(1, n("t1")) + tcont(2, n("t3")) + gem(1) + gem(2)) +
         line_profile(n("slow"), tcont(1, n("t2")) + tcont(2, n("t4")) + gem(1)) +
         profiles(
             element("tr069-acs-profile", leaf("name", n("acs")) + leaf("password", "$0$first")) +
             element("sip-agent-profile", leaf("name", n("sip"))) +
             element("media-profile", leaf("name", n("voice"))));
}

std::string vlan_mapping(const std::string& name, const std::string& vlan,
                         const std::string& ports) {
  return element("vlan-mapping",
                 leaf("name", name) +
                     element("match", element("outer", leaf("vlan-id", vlan) + leaf("cos", "1"))) +
                     ports);
}

std::string services(const Names& n) {
  return service_profile(
      n("services"),
      vlan_mapping(n("lan"), "100", element("uni", leaf("ethernet", "1") + leaf("ethernet", "2"))) +
          vlan_mapping(n("wan"), "200", element("veip", leaf("veip", ""))));
}

std::string grouped_port(const std::string& port, const std::string& vlan = "") {
  return element("ports", leaf("port", port) + (vlan.empty() ? "" : leaf("vlan", vlan)));
}

std::string wan(const std::string& kind, const std::string& name, const std::string& grouping) {
  return element("wan-" + kind + "-connection", leaf("name", name) + grouping);
}

std::string gateway(const Names& n) {
  const std::string pool =
      leaf("dhcp-server", "true") +
      element("dhcp-server-address-pool",
              leaf("start-address", "192.168.1.10") + leaf("end-address", "192.168.1.20"));
  return rg_profile(
      n("rg"),
      wan("pppoe", n("internet"),
          element("itf-grouping", grouped_port("eth1", "10") + grouped_port("wl0") +
                                      leaf("ipv4-address", "192.168.1.1/24") + pool)) +
          wan("ip", n("spare"), "") +
          wan("ip", n("voice"),
              element("itf-grouping",
                      grouped_port("eth2") + leaf("ipv4-address", "192.168.2.1/24"))) +
          wan("bridge", n("television"),
              element("itf-grouping",
                      grouped_port("eth3") + leaf("ipv4-address", "192.168.3.1/24"))) +
          element("wlan", leaf("id", "1") + element("ssid", leaf("custom", "Home"))) +
          element("wlan",
                  leaf("id", "2") + element("ssid", element("auto", leaf("onu-serial-number", "") +
                                                                        leaf("prefix", "A") +
                                                                        leaf("suffix", "B")))));
}

std::string identity(const std::string& serial, const std::string& password_text) {
  return element("auth-method", leaf("serial-number", serial) + leaf("password", password_text));
}

std::string onu_with_everything(const Names& n) {
  return onu(1, identity("ZQRT00000001", "one") + uses_line(n("fast")) +
                    leaf("tr069-acs-profile", n("acs")) + element("snmp", leaf("real-time", "")) +
                    element("pots", leaf("port", "1") + leaf("sip-agent-profile", n("sip")) +
                                        leaf("media-profile", n("voice"))) +
                    element("ip-host",
                            leaf("address", "10.0.0.5/24") + leaf("default-gateway", "10.0.0.1")));
}

std::string card_links(const Names& n) {
  return gpon_link(1, onu_with_everything(n) +
                          onu(2, identity("ZQRT00000002", "two") + uses_line(n("slow")) +
                                     leaf("rg-profile", n("rg")))) +
         gpon_link(2) +
         xgspon_link(1, onu(1, serial_number("ZQRT00000003") + uses_line(n("fast")))) +
         xgspon_link(2);
}

std::string card_slot(const std::string& content) {
  return element("gpon", leaf("slot", "1/1") + content);
}

std::string of_profile(const std::string& kind, const std::string& name,
                       const std::string& content) {
  return profiles(element(kind, leaf("name", name) + content));
}

std::string profile_path(const std::string& kind, const std::string& key) {
  return "/config/profile/gpon/" + kind + key;
}

std::string of_onu(int id, const std::string& content) {
  return gpon_link(1, onu(id, content));
}

constexpr const char* kOnus = "/config/interface/gpon{1 1 1}/onu";
constexpr const char* kServicePorts = "/config/service-port";

std::vector<Validation> link_validations(const Names& n) {
  const std::string new_onu = of_onu(3, identity("ZQRT00000009", "three") + uses_line(n("fast")));
  const std::string password_method = card_slot(leaf("onu-auth-method", "password"));
  return {
      {"onu_bw_check", "onu_bw_check", kOnus, new_onu},
      {"onu_pwd_sn_unique_check", "onu_pwd_sn_unique_check", kOnus, new_onu},
      {"onu_pwd_sn_unique_check_passwords", "onu_pwd_sn_unique_check", kOnus,
       new_onu + password_method},
      {"onu_pwd_sn_unique_check_rejected", "onu_pwd_sn_unique_check", kOnus,
       of_onu(2, serial_number("ZQRT00000001"))},
      {"onu_gem_check", "onu_gem_check", kOnus, of_onu(1, uses_line(n("faster")))},
      {"onu_gem_check_deleted", "onu_gem_check", kOnus, gpon_link(1, onu(2, "", "delete"))},
      {"onu_snmp_rt_warn", "onu_snmp_rt_warn", kOnus,
       of_onu(2, element("snmp", leaf("real-time", "")))},
      {"onu_gateway_ip_check", "onu_gateway_ip_check", std::string(kOnus) + "{1}/ip-host",
       of_onu(1, element("ip-host", leaf("default-gateway", "10.0.0.254")))},
      {"fec_confirmation_warning", "fec_confirmation_warning",
       "/config/interface/gpon{1 1 1}/downstream-fec",
       gpon_link(1, leaf("downstream-fec", "false"))},
      {"pon_mode_validation", "pon_mode_validation",
       "/config/interface/xgspon{1 1 2}/operation-mode",
       xgspon_link(2, leaf("operation-mode", "combo"))},
      {"interface_gpon_validation", "interface_gpon_validation", "/config/interface/gpon",
       gpon_link(3)},
      {"interface_xgs_validation", "interface_xgs_validation", "/config/interface/xgspon",
       xgspon_link(3)},
      {"one_shot_prov_check", "one_shot_prov_check", "/config/gpon",
       card_slot(element("rg-one-shot-prov", "", "delete"))},
      {"rg_prof_one_shot_check_exchanged", "rg_prof_one_shot_check",
       std::string(kOnus) + "{2}/rg-profile", of_onu(2, leaf("rg-profile", n("other")))},
      {"rg_prof_one_shot_check_override", "rg_prof_one_shot_check",
       std::string(kOnus) + "{2}/rg-override",
       of_onu(2, element("rg-override", leaf("ssid", "Mine")))},
  };
}

std::vector<Validation> profile_validations(const Names& n) {
  const std::string mappings =
      profile_path("service-profile", n.key("services")) + "/vlan-mapping" + n.key("lan");
  const std::string new_mapping = service_profile(
      n("services"), vlan_mapping(n("lan"), "101", element("uni", leaf("ethernet", "3"))));
  const std::string new_address = rg_profile(
      n("rg"),
      wan("ip", n("voice"), element("itf-grouping", leaf("ipv4-address", "192.168.4.1/24"))));
  const std::string new_ssid = rg_profile(
      n("rg"), element("wlan", leaf("id", "1") + element("ssid", leaf("custom", "Away"))));
  return {
      {"ponlink_bw_check", "ponlink_bw_check", "/config/profile/gpon/bandwidth-profile",
       bandwidth_profile(n("t6"), element("type-1", leaf("fixed", "1")))},
      {"vlan_match_check", "vlan_match_check", mappings, new_mapping},
      {"vlan_limit_check", "vlan_limit_check", mappings, new_mapping},
      {"line_confirmation_warning", "line_confirmation_warning",
       profile_path("line-profile", n.key("fast")), line_profile(n("fast"), gem(3))},
      {"rg_profile_confirmation_warning", "rg_profile_confirmation_warning",
       profile_path("rg-profile", n.key("rg")), new_address},
      {"rg_profile_ssid_unique_check", "rg_profile_ssid_unique_check",
       profile_path("rg-profile", n.key("rg")) + "/wlan", new_ssid},
      {"itf_grp_validation", "itf_grp_validation", profile_path("rg-profile", n.key("rg")),
       new_address},
      {"tr069_profile_confirmation_warning", "tr069_profile_confirmation_warning",
       profile_path("tr069-acs-profile", n.key("acs")),
       of_profile("tr069-acs-profile", n("acs"), leaf("username", "card"))},
      {"tr069_profile_password_length_check", "tr069_profile_password_length_check",
       profile_path("tr069-acs-profile", n.key("acs")) + "/password",
       of_profile("tr069-acs-profile", n("acs"), leaf("password", "$0$second"))},
      {"sip_agent_profile_confirmation_warning", "sip_agent_profile_confirmation_warning",
       profile_path("sip-agent-profile", n.key("sip")),
       of_profile("sip-agent-profile", n("sip"), leaf("proxy-server", "proxy"))},
      {"voip_media_profile_confirmation_warning", "voip_media_profile_confirmation_warning",
       profile_path("media-profile", n.key("voice")),
       of_profile("media-profile", n("voice"), leaf("codec", "pcma"))},
  };
}

std::vector<Validation> service_port_validations() {
  const std::string two_more =
      service_port(4, "gpon", "1/1/1", 1, 1, 40) + service_port(5, "xgspon", "1/1/1", 1, 2, 50);
  const std::string all_go =
      deleted_service_port(1) + deleted_service_port(2) + deleted_service_port(3);
  return {
      {"config_modified_check", "config_modified_check", kServicePorts, two_more},
      {"config_modified_check_rejected", "config_modified_check", kServicePorts,
       service_port(1, "gpon", "1/1/1", 1, 1, 11)},
      {"sp_gem_check", "sp_gem_check", kServicePorts, two_more},
      {"service_port_global_validation", "service_port_global_validation", kServicePorts, two_more},
      {"service_port_delete_all_warning_check", "service_port_delete_all_warning_check",
       kServicePorts, all_go},
  };
}

void append(std::vector<Validation>& all, const std::vector<Validation>& some) {
  all.insert(all.end(), some.begin(), some.end());
}

// The new value of a leaf; for other nodes none.
confd::OwnedValue new_value(const confd::Model& model, const store::Transaction& transaction,
                            const store::Path& path) {
  const lyd_node* node = path.last().node->kind == store::NodeKind::kLeaf
                             ? transaction.datastore().find(path)
                             : nullptr;
  return node != nullptr ? confd::OwnedValue(confd::own_leaf_value(model, node))
                         : confd::OwnedValue();
}

}  // namespace

std::string plain_name(const std::string& plain) {
  return plain;
}

std::string whole_card(const Naming& name) {
  const Names n(name);
  return card_slot(leaf("onu-auth-method", "serial-number") + leaf("rg-one-shot-prov", "")) +
         card_links(n) + card_profiles(n) + services(n) + gateway(n) +
         service_port(1, "gpon", "1/1/1", 1, 1, 10) + service_port(2, "gpon", "1/1/1", 1, 2, 20) +
         service_port(3, "xgspon", "1/1/1", 1, 1, 10);
}

std::vector<Validation> whole_validations(const Naming& name) {
  const Names n(name);
  std::vector<Validation> all = link_validations(n);
  append(all, profile_validations(n));
  append(all, service_port_validations());
  return all;
}

Validation validation(const std::string& name) {
  const std::vector<Validation> all = whole_validations();
  const auto found =
      std::find_if(all.begin(), all.end(), [&](const Validation& one) { return one.name == name; });
  if (found == all.end()) throw std::out_of_range("no validation is named " + name);
  return *found;
}

Outcome dispatch(ValidationSession& session, const std::string& request, confd_hkeypath_t* keypath,
                 confd_value_t* new_value) {
  session.begin_request(request);
  const int result = validate(session.context(), keypath, new_value);
  return {result, session.error_text().value_or("")};
}

Outcome dispatch(ValidationSession& session, const std::string& request,
                 const std::string& keypath) {
  const store::Transaction& transaction = session.transaction();
  const confd::Model& model = confd::load_model(transaction.datastore().schema());
  std::string why;
  const auto path = store::Path::parse(transaction.datastore().schema(), keypath, &why);
  if (!path.has_value()) throw std::invalid_argument(why);
  confd::OwnedKeypath target(model, *path);
  confd::OwnedValue value = new_value(model, transaction, *path);
  return dispatch(session, request, target.get(), value.data());
}

std::string test_name(const testing::TestParamInfo<Validation>& info) {
  return info.param.name;
}

}  // namespace tarnd::test
