#include "tools/gponval/generated_card.h"

#include <algorithm>
#include <string>
#include <string_view>

#include "tools/gponval/usage_error.h"

namespace gponval {
namespace {

// The capacities of a GPON link in kbit/s, and the overhead of each of its ONUs.
constexpr std::uint64_t kLinkTotal = 1107504;
constexpr std::uint64_t kLinkFixed = 442752;
constexpr std::uint64_t kOnuOverhead = 560;

// Three TCONTs are within both limits of a line profile, for any traffic types.
constexpr std::uint64_t kTconts = 3;
// Each TCONT needs a bandwidth, and a fixed one must be at least 2, to be halved.
constexpr std::uint64_t kMostOnus =
    std::min(kLinkTotal / (kOnuOverhead + kTconts), kLinkFixed / (2 * kTconts));
// Bandwidth is shared out as for a full link, so that a card with fewer ONUs has room for more.
constexpr std::uint64_t kFullLink = 128;
constexpr std::uint64_t kTrafficTypes = 5;
constexpr std::uint64_t kVariants = 64;

constexpr std::uint64_t kVlans = 4094;
constexpr std::uint64_t kVlansBetweenGems = 100;

// The SNMP warning is for more than 128 of them; a change may add some.
constexpr std::uint64_t kRealTimeOnus = 64;

constexpr int kMappings = 4;
constexpr std::uint64_t kVlanOffsets = 3000;
constexpr std::uint32_t kFirstHostNetwork = 10U << 24U;
constexpr std::uint32_t kHostNetworks = 1U << 22U;
constexpr std::uint32_t kHostNetworkSize = 4;

struct Budget {
  std::uint64_t total;
  std::uint64_t fixed;
};

// The bandwidth that a TCONT may have if every ONU of the link has the largest line profile.
Budget tcont_budget(const CardSize& size) {
  const std::uint64_t onus = std::max<std::uint64_t>(size.onus, kFullLink);
  const std::uint64_t share = kLinkTotal / onus;
  return {(share > kOnuOverhead ? share - kOnuOverhead : 0) / kTconts, kLinkFixed / onus / kTconts};
}

std::uint64_t all_onus(const CardSize& size) {
  return (std::uint64_t{size.links} + size.xgs_links) * size.onus;
}

// "line-0007": with leading zeros the order of the names is the order of the numbers.
std::string numbered(std::string_view prefix, std::uint64_t number) {
  constexpr std::size_t kDigits = 4;
  std::string digits = std::to_string(number);
  if (digits.size() < kDigits) digits.insert(0, kDigits - digits.size(), '0');
  return std::string(prefix) + digits;
}

std::string host_address(std::uint32_t address) {
  const auto byte = [address](unsigned shift) {
    return std::to_string((address >> shift) & 0xffU);
  };
  return byte(24) + '.' + byte(16) + '.' + byte(8) + '.' + byte(0);
}

std::string serial_number(std::string_view vendor, std::uint32_t number) {
  constexpr std::string_view kHexDigits = "0123456789ABCDEF";
  std::string text = std::string(vendor) + "00000000";
  for (auto digit = text.rbegin(); number != 0; ++digit, number /= kHexDigits.size()) {
    *digit = kHexDigits[number % kHexDigits.size()];
  }
  return text;
}

class CardWriter {
 public:
  CardWriter(std::ostream& out, const CardSize& size, const CardVariation& variation,
             const CardAdditions& additions)
      : out_(out),
        size_(size),
        variation_(variation),
        additions_(additions),
        word_(variation.word()) {}

  void write() {
    out_ << "<config xmlns=\"urn:tarnd:base\">\n";
    write_card_entry();
    out_ << "  <interface>\n";
    for (std::uint32_t link = 0; link < size_.links; ++link) write_link("gpon", link);
    for (std::uint32_t link = 0; link < size_.xgs_links; ++link) {
      write_link("xgspon", size_.links + link);
    }
    out_ << additions_.interfaces << "  </interface>\n  <profile>\n    <gpon>\n";
    write_profiles();
    out_ << additions_.profiles << "    </gpon>\n  </profile>\n";
    write_service_ports();
    out_ << additions_.others << "</config>\n";
  }

 private:
  void write_card_entry() {
    out_ << "  <gpon>\n"
            "    <slot>1/1</slot>\n"
            "    <onu-auth-method>serial-number</onu-auth-method>\n"
         << additions_.card << "  </gpon>\n";
  }

  // The XGS-PON links have other port numbers than the GPON links, because onu_gem_check does not
  // distinguish the two kinds of link.
  void write_link(std::string_view kind, std::uint32_t link) {
    out_ << "    <" << kind << ">\n      <chassis-id>1</chassis-id><slot-id>1</slot-id><port-id>"
         << link + 1 << "</port-id>\n";
    const std::uint32_t onus = variation_.onus_on(link, size_.onus);
    for (std::uint32_t onu = 0; onu < onus; ++onu) {
      write_onu(onu + 1, std::uint64_t{link} * size_.onus + onu);
    }
    out_ << "    </" << kind << ">\n";
  }

  void write_onu(std::uint32_t id, std::uint64_t index) {
    out_ << "      <onu>\n        <id>" << id << "</id>\n        <auth-method><serial-number>"
         << serial_number(variation_.vendor(), number_of_onu(index))
         << "</serial-number></auth-method>\n"
         << "        <profile-references>";
    write_reference("line-profile", "line-", size_.line_profiles, index);
    write_reference("service-profile", "service-", size_.service_profiles, index);
    out_ << "</profile-references>\n        ";
    write_reference("rg-profile", "rg-", size_.rg_profiles, index);
    write_reference("tr069-acs-profile", "acs-", size_.tr069_profiles, index);
    if (index < kRealTimeOnus) out_ << "<snmp><real-time/></snmp>";
    out_ << "\n        <pots><port>1</port>";
    write_reference("sip-agent-profile", "sip-", size_.sip_profiles, index);
    write_reference("media-profile", "media-", size_.media_profiles, index);
    out_ << "</pots>\n        ";
    write_ip_host(index);
    out_ << "\n      </onu>\n";
  }

  void write_reference(std::string_view leaf, std::string_view prefix, std::uint32_t profiles,
                       std::uint64_t index) {
    if (profiles == 0) return;
    out_ << '<' << leaf << '>' << named(prefix, variation_.pick(leaf, index, profiles) + 1) << "</"
         << leaf << '>';
  }

  // Another one for each ONU of the card.
  [[nodiscard]] std::uint32_t number_of_onu(std::uint64_t index) const {
    constexpr std::uint64_t kNumbers = std::uint64_t{1} << 32U;
    return static_cast<std::uint32_t>((index + variation_.offset("serial", kNumbers)) % kNumbers);
  }

  [[nodiscard]] std::string named(std::string_view prefix, std::uint64_t number) const {
    return numbered(std::string(prefix) + word_, number);
  }

  // Each ONU has a network of four addresses: the first usable one is the gateway's, the second its
  // own.
  void write_ip_host(std::uint64_t index) {
    const auto network = static_cast<std::uint32_t>(index % kHostNetworks);
    const std::uint32_t gateway = kFirstHostNetwork + network * kHostNetworkSize + 1;
    out_ << "<ip-host><address>" << host_address(gateway + 1) << "/30</address><default-gateway>"
         << host_address(gateway) << "</default-gateway></ip-host>";
  }

  void write_profiles() {
    for (std::uint32_t i = 0; i < size_.bandwidth_profiles; ++i) write_bandwidth_profile(i);
    for (std::uint32_t i = 0; i < size_.line_profiles; ++i) write_line_profile(i);
    for (std::uint32_t i = 0; i < size_.service_profiles; ++i) write_service_profile(i);
    for (std::uint32_t i = 0; i < size_.rg_profiles; ++i) write_rg_profile(i);
    for (std::uint32_t i = 1; i <= size_.tr069_profiles; ++i) {
      out_ << "      <tr069-acs-profile><name>" << named("acs-", i) << "</name><url>http://acs-"
           << i << ".example/</url><username>olt</username></tr069-acs-profile>\n";
    }
    for (std::uint32_t i = 1; i <= size_.sip_profiles; ++i) {
      out_ << "      <sip-agent-profile><name>" << named("sip-", i) << "</name><proxy-server>sip-"
           << i << ".example</proxy-server></sip-agent-profile>\n";
    }
    for (std::uint32_t i = 1; i <= size_.media_profiles; ++i) {
      out_ << "      <media-profile><name>" << named("media-", i) << "</name><codec>"
           << (i % 2 == 1 ? "pcma" : "pcmu") << "</codec></media-profile>\n";
    }
  }

  // The five traffic types in turn. A later profile of a type gets a little less than an earlier.
  void write_bandwidth_profile(std::uint32_t index) {
    const Budget budget = tcont_budget(size_);
    const std::uint64_t variant = variation_.pick("bandwidth", index / kTrafficTypes, kVariants);
    const std::uint64_t total = budget.total - variant * (budget.total / (2 * kVariants));
    const std::uint64_t most_fixed = std::min(budget.fixed, budget.total);
    const std::uint64_t fixed = most_fixed - variant * (most_fixed / (2 * kVariants));
    out_ << "      <bandwidth-profile><name>" << named("bw-", index + 1U) << "</name><traffic>";
    switch (variation_.pick("type", index, kTrafficTypes)) {
      case 0:
        out_ << "<type-1><fixed>" << fixed << "</fixed></type-1>";
        break;
      case 1:
        out_ << "<type-2><assured>" << total << "</assured></type-2>";
        break;
      case 2:
        out_ << "<type-3><assured>" << total << "</assured><maximum>" << 2 * total
             << "</maximum></type-3>";
        break;
      case 3:
        out_ << "<type-4><maximum>" << 4 * total << "</maximum></type-4>";
        break;
      default:
        out_ << "<type-5><fixed>" << fixed / 2 << "</fixed><assured>" << total
             << "</assured><maximum>" << 2 * total << "</maximum></type-5>";
    }
    out_ << "</traffic></bandwidth-profile>\n";
  }

  void write_line_profile(std::uint32_t index) {
    out_ << "      <line-profile>\n        <name>" << named("line-", index + 1U) << "</name>\n";
    for (std::uint64_t tcont = 0; tcont < kTconts; ++tcont) {
      const std::uint64_t bandwidth =
          variation_.pick("tcont", index * kTconts + tcont, size_.bandwidth_profiles);
      out_ << "        <tcont><id>" << tcont + 1 << "</id><bandwidth-profile>"
           << named("bw-", bandwidth + 1) << "</bandwidth-profile></tcont>\n";
    }
    for (std::uint32_t gem = 0; gem < size_.gems; ++gem) {
      out_ << "        <gem><gem-id>" << gem + 1 << "</gem-id><tcont>" << gem % kTconts + 1
           << "</tcont></gem>\n";
    }
    out_ << "      </line-profile>\n";
  }

  // One mapping for each Ethernet port and one for the gateway inside the ONU.
  void write_service_profile(std::uint32_t index) {
    out_ << "      <service-profile>\n        <name>" << named("service-", index + 1U)
         << "</name>\n";
    const std::uint64_t first = variation_.offset("mapping", kVlanOffsets);
    for (int port = 1; port <= kMappings; ++port) {
      out_ << "        <vlan-mapping><name>eth" << port << "</name><match><outer><vlan-id>"
           << first + 100 + port << "</vlan-id></outer></match><uni><ethernet>" << port
           << "</ethernet></uni><action><vlan-id>" << first + 200 + port
           << "</vlan-id></action></vlan-mapping>\n";
    }
    out_ << "        <vlan-mapping><name>veip</name><match><outer><vlan-id>100</vlan-id></outer>"
            "</match><veip><veip/></veip><action><vlan-id>200</vlan-id></action></vlan-mapping>\n"
            "      </service-profile>\n";
  }

  void write_rg_profile(std::uint32_t index) {
    out_ << "      <rg-profile>\n        <name>" << named("rg-", index + 1U) << "</name>\n";
    write_routed_wan("wan-pppoe-connection", "internet", "eth1", 1);
    write_routed_wan("wan-ip-connection", "management", "eth2", 2);
    out_ << "        <wan-bridge-connection><name>video</name><itf-grouping>"
            "<ports><port>eth3</port></ports><ports><port>eth4</port><vlan>20</vlan></ports>"
            "</itf-grouping></wan-bridge-connection>\n"
            "        <wlan><id>1</id><ssid><custom>home-"
         << index + 1
         << "</custom></ssid></wlan>\n"
            "        <wlan><id>2</id><ssid><auto><onu-serial-number/><prefix>guest-</prefix>"
            "</auto></ssid></wlan>\n"
            "      </rg-profile>\n";
  }

  void write_routed_wan(std::string_view list, std::string_view name, std::string_view port,
                        int network) {
    const std::string prefix = "192.168." + std::to_string(network) + '.';
    out_ << "        <" << list << "><name>" << name << "</name><itf-grouping><ports><port>" << port
         << "</port></ports><ipv4-address>" << prefix
         << "1/24</ipv4-address><dhcp-server>true</dhcp-server><dhcp-server-address-pool>"
         << "<start-address>" << prefix << "10</start-address><end-address>" << prefix
         << "199</end-address></dhcp-server-address-pool></itf-grouping></" << list << ">\n";
  }

  // In each round every ONU gets one service port, for its next GEM port. When all GEM ports have
  // one, the next rounds use them again with another VLAN.
  void write_service_ports() {
    const std::uint32_t links = size_.links + size_.xgs_links;
    std::uint32_t written = 0;
    // Only a varied card may have too few ONUs for all of them, see check_card_size.
    const std::uint64_t rounds = size_.gems * kVlans;
    for (std::uint64_t round = 0; round < rounds && written < size_.service_ports; ++round) {
      for (std::uint32_t link = 0; link < links; ++link) {
        const std::uint32_t onus = variation_.onus_on(link, size_.onus);
        for (std::uint32_t onu = 0; onu < onus && written < size_.service_ports; ++onu) {
          write_service_port(++written, link, onu + 1, round);
        }
      }
    }
  }

  void write_service_port(std::uint32_t id, std::uint32_t link, std::uint32_t onu,
                          std::uint64_t round) {
    const std::uint64_t gem = round % size_.gems + 1;
    const std::uint64_t vlan = (gem * kVlansBetweenGems + round / size_.gems - 1 +
                                variation_.offset("service-port", kVlans)) %
                                   kVlans +
                               1;
    const std::string_view kind = link < size_.links ? "gpon" : "xgspon";
    out_ << "  <service-port><id>" << id << "</id><" << kind << "><id>1/1/" << link + 1
         << "</id><onu><id>" << onu << "</id><gem><gem-id>" << gem << "</gem-id></gem></onu></"
         << kind << "><match><vlan><vlan-id>" << vlan
         << "</vlan-id></vlan></match><action><type>translate</type><vlan><vlan-id>" << vlan
         << "</vlan-id></vlan></action><admin-enabled>true</admin-enabled></service-port>\n";
  }

  std::ostream& out_;
  CardSize size_;
  const CardVariation& variation_;
  const CardAdditions& additions_;
  std::string word_;
};

}  // namespace

void check_card_size(const CardSize& size) {
  const std::uint64_t onus = all_onus(size);
  const std::uint64_t links = std::uint64_t{size.links} + size.xgs_links;
  if (links > UINT32_MAX || onus > UINT32_MAX) {
    throw UsageError("a card cannot have that many links and ONUs, " + std::to_string(UINT32_MAX) +
                     " of each at most");
  }
  if (size.links > 0 && size.onus > kMostOnus) {
    throw UsageError("the bandwidth of a link suffices for 0 to " + std::to_string(kMostOnus) +
                     " ONUs, not for " + std::to_string(size.onus));
  }
  if (size.line_profiles > 0 && size.bandwidth_profiles == 0) {
    throw UsageError("line profiles need a bandwidth profile");
  }
  if (onus > 0 && size.line_profiles == 0) throw UsageError("ONUs need a line profile");
  if (size.service_ports == 0) return;
  if (onus == 0) throw UsageError("service ports need ONUs");
  const std::uint64_t most = onus * size.gems * kVlans;
  if (size.service_ports > most) {
    throw UsageError("there are GEM ports and VLANs for " + std::to_string(most) +
                     " service ports only");
  }
}

void write_card(std::ostream& out, const CardSize& size, const CardVariation& variation,
                const CardAdditions& additions) {
  CardWriter(out, size, variation, additions).write();
}

}  // namespace gponval
