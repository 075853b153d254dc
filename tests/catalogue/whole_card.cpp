#include "tests/catalogue/whole_card.h"

#include <utility>

#include "standalone/store/path.h"
#include "tests/support/configuration.h"

namespace tarnd::test {
namespace {

std::string leaf(const std::string& name, const std::string& text) {
  return element(name, text);
}

/// A text with escapes for XML.
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

std::string services(const Names& n) {
  return service_profile(n("services"),
                         vlan_mapping(n("lan"), matching("100", "1") + on_ethernet({1, 2})) +
                             vlan_mapping(n("wan"), matching("200", "1") + on_veip())) +
         service_profile(n("twins"),
                         vlan_mapping(n("elder"), matching("100", "1") + on_ethernet({1})) +
                             vlan_mapping(n("younger"), matching("100", "1") + on_ethernet({1})));
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

}  // namespace

std::string plain_name(const std::string& plain) {
  return plain;
}

Names::Names(Naming naming) : naming_(std::move(naming)) {}

std::string Names::operator()(const std::string& plain) const {
  return escaped(naming_(plain));
}

std::string Names::key(const std::string& plain) const {
  return "{" + store::quote_key(naming_(plain)) + "}";
}

std::string card_slot(const std::string& content) {
  return element("gpon", leaf("slot", "1/1") + content);
}

std::string whole_card(const Names& n) {
  return card_slot(leaf("onu-auth-method", "serial-number") + leaf("rg-one-shot-prov", "")) +
         card_links(n) + card_profiles(n) + services(n) + gateway(n) +
         service_port(1, "gpon", "1/1/1", 1, 1, 10) + service_port(2, "gpon", "1/1/1", 1, 2, 20) +
         service_port(3, "xgspon", "1/1/1", 1, 1, 10);
}

}  // namespace tarnd::test
