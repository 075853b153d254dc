#include "bench/agreement.h"

#include <cstdio>
#include <functional>
#include <string>
#include <vector>

#include "bench/full_card.h"
#include "bench/yang_forms.h"

namespace bench {
namespace {

constexpr const char* kPorts = "service_port_global_validation";
constexpr const char* kGems = "sp_gem_check";
constexpr const char* kSerials = "onu_pwd_sn_unique_check";
constexpr const char* kBandwidth = "ponlink_bw_check";
constexpr const char* kMappings = "vlan_limit_check";

/// A change of the small card below, and whether it obeys the rules of the request.
struct Case {
  const char* request;
  std::string content;
  bool good;
  bool large = false;  ///< too much for the slow forms
};

std::string leaf(const std::string& name, const std::string& text) {
  return "<" + name + ">" + text + "</" + name + ">";
}

std::string link(const std::string& kind, int port, const std::string& content) {
  return leaf("interface", leaf(kind, "<chassis-id>1</chassis-id><slot-id>1</slot-id>" +
                                          leaf("port-id", std::to_string(port)) + content));
}

std::string onu(int id, const std::string& content) {
  return leaf("onu", leaf("id", std::to_string(id)) + content);
}

std::string serial(const std::string& text) {
  return leaf("auth-method", leaf("serial-number", text));
}

std::string uses(const std::string& line_profile) {
  return leaf("profile-references", leaf("line-profile", line_profile));
}

std::string profile(const std::string& list, const std::string& content) {
  return leaf("profile", leaf("gpon", leaf(list, content)));
}

std::string bandwidth(const std::string& name, const std::string& traffic) {
  return profile("bandwidth-profile", leaf("name", name) + leaf("traffic", traffic));
}

std::string assured(int figure) {
  return leaf("type-2", leaf("assured", std::to_string(figure)));
}

std::string fixed(int figure) {
  return leaf("type-1", leaf("fixed", std::to_string(figure)));
}

std::string tcont(int id, const std::string& bandwidth_profile) {
  return leaf("tcont",
              leaf("id", std::to_string(id)) + leaf("bandwidth-profile", bandwidth_profile));
}

std::string line(const std::string& name, const std::string& content) {
  return profile("line-profile", leaf("name", name) + content);
}

// Two GPON links with ONUs 1 and 2 and an XGS-PON link with ONU 1. The second link has no load.
std::string small_card() {
  const std::string gems = "<gem><gem-id>1</gem-id></gem><gem><gem-id>2</gem-id></gem>";
  return change("<gpon><slot>1/1</slot><onu-auth-method>serial-number</onu-auth-method></gpon>" +
                link("gpon", 1,
                     onu(1, serial("ZQRT00000011") + uses("loaded")) +
                         onu(2, serial("ZQRT00000012") + uses("idle"))) +
                link("gpon", 2,
                     onu(1, serial("ZQRT00000021") + uses("idle")) +
                         onu(2, serial("ZQRT000000AB") + uses("idle"))) +
                link("xgspon", 9, onu(1, serial("ZQRT00000091") + uses("idle"))) +
                bandwidth("load", assured(1000)) + line("loaded", tcont(1, "load") + gems) +
                line("idle", gems) + profile("service-profile", leaf("name", "triple-play")));
}

std::string on_link(const std::string& kind, const std::string& name, const std::string& onu_id,
                    const std::string& gem) {
  return leaf(
      kind, leaf("id", name) + leaf("onu", leaf("id", onu_id) + leaf("gem", leaf("gem-id", gem))));
}

std::string port(int id, const std::string& where, const std::string& vlan = "") {
  return leaf("service-port",
              leaf("id", std::to_string(id)) + where +
                  (vlan.empty() ? "" : leaf("match", leaf("vlan", leaf("vlan-id", vlan)))));
}

std::string many_ports(std::uint32_t count) {
  constexpr std::uint32_t kVlans = 4000;
  std::string ports;
  for (std::uint32_t i = 0; i < count; ++i) {
    ports += port(static_cast<int>(i), on_link("gpon", "1/1/1", "1", std::to_string(i / kVlans)),
                  std::to_string(i % kVlans + 1));
  }
  return ports;
}

std::string mappings(int first, int count, const std::string& content) {
  std::string text;
  for (int i = first; i < first + count; ++i) {
    text += leaf("vlan-mapping", leaf("name", "m" + std::to_string(i)) + content);
  }
  return profile("service-profile", leaf("name", "triple-play") + text);
}

std::string ethernet(int number) {
  return leaf("uni", leaf("ethernet", std::to_string(number)));
}

const std::string kVeip = "<veip><veip/></veip>";

void add_service_ports(std::vector<Case>& cases) {
  const std::string here = on_link("gpon", "1/1/1", "1", "1");
  cases.push_back({kPorts, port(1, here, "10") + port(2, here, "11"), true});
  cases.push_back({kPorts, port(1, here, "10") + port(2, here, "10"), false});
  cases.push_back({kPorts, port(1, here, "10") + port(2, here), true});
  cases.push_back({kPorts, port(1, here) + port(2, here), false});
  cases.push_back({kPorts, port(1, here) + port(2, on_link("gpon", "1/1/2", "1", "1")), true});
  cases.push_back({kPorts, port(1, here) + port(2, on_link("gpon", "1/1/1", "2", "1")), true});
  cases.push_back({kPorts, port(1, here) + port(2, on_link("gpon", "1/1/1", "1", "2")), true});
  cases.push_back({kPorts, port(1, here) + port(2, on_link("xgspon", "1/1/1", "1", "1")), true});
  const std::string there = on_link("xgspon", "1/1/9", "1", "1");
  cases.push_back({kPorts, port(1, there, "10") + port(2, there, "10"), false});
  cases.push_back({kPorts, port(1, "") + port(2, ""), true});
  cases.push_back({kPorts, many_ports(kMostServicePorts), true, true});
  cases.push_back({kPorts, many_ports(kMostServicePorts + 1), false, true});
  cases.push_back({kPorts, many_ports(kMostServicePorts) + port(1'000'000, ""), true, true});
}

void add_references(std::vector<Case>& cases) {
  cases.push_back({kGems, port(1, on_link("gpon", "1/1/1", "2", "2")), true});
  cases.push_back({kGems, port(1, on_link("gpon", "1/1/1", "2", "3")), false});
  cases.push_back({kGems, port(1, on_link("gpon", "1/1/1", "3", "1")), false});
  cases.push_back({kGems, port(1, on_link("gpon", "1/1/3", "1", "1")), false});
  cases.push_back({kGems, port(1, on_link("xgspon", "1/1/9", "1", "1")), true});
  cases.push_back({kGems, port(1, on_link("xgspon", "1/1/1", "1", "1")), false});
  cases.push_back({kGems, port(1, on_link("gpon", "1/1/9", "1", "1")), false});
  cases.push_back({kGems, port(1, leaf("gpon", leaf("id", "1/1/1"))), false});
  cases.push_back({kGems, port(1, ""), true});
  cases.push_back({kGems,
                   link("gpon", 1, onu(4, serial("ZQRT00000014"))) +
                       port(1, on_link("gpon", "1/1/1", "4", "1")),
                   false});
  cases.push_back(
      {kGems,
       link("gpon", 1, onu(4, uses("missing"))) + port(1, on_link("gpon", "1/1/1", "4", "1")),
       false});
}

void add_serial_numbers(std::vector<Case>& cases) {
  const auto new_onu = [](const std::string& number) {
    return link("gpon", 1, onu(3, serial(number) + uses("idle")));
  };
  cases.push_back({kSerials, new_onu("ZQRT00000013"), true});
  cases.push_back({kSerials, new_onu("ZQRT00000011"), false});
  cases.push_back({kSerials, new_onu("ZQRT00000012"), false});
  cases.push_back({kSerials, new_onu("ZQRT00000021"), false});
  cases.push_back({kSerials, new_onu("ZQRT00000091"), false});
  cases.push_back({kSerials, new_onu("ZQRT000000ab"), false});
  cases.push_back({kSerials, new_onu("zqrt00000011"), true});
  cases.push_back({kSerials, link("gpon", 1, onu(3, uses("idle"))), true});
  cases.push_back(
      {kSerials, link("xgspon", 9, onu(2, serial("ZQRT00000091") + uses("idle"))), false});
  cases.push_back(
      {kSerials, link("xgspon", 9, onu(2, serial("ZQRT00000011") + uses("idle"))), false});
  const std::string by_password =
      "<gpon><slot>1/1</slot><onu-auth-method>password</onu-auth-method></gpon>";
  cases.push_back({kSerials, by_password + new_onu("ZQRT00000011"), true});
  cases.push_back({kSerials, by_password + new_onu("ZQRT00000021"), true});
}

void add_bandwidth(std::vector<Case>& cases) {
  constexpr int kTotal = 1107504;
  constexpr int kFixed = 442752;
  constexpr int kOverheadOfTwo = 2 * 560;
  const auto load = [](const std::string& traffic) { return bandwidth("load", traffic); };
  cases.push_back({kBandwidth, load(assured(kTotal - kOverheadOfTwo)), true});
  cases.push_back({kBandwidth, load(assured(kTotal - kOverheadOfTwo + 1)), false});
  const std::string twice = line("loaded", tcont(2, "load"));
  cases.push_back({kBandwidth, twice + load(assured((kTotal - kOverheadOfTwo) / 2)), true});
  cases.push_back({kBandwidth, twice + load(assured((kTotal - kOverheadOfTwo) / 2 + 1)), false});
  const std::string both = link("gpon", 1, onu(2, uses("loaded")));
  cases.push_back({kBandwidth, both + load(assured((kTotal - kOverheadOfTwo) / 2)), true});
  cases.push_back({kBandwidth, both + load(assured((kTotal - kOverheadOfTwo) / 2 + 1)), false});
  const auto instead = [](const std::string& traffic) {
    return bandwidth("other", traffic) + line("loaded", tcont(1, "other"));
  };
  cases.push_back({kBandwidth, instead(fixed(kFixed)), true});
  cases.push_back({kBandwidth, instead(fixed(kFixed + 1)), false});
  const auto both_kinds = [](int figure) {
    return leaf("type-5", leaf("fixed", std::to_string(kFixed)) +
                              leaf("assured", std::to_string(figure)) + leaf("maximum", "4000000"));
  };
  cases.push_back({kBandwidth, instead(both_kinds(kTotal - kOverheadOfTwo)), true});
  cases.push_back({kBandwidth, instead(both_kinds(kTotal - kOverheadOfTwo + 1)), false});
  cases.push_back({kBandwidth, instead(leaf("type-4", leaf("maximum", "4000000"))), true});
}

void add_mappings(std::vector<Case>& cases) {
  cases.push_back({kMappings, mappings(0, 20, ethernet(1)), true});
  cases.push_back({kMappings, mappings(0, 21, ethernet(1)), false});
  cases.push_back({kMappings, mappings(0, 21, ethernet(255)), false});
  cases.push_back({kMappings, mappings(0, 20, ethernet(1)) + mappings(20, 20, ethernet(2)), true});
  cases.push_back({kMappings, mappings(0, 20, kVeip), true});
  cases.push_back({kMappings, mappings(0, 21, kVeip), false});
  cases.push_back({kMappings, mappings(0, 20, kVeip) + mappings(20, 1, ethernet(127)), false});
  cases.push_back({kMappings, mappings(0, 20, kVeip) + mappings(20, 1, ethernet(1) + kVeip), true});
}

std::vector<Case> all_cases() {
  std::vector<Case> cases;
  add_service_ports(cases);
  add_references(cases);
  add_serial_numbers(cases);
  add_bandwidth(cases);
  add_mappings(cases);
  return cases;
}

// The card after a change, as the plug-in and YANG read it.
struct Judged {
  const Case* change;
  bool accepted = false;
  std::string text;
};

std::vector<Judged> judge(const std::vector<Case>& cases) {
  std::vector<Judged> judged;
  for (const Case& one : cases) {
    const std::string edit = change(one.content);
    Card card(change(""));
    card.apply(small_card());
    const bool accepted = card.verdict(edit, one.request) == tarnd::CommitResult::kAccepted;
    if (!accepted) card.apply(edit);
    judged.push_back({&one, accepted, card.text()});
  }
  return judged;
}

// Each of the three rules of the service-port list covers some cases of one request.
bool belongs(const Case& one, const Form& form) {
  if (form.request != std::string(one.request)) return false;
  if (one.request != kPorts) return true;
  const bool is_limit = std::string(form.rule) == best_form("number of service ports").rule;
  return is_limit == one.large;
}

int disagreements(const Form& form, const std::vector<Judged>& judged) {
  int count = 0;
  for (const Judged& one : judged) {
    if (!belongs(*one.change, form) || (form.slow && one.change->large)) continue;
    const bool valid = YangCard(form.modules, one.text).validate();
    if (valid == one.accepted) continue;
    ++count;
    if (form.exact) {
      std::printf("%s, %s: YANG %s what the plug-in %s: %.600s\n", form.rule, form.how,
                  valid ? "accepts" : "refuses", one.accepted ? "accepts" : "refuses",
                  one.change->content.c_str());
    }
  }
  return count;
}

}  // namespace

int check_agreement() {
  ly_log_options(0);
  const std::vector<Case> cases = all_cases();
  const std::vector<Judged> judged = judge(cases);
  int wrong = 0;
  for (const Judged& one : judged) {
    if (one.accepted == one.change->good) continue;
    std::printf("the plug-in %s: %.600s\n", one.accepted ? "accepts" : "refuses",
                one.change->content.c_str());
    ++wrong;
  }
  for (const Form& form : yang_forms()) {
    const int count = disagreements(form, judged);
    if (form.exact) {
      wrong += count;
    } else if (count == 0) {
      std::printf("%s, %s: is as good as exact\n", form.rule, form.how);
      ++wrong;
    }
  }
  return wrong;
}

}  // namespace bench
