#include "tools/gponval/card_faults.h"

#include <algorithm>
#include <string>

#include "standalone/nearest_name.h"
#include "tools/gponval/usage_error.h"

namespace gponval {
namespace {

// What a fault needs around it that is valid: a line profile that reserves no bandwidth.
constexpr const char* kSoundLine = "fault-none";
constexpr const char* kSoundProfiles =
    "      <bandwidth-profile><name>fault-none</name><traffic><type-4><maximum>1000</maximum>"
    "</type-4></traffic></bandwidth-profile>\n"
    "      <line-profile><name>fault-none</name>"
    "<tcont><id>1</id><bandwidth-profile>fault-none</bandwidth-profile></tcont>"
    "<gem><gem-id>1</gem-id><tcont>1</tcont></gem></line-profile>\n";

// The number of service ports on a card that does not report another one.
constexpr std::uint32_t kStandardServicePorts = 4096;

constexpr int kSnmpOnus = 129;
constexpr int kVlanMappings = 21;

std::string element(std::string_view name, const std::string& content) {
  return '<' + std::string(name) + '>' + content + "</" + std::string(name) + '>';
}

std::string named(std::string_view list, std::string_view name, const std::string& content) {
  return "      " + element(list, element("name", std::string(name)) + content) + '\n';
}

std::string link_path(const FaultPlace& place) {
  return "1/1/" + std::to_string(place.port);
}

std::string link(std::string_view kind, int slot, const FaultPlace& place,
                 const std::string& content) {
  return "    " +
         element(kind, element("chassis-id", "1") + element("slot-id", std::to_string(slot)) +
                           element("port-id", std::to_string(place.port)) + content) +
         '\n';
}

std::string serial_number(const FaultPlace& place, int onu) {
  constexpr std::size_t kDigits = 8;
  const std::string digits =
      std::to_string(place.port % 10000U * 1000U + static_cast<unsigned>(onu));
  return "ZQFT" + std::string(kDigits - digits.size(), '0') + digits;
}

std::string uses_line(std::string_view profile) {
  return element("profile-references", element("line-profile", std::string(profile)));
}

std::string onu(const FaultPlace& place, int id, const std::string& content) {
  return element("onu",
                 element("id", std::to_string(id)) +
                     element("auth-method", element("serial-number", serial_number(place, id))) +
                     content);
}

// A GPON link with one ONU that is sound but for the content.
void add_onu(CardAdditions& card, const FaultPlace& place, const std::string& content) {
  card.interfaces += link("gpon", 1, place, onu(place, 1, uses_line(kSoundLine) + content));
}

std::string bandwidth(std::string_view type, const std::string& content) {
  return element("traffic", element(type, content));
}

std::string tcont(int id, std::string_view profile) {
  return element("tcont", element("id", std::to_string(id)) +
                              element("bandwidth-profile", std::string(profile)));
}

// A link with one ONU, whose line profile has a TCONT of its own.
void add_loaded_link(CardAdditions& card, const FaultPlace& place, std::string_view name,
                     const std::string& traffic) {
  card.profiles += named("bandwidth-profile", name, traffic);
  card.profiles += named("line-profile", name, tcont(1, name));
  card.interfaces += link("gpon", 1, place, onu(place, 1, uses_line(name)));
}

void add_line_of_four(CardAdditions& card, std::string_view name, const std::string& traffic) {
  card.profiles += named("bandwidth-profile", name, traffic);
  card.profiles += named("line-profile", name,
                         tcont(1, name) + tcont(2, name) + tcont(3, name) + tcont(4, name));
}

std::string ip_host(const std::string& address, const std::string& gateway) {
  return element("ip-host", element("address", address) + element("default-gateway", gateway));
}

std::string mapping(int number, int vlan, const std::string& port) {
  return element("vlan-mapping",
                 element("name", "rule-" + std::to_string(number)) +
                     element("match", element("outer", element("vlan-id", std::to_string(vlan)))) +
                     port);
}

std::string on_ethernet_port() {
  return element("uni", element("ethernet", "1"));
}

std::string wlan(int id, const std::string& ssid) {
  return element("wlan", element("id", std::to_string(id)) +
                             (ssid.empty() ? "" : element("ssid", element("custom", ssid))));
}

std::string connection(std::string_view list, std::string_view name, const std::string& grouping) {
  return element(list, element("name", std::string(name)) + element("itf-grouping", grouping));
}

std::string grouped(std::string_view port, const std::string& more = "") {
  return element("ports", element("port", std::string(port)) + more);
}

void add_two_bridges(CardAdditions& card, std::string_view name, const std::string& first,
                     const std::string& second) {
  card.profiles += named("rg-profile", name,
                         connection("wan-bridge-connection", "first", first) +
                             connection("wan-bridge-connection", "second", second));
}

void add_pool(CardAdditions& card, std::string_view name, const std::string& start,
              const std::string& end) {
  card.profiles +=
      named("rg-profile", name,
            connection("wan-ip-connection", "first",
                       element("ipv4-address", "192.168.5.1/24") + element("dhcp-server", "true") +
                           element("dhcp-server-address-pool",
                                   element("start-address", start) + element("end-address", end))));
}

// A service port without its VLAN match, of the first ONU of the fault's link.
std::string port(const FaultPlace& place, std::uint32_t number, int onu_id, int gem) {
  return "  " +
         element(
             "service-port",
             element("id", std::to_string(place.service_port + number)) +
                 element("gpon",
                         element("id", link_path(place)) +
                             element("onu",
                                     element("id", std::to_string(onu_id)) +
                                         element("gem", element("gem-id", std::to_string(gem)))))) +
         '\n';
}

// Once, also for two faults of it.
void add_one_shot(CardAdditions& card, const FaultPlace& place, const std::string& of_onu) {
  constexpr const char* kProfile = "fault-one-shot";
  if (card.card.empty()) {
    card.card = "    <rg-one-shot-prov/>\n";
    card.profiles += named("rg-profile", kProfile, "");
  }
  add_onu(card, place, element("rg-profile", kProfile) + of_onu);
}

using Card = CardAdditions;
using Place = FaultPlace;

}  // namespace

const std::vector<FaultKind>& fault_kinds() {
  static const std::vector<FaultKind> kinds = {
      {"total-bandwidth", "onu_bw_check,ponlink_bw_check",
       "the ONUs of a link reserve more than it carries",
       [](Card& card, const Place& place) {
         add_loaded_link(card, place, "fault-total",
                         bandwidth("type-2", element("assured", "1200000")));
       }},
      {"fixed-bandwidth", "onu_bw_check,ponlink_bw_check",
       "the ONUs of a link reserve more fixed bandwidth than it carries",
       [](Card& card, const Place& place) {
         add_loaded_link(card, place, "fault-fixed",
                         bandwidth("type-1", element("fixed", "500000")));
       }},
      {"line-profile", "onu_bw_check,ponlink_bw_check",
       "an ONU names a line profile that does not exist",
       [](Card& card, const Place& place) {
         card.interfaces += link("gpon", 1, place, onu(place, 1, uses_line("fault-missing")));
       }},
      {"dynamic-tconts", "ponlink_bw_check",
       "a line profile has four TCONTs of the traffic types 2 to 5",
       [](Card& card, const Place&) {
         add_line_of_four(card, "fault-dynamic", bandwidth("type-4", element("maximum", "1000")));
       }},
      {"static-tconts", "ponlink_bw_check", "a line profile has four TCONTs of the traffic type 1",
       [](Card& card, const Place&) {
         add_line_of_four(card, "fault-static", bandwidth("type-1", element("fixed", "10")));
       }},
      {"serial-number", "onu_pwd_sn_unique_check", "two ONUs have the same serial number",
       [](Card& card, const Place& place) {
         const std::string same = element("auth-method", element("serial-number", "ZQFT0000TWIN"));
         const auto twin = [&same](const char* id) {
           return element("onu", element("id", id) + same + uses_line(kSoundLine));
         };
         card.interfaces += link("gpon", 1, place, twin("1") + twin("2"));
       }},
      {"password", "onu_pwd_sn_unique_check",
       "two ONUs of another slot, with passwords, have the same one",
       [](Card& card, const Place& place) {
         card.others +=
             "  " +
             element("gpon", element("slot", "1/2") + element("onu-auth-method", "password")) +
             '\n';
         const auto twin = [](const char* id) {
           return element("onu", element("id", id) +
                                     element("auth-method", element("password", "fault")) +
                                     uses_line(kSoundLine));
         };
         card.interfaces += link("gpon", 2, place, twin("1") + twin("2"));
       }},
      {"real-time-snmp", "onu_snmp_rt_warn", "more than 128 ONUs are monitored in real time",
       [](Card& card, const Place& place) {
         std::string onus;
         for (int id = 1; id <= kSnmpOnus; ++id) {
           onus += onu(place, id, uses_line(kSoundLine) + element("snmp", "<real-time/>"));
         }
         card.interfaces += link("gpon", 1, place, onus);
       }},
      {"gateway-of-itself", "onu_gateway_ip_check", "an ONU is its own gateway",
       [](Card& card, const Place& place) {
         add_onu(card, place, ip_host("172.16.0.2/24", "172.16.0.2"));
       }},
      {"gateway-elsewhere", "onu_gateway_ip_check", "an ONU's gateway is in another network",
       [](Card& card, const Place& place) {
         add_onu(card, place, ip_host("172.16.0.2/24", "172.16.1.1"));
       }},
      {"operation-mode", "pon_mode_validation", "an XGS-PON link with an ONU has another mode",
       [](Card& card, const Place& place) {
         card.interfaces +=
             link("xgspon", 1, place,
                  element("operation-mode", "combo") + onu(place, 1, uses_line(kSoundLine)));
       }},
      {"one-shot", "one_shot_prov_check",
       "one-shot provisioning is on while an ONU uses an RG profile",
       [](Card& card, const Place& place) { add_one_shot(card, place, ""); }},
      {"rg-override", "one_shot_prov_check,rg_prof_one_shot_check",
       "an ONU overrides its RG profile while one-shot provisioning is on",
       [](Card& card, const Place& place) {
         add_one_shot(card, place, element("rg-override", element("ssid", "home")));
       }},
      {"vlan-match", "vlan_match_check", "two VLAN mappings of a port match the same frames",
       [](Card& card, const Place&) {
         card.profiles +=
             named("service-profile", "fault-match",
                   mapping(1, 7, on_ethernet_port()) + mapping(2, 7, on_ethernet_port()));
       }},
      {"vlan-port", "vlan_match_check", "a VLAN mapping applies to no port",
       [](Card& card, const Place&) {
         card.profiles += named("service-profile", "fault-port", mapping(1, 7, ""));
       }},
      {"vlan-mappings", "vlan_limit_check", "a port has 21 VLAN mappings",
       [](Card& card, const Place&) {
         std::string mappings;
         for (int i = 1; i <= kVlanMappings; ++i) mappings += mapping(i, i, on_ethernet_port());
         card.profiles += named("service-profile", "fault-mappings", mappings);
       }},
      {"tr069-password", "tr069_profile_password_length_check",
       "the password of a TR-069 profile has more than 25 characters",
       [](Card& card, const Place&) {
         card.profiles += named("tr069-acs-profile", "fault-password",
                                element("password", "$0$abcdefghijklmnopqrstuvwxyz"));
       }},
      {"ssid", "rg_profile_ssid_unique_check", "two WLANs of an RG profile have the same SSID",
       [](Card& card, const Place&) {
         card.profiles += named("rg-profile", "fault-ssid", wlan(1, "home") + wlan(2, "home"));
       }},
      {"no-ssid", "rg_profile_ssid_unique_check", "a WLAN of an RG profile has no SSID",
       [](Card& card, const Place&) {
         card.profiles += named("rg-profile", "fault-no-ssid", wlan(1, ""));
       }},
      {"grouped-port", "itf_grp_validation", "two WAN connections have the same Ethernet port",
       [](Card& card, const Place&) {
         add_two_bridges(card, "fault-grouped", grouped("eth1"), grouped("eth1"));
       }},
      {"grouped-vlan", "itf_grp_validation",
       "two WAN connections have the same VLAN of an Ethernet port",
       [](Card& card, const Place&) {
         const std::string same = grouped("eth1", element("vlan", "7"));
         add_two_bridges(card, "fault-vlan", same, same);
       }},
      {"grouped-wireless", "itf_grp_validation", "two WAN connections have the same wireless port",
       [](Card& card, const Place&) {
         add_two_bridges(card, "fault-wireless", grouped("wl0"), grouped("wl0"));
       }},
      {"networks", "itf_grp_validation", "two WAN connections have overlapping networks",
       [](Card& card, const Place&) {
         add_two_bridges(card, "fault-networks", element("ipv4-address", "192.168.5.1/24"),
                         element("ipv4-address", "192.168.5.129/25"));
       }},
      {"pool-order", "itf_grp_validation", "a DHCP pool ends before it begins",
       [](Card& card, const Place&) {
         add_pool(card, "fault-order", "192.168.5.99", "192.168.5.10");
       }},
      {"pool-start", "itf_grp_validation", "a DHCP pool begins outside its network",
       [](Card& card, const Place&) {
         add_pool(card, "fault-start", "192.168.4.10", "192.168.5.99");
       }},
      {"pool-end", "itf_grp_validation", "a DHCP pool ends outside its network",
       [](Card& card, const Place&) {
         add_pool(card, "fault-end", "192.168.5.10", "192.168.6.99");
       }},
      {"service-port-onu", "sp_gem_check", "a service port names an ONU that does not exist",
       [](Card& card, const Place& place) { card.others += port(place, 0, 1, 1); }, 1},
      {"service-port-gem", "sp_gem_check", "a service port names a GEM port that does not exist",
       [](Card& card, const Place& place) {
         add_onu(card, place, "");
         card.others += port(place, 0, 1, 2);
       },
       1},
      {"service-port-match", "service_port_global_validation",
       "two service ports match the same frames",
       [](Card& card, const Place& place) {
         add_onu(card, place, "");
         card.others += port(place, 0, 1, 1) + port(place, 1, 1, 1);
       },
       2},
      {"service-port-alone", "service_port_global_validation,sp_gem_check",
       "a service port names a link, but no ONU",
       [](Card& card, const Place& place) {
         card.others +=
             "  " +
             element("service-port", element("id", std::to_string(place.service_port)) +
                                         element("gpon", element("id", link_path(place)))) +
             '\n';
       },
       1},
      {"service-ports", "service_port_global_validation",
       "there are more than 4096 service ports, all that a card without another limit allows",
       [](Card&, const Place&) {}, 0, kStandardServicePorts + 1},
  };
  return kinds;
}

std::vector<const FaultKind*> parse_faults(const std::string& list) {
  std::vector<const FaultKind*> faults;
  std::vector<std::string_view> names;
  for (const FaultKind& kind : fault_kinds()) {
    names.push_back(kind.name);
    if (list == "all") faults.push_back(&kind);
  }
  if (list == "all") return faults;
  for (std::size_t begin = 0; begin <= list.size();) {
    const std::size_t end = std::min(list.find(',', begin), list.size());
    const std::string name = list.substr(begin, end - begin);
    const auto found = std::find(names.begin(), names.end(), name);
    if (found == names.end()) {
      throw UsageError("--faults: there is no fault '" + name + "'" +
                       tarnd::did_you_mean(name, names) + " ('--faults list' prints all)");
    }
    const FaultKind* kind = &fault_kinds()[static_cast<std::size_t>(found - names.begin())];
    if (std::find(faults.begin(), faults.end(), kind) == faults.end()) faults.push_back(kind);
    begin = end + 1;
  }
  return faults;
}

CardAdditions add_faults(const std::vector<const FaultKind*>& faults, CardSize& size) {
  CardAdditions additions;
  if (faults.empty()) return additions;
  std::uint32_t of_faults = 0;
  for (const FaultKind* fault : faults) {
    of_faults += fault->service_ports;
    size.service_ports = std::max(size.service_ports, fault->least_service_ports);
  }
  size.service_ports -= std::min(size.service_ports, of_faults);
  additions.profiles = kSoundProfiles;
  FaultPlace place{size.links + size.xgs_links + 1, size.service_ports + 1};
  for (const FaultKind* fault : faults) {
    fault->add(additions, place);
    ++place.port;
    place.service_port += fault->service_ports;
  }
  return additions;
}

}  // namespace gponval
