#include <array>
#include <functional>
#include <stdexcept>
#include <string>

#include "gpon_card_valid.h"
#include "gpon_vald_trace_itf.h"
#include "tests/support/card_fixture.h"
#include "tests/support/trace_capture.h"

namespace tarnd::test {
namespace {

constexpr const char* kOnuList = "/config/interface/gpon{1 1 1}/onu";
constexpr const char* kServicePorts = "/config/service-port";
constexpr const char* kRgProfile = "/config/profile/gpon/rg-profile{rg}";
constexpr const char* kMapping = "/config/profile/gpon/service-profile{sp}/vlan-mapping{a}";

/// One instance of every node that a request stands at. The two VLAN mappings match the same
/// traffic.
std::string one_of_each() {
  const auto named = [](const std::string& type, const std::string& content = "") {
    return profiles(element(type, element("name", type.substr(0, 2)) + content));
  };
  const auto mapping = [](const std::string& name) {
    return element("vlan-mapping",
                   element("name", name) + element("uni", element("ethernet", "1")));
  };
  const std::string ip_host = element(
      "ip-host", element("address", "10.0.0.2/24") + element("default-gateway", "10.0.0.1"));
  const std::string wlan =
      element("wlan", element("id", "1") + element("ssid", element("custom", "home")));
  return element("gpon", element("slot", "1/1")) +
         gpon_link(1, onu(1, element("rg-profile", "rg") + ip_host)) + xgspon_link(2) +
         bandwidth_profile("bw", element("type-1", element("fixed", "1000"))) +
         line_profile("li", tcont(1, "bw")) + service_profile("sp", mapping("a") + mapping("b")) +
         rg_profile("rg", wlan) + named("tr069-acs-profile", element("password", "$0$secret")) +
         named("sip-agent-profile") + named("media-profile") +
         service_port(1, "gpon", "1/1/1", 1, 1);
}

class Dispatch : public CardFixture {
 protected:
  Dispatch() { running(one_of_each()); }

  /// Dispatches the request; does the whole trace hold the record?
  bool traces(const std::string& request_name, const std::string& keypath,
              const std::string& record) {
    TraceCapture trace(TraceLevel::kDetail);
    request(request_name, keypath);
    return trace.has(record);
  }
};

TEST_F(Dispatch, EveryRequestReachesItsValidator) {
  struct Row {
    const char* request;
    const char* keypath;
    const char* record;
  };
  const std::array<Row, 25> rows{{
      {"onu_bw_check", kOnuList, "validate_max_bandwidth_ponlink begin"},
      {"ponlink_bw_check", "/config/profile/gpon/line-profile",
       "validate_max_bandwidth_global begin"},
      {"config_modified_check", kServicePorts, "validate_config_modify begin"},
      {"onu_gateway_ip_check", "/config/interface/gpon{1 1 1}/onu{1}/ip-host",
       "validate_onu_gateway_ip begin"},
      {"vlan_limit_check", kMapping, "validate_vlan_limit begin"},
      {"onu_pwd_sn_unique_check", kOnuList, "validate_onu_pwd_sn_unique begin"},
      {"onu_gem_check", kOnuList, "validate_onu_gem_check begin"},
      {"fec_confirmation_warning", "/config/interface/gpon{1 1 1}/downstream-fec",
       "ponlink_fec_confirmation begin"},
      {"line_confirmation_warning", "/config/profile/gpon/line-profile{li}",
       "line_profile_confirmation begin"},
      {"rg_profile_confirmation_warning", kRgProfile, "rg_profile_confirmation begin"},
      {"tr069_profile_confirmation_warning", "/config/profile/gpon/tr069-acs-profile{tr}",
       "tr069_profile_confirmation begin"},
      {"tr069_profile_password_length_check", "/config/profile/gpon/tr069-acs-profile{tr}/password",
       "tr069_profile_password_length_check_func begin"},
      {"rg_profile_ssid_unique_check", "/config/profile/gpon/rg-profile{rg}/wlan",
       "Checking if SSID is unique for (rg) RG-Profile"},
      {"sp_gem_check", kServicePorts, "validate_sp_gem_check begin"},
      {"service_port_global_validation", kServicePorts, "service_port_global_validation begin"},
      {"service_port_delete_all_warning_check", kServicePorts,
       "service_port_delete_all_warning begin"},
      {"pon_mode_validation", "/config/interface/xgspon{1 1 2}/operation-mode",
       "Keypath: /config/interface/xgspon{1 1 2}/operation-mode"},
      {"onu_snmp_rt_warn", kOnuList, "onu_snmp_rt_confirmation begin"},
      {"sip_agent_profile_confirmation_warning", "/config/profile/gpon/sip-agent-profile{si}",
       "sip_agent_profile_confirmation begin"},
      {"itf_grp_validation", kRgProfile, "validate_itf_grp begin"},
      {"interface_gpon_validation", "/config/interface/gpon", "validate_itf_pon begin"},
      {"interface_xgs_validation", "/config/interface/xgspon", "validate_itf_pon begin"},
      {"voip_media_profile_confirmation_warning", "/config/profile/gpon/media-profile{me}",
       "voip_media_profile_confirmation begin"},
      {"one_shot_prov_check", "/config/gpon", "validate_one_shot_prov begin"},
      {"rg_prof_one_shot_check", "/config/interface/gpon{1 1 1}/onu{1}/rg-profile",
       "validate_rg_prof_one_shot begin"},
  }};
  for (const Row& row : rows) {
    EXPECT_TRUE(traces(row.request, row.keypath, row.record)) << row.request;
  }
}

TEST_F(Dispatch, TheVlanMatchRequestReachesItsValidator) {
  const Answer answer = request("vlan_match_check", kMapping);
  EXPECT_EQ(answer.result, Verdict::kError);
  EXPECT_EQ(answer.text,
            "It's not possible to configure two or more vlan rules with the same match.");
}

TEST_F(Dispatch, TheTwoInterfaceRequestsReachTheirOwnKindOfLink) {
  CardDescription card = CardDescription::standard();
  card.manageable_links = 4;
  insert(card);
  EXPECT_EQ(request("interface_gpon_validation", "/config/interface/gpon").text,
            "GPON interfaces cannot be deleted because they are physical ports.");
  EXPECT_EQ(request("interface_xgs_validation", "/config/interface/xgspon").text,
            "XGSPON interfaces cannot be deleted because they are physical ports.");
}

TEST_F(Dispatch, AnEmptyRequestReachesTheFirstValidator) {
  EXPECT_TRUE(traces("", kOnuList, "validate_max_bandwidth_ponlink begin"));
}

TEST_F(Dispatch, TheLeadingPartOfANameReachesTheEarliestThatBeginsWithIt) {
  EXPECT_TRUE(traces("onu", kOnuList, "validate_max_bandwidth_ponlink begin"));
  EXPECT_TRUE(traces("onu_g", "/config/interface/gpon{1 1 1}/onu{1}/ip-host",
                     "validate_onu_gateway_ip begin"));
  EXPECT_TRUE(traces("onu_ge", kOnuList, "validate_onu_gem_check begin"));
  EXPECT_TRUE(traces("tr069_profile_", "/config/profile/gpon/tr069-acs-profile{tr}",
                     "tr069_profile_confirmation begin"));
  EXPECT_TRUE(traces("s", kServicePorts, "validate_sp_gem_check begin"));
  EXPECT_TRUE(traces("rg_prof", kRgProfile, "rg_profile_confirmation begin"));
}

TEST_F(Dispatch, TheRequestVlanReachesTheMatchCheckNotTheLimit) {
  TraceCapture trace(TraceLevel::kFlow);
  EXPECT_EQ(request("vlan", kMapping).text,
            "It's not possible to configure two or more vlan rules with the same match.");
  EXPECT_FALSE(trace.has("validate_vlan_limit"));
}

TEST_F(Dispatch, ALongerNameReachesNoValidatorAndIsAccepted) {
  for (const char* name :
       {"sp_gem_check_x", "onu_bw_check ", "Onu_bw_check", "n", "nothing of the kind", "%s%n"}) {
    TraceCapture trace(TraceLevel::kDetail);
    const Answer answer = request(name, kServicePorts);
    EXPECT_EQ(answer.result, Verdict::kOk) << name;
    EXPECT_EQ(answer.text, "") << name;
    EXPECT_TRUE(trace.records().empty()) << name << ": " << trace.records().front();
  }
}

TEST_F(Dispatch, TheValidatorsResultAndTextAreTheAnswer) {
  const std::string change =
      element("service-port", element("id", "1") + element("admin-enabled", "true"));
  const Answer answer = request("config_modified_check", kServicePorts, change);
  EXPECT_EQ(answer.result, Verdict::kError);
  EXPECT_EQ(answer.text, "Changing already committed service port is not allowed.");

  running(one_of_each() + gpon_link(1, onu(1, uses_line("li"))));
  const Answer warning =
      request("line_confirmation_warning", "/config/profile/gpon/line-profile{li}");
  EXPECT_EQ(warning.result, Verdict::kWarning);
}

TEST_F(Dispatch, AMissingSocketIsTheValidatorsToNotice) {
  const std::string change =
      element("service-port", element("id", "1") + element("admin-enabled", "true"));
  fail_call(PlatformCall::qzconfd_maapi_socket_get);
  // Without a socket the changes cannot be walked, and this validator accepts then.
  EXPECT_EQ(request("config_modified_check", kServicePorts, change).result, Verdict::kOk);
}

TEST_F(Dispatch, AnExceptionOfAnyTypeBecomesAnError) {
  struct NoStandardException {};
  const std::array<std::function<void()>, 3> throws{
      [] { throw std::out_of_range("a test"); },
      [] { throw NoStandardException(); },
      [] { throw 1; },
  };
  for (const auto& throw_one : throws) {
    set_call_hook([&throw_one](PlatformCall call) {
      if (call == PlatformCall::maapi_keypath_diff_iterate) {
        throw_one();
      }
      return true;
    });
    const Answer answer = request("config_modified_check", kServicePorts);
    EXPECT_EQ(answer.result, Verdict::kError);
    EXPECT_EQ(answer.text, "");
  }
}

TEST(ValidationPoint, HasItsName) {
  std::array<char, 64> name{};
  EXPECT_EQ(get_validation_point(name.data(), static_cast<int>(name.size())), 0);
  EXPECT_STREQ(name.data(), "gpon_validation_check");
}

TEST(ValidationPoint, IsCutToTheBuffer) {
  std::array<char, 12> name{};
  name.fill('x');
  EXPECT_EQ(get_validation_point(name.data(), 10), 0);
  EXPECT_STREQ(name.data(), "gpon_vali");
  EXPECT_EQ(name[10], 'x');

  name.fill('x');
  EXPECT_EQ(get_validation_point(name.data(), 1), 0);
  EXPECT_STREQ(name.data(), "");

  name.fill('x');
  EXPECT_EQ(get_validation_point(name.data(), 0), 0);
  EXPECT_EQ(name[0], 'x');
  EXPECT_EQ(get_validation_point(name.data(), -1), 0);
  EXPECT_EQ(name[0], 'x');
}

TEST(Finish, LeavesTheTraceCategoryRegistered) {
  TraceCapture trace(TraceLevel::kFlow);
  get_trace_cat();
  const auto index = static_cast<std::size_t>(PlatformCall::qzmw_trace_register_category);
  const std::uint64_t before = platform_call_counts().at(index);
  EXPECT_EQ(lib_finish(), 0);
  get_trace_cat();
  EXPECT_EQ(platform_call_counts().at(index), before);
}

}  // namespace
}  // namespace tarnd::test
