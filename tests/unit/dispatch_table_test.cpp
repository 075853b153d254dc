#include <array>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "gpon_card_valid.h"
#include "gpon_vald_trace_itf.h"
#include "tests/support/card_fixture.h"
#include "tests/support/trace_capture.h"

namespace tarnd::test {
namespace {

constexpr const char* kOnus = "/config/interface/gpon{1 1 1}/onu";
constexpr const char* kServicePorts = "/config/service-port";
constexpr const char* kMapping = "/config/profile/gpon/service-profile{sp}/vlan-mapping{a}";
constexpr const char* kRgProfile = "/config/profile/gpon/rg-profile{rg}";

/// A request, a node that it stands at, and what only its validator writes or answers there.
struct Entry {
  std::string_view name;
  const char* keypath;
  const char* sign;
};

constexpr std::array<Entry, 26> kTable{{
    {"onu_bw_check", kOnus, " validate_max_bandwidth_ponlink begin"},
    {"ponlink_bw_check", "/config/profile/gpon/line-profile",
     " validate_max_bandwidth_global begin"},
    {"config_modified_check", kServicePorts, " validate_config_modify begin"},
    {"onu_gateway_ip_check", "/config/interface/gpon{1 1 1}/onu{1}/ip-host",
     " validate_onu_gateway_ip begin"},
    {"vlan_match_check", kMapping,
     "It's not possible to configure two or more vlan rules with the same match."},
    {"vlan_limit_check", kMapping, " validate_vlan_limit begin"},
    {"onu_pwd_sn_unique_check", kOnus, " validate_onu_pwd_sn_unique begin"},
    {"onu_gem_check", kOnus, " validate_onu_gem_check begin"},
    {"fec_confirmation_warning", "/config/interface/gpon{1 1 1}/downstream-fec",
     " ponlink_fec_confirmation begin"},
    {"line_confirmation_warning", "/config/profile/gpon/line-profile{li}",
     " line_profile_confirmation begin"},
    {"rg_profile_confirmation_warning", kRgProfile, " rg_profile_confirmation begin"},
    {"tr069_profile_confirmation_warning", "/config/profile/gpon/tr069-acs-profile{tr}",
     " tr069_profile_confirmation begin"},
    {"tr069_profile_password_length_check", "/config/profile/gpon/tr069-acs-profile{tr}/password",
     " tr069_profile_password_length_check_func begin"},
    {"rg_profile_ssid_unique_check", "/config/profile/gpon/rg-profile{rg}/wlan",
     "Checking if SSID is unique for (rg) RG-Profile"},
    {"sp_gem_check", kServicePorts, " validate_sp_gem_check begin"},
    {"service_port_global_validation", kServicePorts, " service_port_global_validation begin"},
    {"service_port_delete_all_warning_check", kServicePorts,
     " service_port_delete_all_warning begin"},
    {"pon_mode_validation", "/config/interface/xgspon{1 1 2}/operation-mode",
     "Keypath: /config/interface/xgspon{1 1 2}/operation-mode"},
    {"onu_snmp_rt_warn", kOnus, " onu_snmp_rt_confirmation begin"},
    {"sip_agent_profile_confirmation_warning", "/config/profile/gpon/sip-agent-profile{si}",
     " sip_agent_profile_confirmation begin"},
    {"itf_grp_validation", kRgProfile, " validate_itf_grp begin"},
    {"interface_gpon_validation", "/config/interface/gpon",
     "GPON interfaces cannot be deleted because they are physical ports."},
    {"interface_xgs_validation", "/config/interface/xgspon",
     "XGSPON interfaces cannot be deleted because they are physical ports."},
    {"voip_media_profile_confirmation_warning", "/config/profile/gpon/media-profile{me}",
     " voip_media_profile_confirmation begin"},
    {"one_shot_prov_check", "/config/gpon", " validate_one_shot_prov begin"},
    {"rg_prof_one_shot_check", "/config/interface/gpon{1 1 1}/onu{1}/rg-profile",
     " validate_rg_prof_one_shot begin"},
}};

/// The entry that answers a request: the first whose name begins with it.
const Entry* entry_for(std::string_view request) {
  for (const Entry& entry : kTable) {
    if (entry.name.substr(0, request.size()) == request) return &entry;
  }
  return nullptr;
}

/// Every name and every leading part of one, the empty one included.
std::set<std::string> all_prefixes() {
  std::set<std::string> prefixes;
  for (const Entry& entry : kTable) {
    for (std::size_t length = 0; length <= entry.name.size(); ++length) {
      prefixes.emplace(entry.name.substr(0, length));
    }
  }
  return prefixes;
}

/// One instance of every node that a request stands at. The two VLAN mappings match the same
/// traffic.
std::string one_of_each() {
  const auto mapping = [](const std::string& name) {
    return element("vlan-mapping",
                   element("name", name) + element("uni", element("ethernet", "1")));
  };
  const auto named = [](const std::string& list, const std::string& name,
                        const std::string& content = "") {
    return profiles(element(list, element("name", name) + content));
  };
  const std::string ip_host = element(
      "ip-host", element("address", "10.0.0.2/24") + element("default-gateway", "10.0.0.1"));
  return element("gpon", element("slot", "1/1")) +
         gpon_link(1, onu(1, element("rg-profile", "rg") + ip_host)) + xgspon_link(2) +
         line_profile("li", "") + service_profile("sp", mapping("a") + mapping("b")) +
         rg_profile("rg", "") + named("tr069-acs-profile", "tr", element("password", "$0$secret")) +
         named("sip-agent-profile", "si") + named("media-profile", "me");
}

class DispatchTable : public CardFixture {
 protected:
  DispatchTable() {
    CardDescription card = CardDescription::standard();
    card.manageable_links = 4;  // more than there are: the guards of physical links speak up
    insert(card);
    running(one_of_each());
  }

  struct Call {
    std::string request;
    const char* keypath;
  };

  /// The signs of the validators that ran, all of them, call by call.
  std::vector<std::set<std::string>> signs_of(const std::vector<Call>& calls) {
    std::vector<std::set<std::string>> signs;
    std::vector<std::string> texts;
    TraceCapture trace(TraceLevel::kDetail);
    for (const Call& call : calls) {
      VALID_TRACE(kTraceFlow, "%s", kNextCall);
      texts.push_back(request(call.request, call.keypath).text);
    }
    for (const std::string& record : trace.records()) {
      if (record.find(kNextCall) != std::string::npos) {
        signs.emplace_back();
      } else {
        add_signs(record, signs.back());
      }
    }
    for (std::size_t i = 0; i < calls.size(); ++i) add_signs(texts[i], signs[i]);
    return signs;
  }

 private:
  static constexpr const char* kNextCall = "next call";

  static void add_signs(const std::string& text, std::set<std::string>& signs) {
    for (const Entry& entry : kTable) {
      if (text.find(entry.sign) != std::string::npos) signs.insert(entry.sign);
    }
  }
};

TEST_F(DispatchTable, EveryNameReachesItsOwnValidatorAlone) {
  std::vector<Call> calls;
  calls.reserve(kTable.size());
  for (const Entry& entry : kTable) calls.push_back({std::string(entry.name), entry.keypath});
  const auto signs = signs_of(calls);
  for (std::size_t i = 0; i < kTable.size(); ++i) {
    EXPECT_EQ(signs.at(i), std::set<std::string>{kTable[i].sign}) << kTable[i].name;
  }
}

TEST_F(DispatchTable, EveryLeadingPartReachesTheEarliestEntryThatBeginsWithIt) {
  std::vector<Call> calls;
  for (const std::string& prefix : all_prefixes()) {
    calls.push_back({prefix, entry_for(prefix)->keypath});
  }
  const auto signs = signs_of(calls);
  for (std::size_t i = 0; i < calls.size(); ++i) {
    EXPECT_EQ(signs.at(i), std::set<std::string>{entry_for(calls[i].request)->sign})
        << "request '" << calls[i].request << "'";
  }
}

TEST_F(DispatchTable, AnEmptyRequestReachesTheFirstEntry) {
  EXPECT_EQ(signs_of({{"", kTable.front().keypath}}).front(),
            std::set<std::string>{kTable.front().sign});
}

TEST_F(DispatchTable, ANameWithACharacterMoreReachesNothing) {
  std::vector<Call> calls;
  calls.reserve(kTable.size());
  for (const Entry& entry : kTable) calls.push_back({std::string(entry.name) + "x", entry.keypath});
  const auto signs = signs_of(calls);
  for (std::size_t i = 0; i < calls.size(); ++i) {
    EXPECT_TRUE(signs.at(i).empty()) << calls[i].request;
    EXPECT_EQ(request(calls[i].request, calls[i].keypath).result, Verdict::kOk);
  }
}

// Whatever other name the table held, it would part from the known ones at some character. That
// character is tried here after each leading part, so the table holds no other name.
TEST_F(DispatchTable, ARequestThatNoNameBeginsWithReachesNothing) {
  ValidationSession& session = open();
  TraceCapture trace(TraceLevel::kDetail);
  confd_hkeypath_t keypath{};
  int requests = 0;
  for (const std::string& prefix : all_prefixes()) {
    for (const char next : std::string_view("abcdefghijklmnopqrstuvwxyz0123456789_-AZ ")) {
      const std::string name = prefix + next;
      if (entry_for(name) != nullptr) continue;
      session.begin_request(name);
      ASSERT_EQ(validate(tctx(), &keypath, nullptr), CONFD_OK) << name;
      ASSERT_EQ(session.error_text(), std::nullopt) << name;
      ++requests;
    }
  }
  EXPECT_GT(requests, 10000);
  EXPECT_TRUE(trace.records().empty()) << trace.records().front();
}

}  // namespace
}  // namespace tarnd::test
