#include "bench/requests.h"

#include <cstdio>
#include <functional>

namespace bench {
namespace {

using gponval::CardSize;

constexpr int kXgsLink = 1000;

std::string leaf(std::string_view name, std::string_view text) {
  return "<" + std::string(name) + ">" + std::string(text) + "</" + std::string(name) + ">";
}

std::string numbered(const char* prefix, std::uint32_t number) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%s%04u", prefix, number);
  return text.data();
}

std::string repeated(int entries, const std::function<std::string(std::uint32_t)>& entry) {
  std::string text;
  for (int i = 0; i < entries; ++i) text += entry(static_cast<std::uint32_t>(i));
  return text;
}

std::string link(std::string_view kind, std::uint32_t port, const std::string& content) {
  return leaf("interface", leaf(kind, leaf("chassis-id", "1") + leaf("slot-id", "1") +
                                          leaf("port-id", std::to_string(port)) + content));
}

std::string profile(std::string_view list, const std::string& content) {
  return leaf("profile", leaf("gpon", leaf(list, content)));
}

std::string profiles(std::string_view list, int entries,
                     const std::function<std::string(std::uint32_t)>& content) {
  return repeated(entries, [&](std::uint32_t i) { return profile(list, content(i)); });
}

// The last ONUs of the last link: few service ports, if any, belong to them.
std::string last_onus(const CardSize& size, int entries,
                      const std::function<std::string(std::uint32_t index)>& content) {
  return link("gpon", size.links, repeated(entries, [&](std::uint32_t i) {
                const std::uint32_t id = size.onus - i;
                const std::uint32_t index = (size.links - 1) * size.onus + id - 1;
                return leaf("onu", leaf("id", std::to_string(id)) + content(index));
              }));
}

// An edit of one leaf or more, and the edit that undoes it.
Edit both(const std::function<std::string(bool back)>& content) {
  return {change(content(false)), change(content(true))};
}

Edit onu_descriptions(const CardSize& size, int entries) {
  return both([&](bool back) {
    return last_onus(size, entries, [&](std::uint32_t) {
      return back ? "<description nc:operation=\"delete\"/>" : leaf("description", "cellar");
    });
  });
}

Edit onu_serial_numbers(const CardSize& size, int entries) {
  return both([&](bool back) {
    return last_onus(size, entries, [&](std::uint32_t index) {
      constexpr std::uint32_t kUnused = 0xF0000000;
      std::array<char, 16> serial{};
      std::snprintf(serial.data(), serial.size(), "ZQRT%08X", back ? index : kUnused + index);
      return leaf("auth-method", leaf("serial-number", serial.data()));
    });
  });
}

Edit onu_line_profiles(const CardSize& size, int entries) {
  return both([&](bool back) {
    return last_onus(size, entries, [&](std::uint32_t index) {
      const std::uint32_t line = (index + (back ? 0 : 1)) % size.line_profiles + 1;
      return leaf("profile-references", leaf("line-profile", numbered("line-", line)));
    });
  });
}

Edit onu_rg_profiles(const CardSize& size, int entries) {
  return both([&](bool back) {
    return last_onus(size, entries, [&](std::uint32_t index) {
      return leaf("rg-profile", numbered("rg-", (index + (back ? 0 : 1)) % size.rg_profiles + 1));
    });
  });
}

// The generated gateway is the first address of the ONU's network of four; the last one is valid,
// too.
Edit onu_gateways(const CardSize& size, int entries) {
  return both([&](bool back) {
    return last_onus(size, entries, [&](std::uint32_t index) {
      const std::uint32_t host = index * 4 + (back ? 1 : 3);
      const std::string address = "10." + std::to_string(host >> 16U) + "." +
                                  std::to_string(host >> 8U & 255U) + "." +
                                  std::to_string(host & 255U);
      return leaf("ip-host", leaf("default-gateway", address));
    });
  });
}

Edit ports(const CardSize& /*size*/, int entries) {
  return {added_ports(entries), added_ports(entries, "delete")};
}

Edit one_shot(const CardSize& /*size*/, int /*entries*/) {
  return both([](bool back) {
    return leaf("gpon",
                leaf("slot", "1/1") +
                    (back ? "<rg-one-shot-prov/>" : "<rg-one-shot-prov nc:operation=\"delete\"/>"));
  });
}

Edit fec(const CardSize& /*size*/, int entries) {
  return both([&](bool back) {
    return repeated(entries, [&](std::uint32_t i) {
      return link(
          "gpon", i + 1,
          back ? "<downstream-fec nc:operation=\"delete\"/>" : leaf("downstream-fec", "false"));
    });
  });
}

Edit operation_mode(const CardSize& /*size*/, int /*entries*/) {
  return both([](bool back) {
    return link(
        "xgspon", kXgsLink,
        back ? "<operation-mode nc:operation=\"delete\"/>" : leaf("operation-mode", "combo"));
  });
}

Edit bandwidth_profiles(const CardSize& /*size*/, int entries) {
  return both([&](bool back) {
    return repeated(entries, [&](std::uint32_t i) {
      return leaf("profile",
                  leaf("gpon", std::string("<bandwidth-profile") +
                                   (back ? " nc:operation=\"delete\"" : "") + ">" +
                                   leaf("name", numbered("added-", i)) +
                                   leaf("traffic", leaf("type-4", leaf("maximum", "1000"))) +
                                   "</bandwidth-profile>"));
    });
  });
}

Edit line_profile_gems(const CardSize& /*size*/, int entries) {
  return both([&](bool back) {
    return profiles("line-profile", entries, [&](std::uint32_t i) {
      return leaf("name", numbered("line-", i + 1)) + "<gem" +
             (back ? " nc:operation=\"delete\"" : "") + "><gem-id>99</gem-id></gem>";
    });
  });
}

Edit vlan_mappings(const CardSize& /*size*/, int entries) {
  return both([&](bool back) {
    return profiles("service-profile", entries, [&](std::uint32_t i) {
      return leaf("name", numbered("service-", i + 1)) +
             leaf("vlan-mapping",
                  leaf("name", "eth1") + leaf("action", leaf("vlan-id", back ? "201" : "301")));
    });
  });
}

Edit wlans(const CardSize& /*size*/, int entries) {
  return both([&](bool back) {
    return profiles("rg-profile", entries, [&](std::uint32_t i) {
      return leaf("name", numbered("rg-", i + 1)) +
             leaf("wlan",
                  leaf("id", "1") + leaf("ssid", leaf("custom", (back ? "home-" : "house-") +
                                                                    std::to_string(i + 1))));
    });
  });
}

Edit tr069_passwords(const CardSize& /*size*/, int entries) {
  return both([&](bool back) {
    return profiles("tr069-acs-profile", entries, [&](std::uint32_t i) {
      return leaf("name", numbered("acs-", i + 1)) +
             (back ? "<password nc:operation=\"delete\"/>" : leaf("password", "$0$sesame"));
    });
  });
}

Edit sip_proxies(const CardSize& /*size*/, int entries) {
  return both([&](bool back) {
    return profiles("sip-agent-profile", entries, [&](std::uint32_t i) {
      return leaf("name", numbered("sip-", i + 1)) +
             leaf("proxy-server", "sip-" + std::to_string(i + 1) + (back ? ".example" : ".test"));
    });
  });
}

Edit media_codecs(const CardSize& /*size*/, int entries) {
  return both([&](bool back) {
    return profiles("media-profile", entries, [&](std::uint32_t i) {
      const char* const codec = i % 2 == 0 ? "pcma" : "pcmu";
      return leaf("name", numbered("media-", i + 1)) + leaf("codec", back ? codec : "G.722");
    });
  });
}

}  // namespace

std::string_view to_string(Dimension dimension) {
  constexpr std::array<std::string_view, kDimensions> kNames = {"links",
                                                                "ONUs of the link",
                                                                "ONUs",
                                                                "service ports",
                                                                "bandwidth profiles",
                                                                "line profiles",
                                                                "service profiles",
                                                                "gateway profiles",
                                                                "other profiles",
                                                                "changed entries"};
  return kNames.at(static_cast<std::size_t>(dimension));
}

const std::vector<Request>& requests() {
  using enum Dimension;
  static const std::vector<Request> kRequests = {
      {"one_shot_prov_check", one_shot, {}},
      {"interface_gpon_validation", onu_descriptions, {}},
      {"onu_bw_check", onu_line_profiles, {kOnusOfLink, kBandwidthProfiles, kLineProfiles}},
      {"onu_pwd_sn_unique_check", onu_serial_numbers, {kLinks, kOnus}},
      {"onu_gem_check", onu_line_profiles, {kServicePorts, kChangedEntries}},
      {"onu_snmp_rt_warn", onu_descriptions, {}},
      {"interface_xgs_validation", operation_mode, {}},
      {"fec_confirmation_warning", fec, {kChangedEntries}},
      {"pon_mode_validation", operation_mode, {}},
      {"rg_prof_one_shot_check", onu_rg_profiles, {kChangedEntries}},
      {"onu_gateway_ip_check", onu_gateways, {kChangedEntries}},
      {"config_modified_check", ports, {}},
      {"ponlink_bw_check",
       bandwidth_profiles,
       {kLinks, kOnus, kBandwidthProfiles, kLineProfiles, kChangedEntries}},
      {"line_confirmation_warning", line_profile_gems, {kChangedEntries}},
      {"vlan_limit_check", vlan_mappings, {kChangedEntries}},
      {"vlan_match_check", vlan_mappings, {kChangedEntries}},
      {"itf_grp_validation", wlans, {kChangedEntries}},
      {"rg_profile_confirmation_warning", wlans, {kChangedEntries}},
      {"rg_profile_ssid_unique_check", wlans, {kChangedEntries}},
      {"tr069_profile_confirmation_warning", tr069_passwords, {kChangedEntries}},
      {"tr069_profile_password_length_check", tr069_passwords, {kChangedEntries}},
      {"sip_agent_profile_confirmation_warning", sip_proxies, {kChangedEntries}},
      {"voip_media_profile_confirmation_warning", media_codecs, {kChangedEntries}},
      {"service_port_global_validation", ports, {kServicePorts, kChangedEntries}},
      {"sp_gem_check", ports, {kChangedEntries}},
      {"service_port_delete_all_warning_check", ports, {kLinks}},
  };
  return kRequests;
}

std::string preparation() {
  return change(leaf("gpon", leaf("slot", "1/1") + "<rg-one-shot-prov/>") +
                link("xgspon", kXgsLink, ""));
}

}  // namespace bench
