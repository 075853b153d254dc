#include <gmock/gmock.h>

#include <set>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/cli/gponval_run.h"

namespace gponval::test {
namespace {

using nlohmann::json;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::IsSupersetOf;
using ::testing::Not;
using ::testing::StartsWith;

class GenerateTest : public CommandTest {
 protected:
  GenerateTest() { config("empty.xml", ""); }

  // The sizes in the order of the options below, as text.
  [[nodiscard]] Outcome generate(const std::vector<std::string>& sizes) const {
    std::vector<std::string> line = {"generate"};
    line.insert(line.end(), sizes.begin(), sizes.end());
    return gponval(line);
  }

  // Commits the card to an empty one; returns the requests that were called. Every answer must be
  // OK: a card with a warning is not valid either.
  std::set<std::string> expect_valid(const std::vector<std::string>& sizes,
                                     const std::vector<std::string>& more = {}) {
    const Outcome card = generate(sizes);
    EXPECT_EQ(card.status, 0) << card.err;
    file("generated.xml", card.out);
    std::vector<std::string> line = {"commit",        "--running", "empty.xml", "--candidate",
                                     "generated.xml", "--all",     "--format",  "json"};
    line.insert(line.end(), more.begin(), more.end());
    const Outcome run = gponval(line);
    EXPECT_EQ(run.status, 0) << run.err;
    std::set<std::string> requests;
    if (run.status == 2) return requests;
    const json report = run.json();
    EXPECT_EQ(report.at("result"), "accepted");
    for (const json& answer : report.at("answers")) {
      EXPECT_EQ(answer.at("result"), "OK") << answer;
      requests.insert(answer.at("request").get<std::string>());
    }
    return requests;
  }

  [[nodiscard]] std::size_t count(const std::string& element) const {
    const std::string text = text_of("generated.xml");
    std::size_t found = 0;
    for (auto at = text.find(element); at != std::string::npos; at = text.find(element, at + 1)) {
      ++found;
    }
    return found;
  }
};

const std::vector<std::string> kSmall = {"--links",
                                         "2",
                                         "--onus",
                                         "3",
                                         "--service-ports",
                                         "8",
                                         "--line-profiles",
                                         "4",
                                         "--bandwidth-profiles",
                                         "5",
                                         "--service-profiles",
                                         "2",
                                         "--rg-profiles",
                                         "2"};

TEST_F(GenerateTest, ASmallCardIsValid) {
  EXPECT_THAT(expect_valid(kSmall),
              IsSupersetOf({"onu_bw_check", "onu_pwd_sn_unique_check", "onu_gem_check",
                            "onu_snmp_rt_warn", "onu_gateway_ip_check", "config_modified_check",
                            "ponlink_bw_check", "vlan_limit_check", "vlan_match_check",
                            "itf_grp_validation", "rg_profile_ssid_unique_check", "sp_gem_check",
                            "service_port_global_validation", "interface_gpon_validation"}));
  EXPECT_EQ(count("<onu>\n"), 6U);
  EXPECT_EQ(count("<service-port><id>"), 8U);
  EXPECT_EQ(count("<line-profile>\n"), 4U);
}

TEST_F(GenerateTest, AFullCardIsTheDefaultAndValid) {
  expect_valid({});
  EXPECT_EQ(count("<onu>\n"), 2048U);
  EXPECT_EQ(count("<service-port><id>"), 4096U);
  EXPECT_EQ(count("<bandwidth-profile><name>"), 128U);
  EXPECT_EQ(count("<line-profile>\n"), 512U);
}

TEST_F(GenerateTest, EveryRuleAcceptsTheCard) {
  // What a new card does not call is asked for by name.
  expect_valid(kSmall);
  const std::string link = "/config/interface/gpon{1 1 1}";
  const struct {
    std::string request;
    std::string keypath;
  } cases[] = {
      {"fec_confirmation_warning", link + "/downstream-fec"},
      {"fec_confirmation_warning", link + "/upstream-fec"},
      {"rg_prof_one_shot_check", link + "/onu{1}/rg-profile"},
      {"rg_prof_one_shot_check", link + "/onu{1}/rg-override"},
      {"service_port_delete_all_warning_check", "/config/service-port"},
      {"interface_xgs_validation", "/config/interface/xgspon"},
      {"one_shot_prov_check", "/config/gpon"},
  };
  for (const auto& [request, keypath] : cases) {
    const Outcome run = gponval({"request", request, keypath, "--running", "generated.xml"});
    EXPECT_EQ(run.status, 0) << request << run.out << run.err;
  }
}

TEST_F(GenerateTest, EveryShapeOfACardIsValid) {
  const std::vector<std::vector<std::string>> shapes = {
      {"--links", "0", "--service-ports", "0"},
      {"--links", "1", "--onus", "0", "--service-ports", "0"},
      {"--links", "1", "--onus", "1", "--service-ports", "1", "--line-profiles", "1",
       "--bandwidth-profiles", "1"},
      {"--links", "0", "--xgs-links", "2", "--onus", "4", "--service-ports", "16"},
      {"--links", "2", "--xgs-links", "2", "--onus", "4", "--service-ports", "64"},
      // More service ports than GEM ports: they differ by their VLAN.
      {"--links", "1", "--onus", "2", "--gems", "1", "--service-ports", "500"},
      {"--links", "1", "--onus", "1", "--gems", "1", "--service-ports", "4094"},
      // The most ONUs that the bandwidth of a link suffices for.
      {"--links", "1", "--onus", "1967", "--service-ports", "8"},
      {"--links", "2", "--onus", "128", "--bandwidth-profiles", "2000", "--line-profiles", "700",
       "--service-ports", "4"},
      {"--links", "1", "--onus", "2", "--service-ports", "2", "--service-profiles", "0",
       "--rg-profiles", "0", "--tr069-profiles", "0", "--sip-profiles", "0", "--media-profiles",
       "0"},
  };
  for (const auto& shape : shapes) {
    SCOPED_TRACE(json(shape).dump());
    expect_valid(shape);
  }
}

TEST_F(GenerateTest, OnusFitOnlyIfTheirBandwidthDoes) {
  // Each ONU of a full link has its whole share, so a little more in one profile is too much.
  file("generated.xml", generate({"--links", "1", "--line-profiles", "1", "--bandwidth-profiles",
                                  "5", "--service-ports", "0"})
                            .out);
  const std::string more =
      "<profile><gpon><line-profile><name>line-0001</name><tcont><id>4</id>"
      "<bandwidth-profile>bw-0002</bandwidth-profile></tcont></line-profile></gpon></profile>";
  config("change.xml", more);
  const Outcome run = gponval({"commit", "--running", "generated.xml", "--change", "change.xml",
                               "--only", "ponlink_bw_check"});
  EXPECT_EQ(run.status, 1) << run.err;
  EXPECT_THAT(run.out, HasSubstr("Total bandwidth exceeds GPON interface 1/1/1 capacity"));
}

TEST_F(GenerateTest, MoreServicePortsThanACardHasNeedACardOfThatMany) {
  const std::vector<std::string> sizes = {"--links",         "2",   "--onus", "64",
                                          "--service-ports", "5000"};
  file("card.txt", "bw-check = true\nonus-per-link = 128\nmax-service-ports = 5000\n");
  expect_valid(sizes, {"--card", "card.txt"});
  const Outcome run = gponval({"commit", "--running", "empty.xml", "--candidate", "generated.xml"});
  EXPECT_EQ(run.status, 1);
  EXPECT_THAT(run.out, HasSubstr("Service-port limit exceeded: Installed 5000 of 4096 allowed"));
}

TEST_F(GenerateTest, TheSameOptionsGiveTheSameBytes) {
  const std::string first = generate(kSmall).out;
  EXPECT_THAT(first, Not(IsEmpty()));
  EXPECT_EQ(generate(kSmall).out, first);
}

/// The requests that do not answer OK when the generated card is committed to an empty one.
class FaultTest : public GenerateTest {
 protected:
  // Each kind with the requests that report it, as the command lists them.
  [[nodiscard]] std::vector<std::pair<std::string, std::set<std::string>>> kinds() const {
    std::vector<std::pair<std::string, std::set<std::string>>> all;
    std::istringstream lines(generate({"--faults", "list"}).out);
    for (std::string line; std::getline(lines, line);) {
      std::istringstream words(line);
      std::string name;
      std::string requests;
      words >> name >> requests;
      all.emplace_back(name, split(requests));
    }
    return all;
  }

  [[nodiscard]] std::set<std::string> findings(const std::vector<std::string>& options) const {
    const Outcome card = generate(options);
    EXPECT_EQ(card.status, 0) << card.err;
    file("generated.xml", card.out);
    const Outcome run = gponval({"commit", "--running", "empty.xml", "--candidate", "generated.xml",
                                 "--all", "--confirm", "yes", "--format", "json"});
    EXPECT_NE(run.status, 2) << run.err;
    std::set<std::string> requests;
    if (run.status == 2) return requests;
    const json report = run.json();
    for (const json& answer : report.at("answers")) {
      if (answer.at("result") != "OK") requests.insert(answer.at("request").get<std::string>());
    }
    return requests;
  }

 private:
  static std::set<std::string> split(const std::string& list) {
    std::set<std::string> parts;
    std::istringstream all(list);
    for (std::string part; std::getline(all, part, ',');) parts.insert(part);
    return parts;
  }
};

TEST_F(FaultTest, EachFaultIsFoundByItsRequestsAndNothingElseIs) {
  EXPECT_GT(kinds().size(), 20U);
  for (const auto& [name, requests] : kinds()) {
    EXPECT_EQ(findings({"--size", "town", "--faults", name}), requests) << name;
    EXPECT_EQ(findings({"--size", "town", "--seed", "11", "--faults", name}), requests) << name;
  }
}

TEST_F(FaultTest, AllFaultsAreFoundTogether) {
  std::set<std::string> all;
  for (const auto& [name, requests] : kinds()) all.insert(requests.begin(), requests.end());
  EXPECT_EQ(findings({"--size", "town", "--faults", "all"}), all);
}

TEST_F(FaultTest, TheServicePortsOfAFaultAreAmongThoseOfTheCard) {
  EXPECT_EQ(findings({"--faults", "service-port-onu,service-port-gem"}),
            std::set<std::string>{"sp_gem_check"});
  EXPECT_EQ(count("<service-port><id>"), 4096U);
}

TEST_F(FaultTest, EveryRequestThatCanRejectANewCardHasAFault) {
  // The others compare with what is committed already, or with the number of links of the card.
  std::set<std::string> requests = {
      "config_modified_check",
      "fec_confirmation_warning",
      "interface_gpon_validation",
      "interface_xgs_validation",
      "line_confirmation_warning",
      "onu_gem_check",
      "rg_profile_confirmation_warning",
      "service_port_delete_all_warning_check",
      "sip_agent_profile_confirmation_warning",
      "tr069_profile_confirmation_warning",
      "voip_media_profile_confirmation_warning",
  };
  for (const auto& [name, of_kind] : kinds()) requests.insert(of_kind.begin(), of_kind.end());
  std::set<std::string> in_model;
  const json points = gponval({"points", "--format", "json"}).json();
  for (const json& point : points.at("points")) {
    in_model.insert(point.at("request").get<std::string>());
  }
  EXPECT_EQ(requests, in_model);
}

TEST_F(FaultTest, AnUnknownFaultIsWrongUse) {
  const struct {
    std::string faults;
    const char* told;
  } cases[] = {
      {"ssids",
       "gponval: --faults: there is no fault 'ssids', did you mean 'ssid'? "
       "('--faults list' prints all)\n"},
      {"ssid,", "gponval: --faults: there is no fault '' ('--faults list' prints all)\n"},
      {"", "gponval: --faults: there is no fault '' ('--faults list' prints all)\n"},
      {"all,ssid", "gponval: --faults: there is no fault 'all' ('--faults list' prints all)\n"},
  };
  for (const auto& [faults, told] : cases) {
    const Outcome run = generate({"--faults=" + faults});
    EXPECT_EQ(run.status, 2) << faults;
    EXPECT_EQ(run.out, "") << faults;
    EXPECT_EQ(run.err, told) << faults;
  }
}

TEST_F(GenerateTest, EverySeedMakesAnotherValidCard) {
  std::set<std::string> cards;
  constexpr int kSeeds = 12;
  for (int seed = 0; seed < kSeeds; ++seed) {
    SCOPED_TRACE(seed);
    expect_valid({"--size", "town", "--seed", std::to_string(seed)});
    cards.insert(text_of("generated.xml"));
    EXPECT_EQ(count("<gpon>\n      <chassis-id>"), 2U);
    EXPECT_GE(count("<onu>\n"), 4U * 8U);
    EXPECT_LE(count("<onu>\n"), 4U * 16U);
  }
  EXPECT_EQ(cards.size(), std::size_t{kSeeds});
  expect_valid({"--seed", "4294967295"});
}

TEST_F(GenerateTest, TheSameSeedMakesTheSameBytes) {
  const std::vector<std::string> options = {"--size", "town", "--seed", "7"};
  EXPECT_EQ(generate(options).out, generate(options).out);
}

TEST_F(GenerateTest, ATownIsSmallAndMayHaveOtherNumbers) {
  expect_valid({"--onus", "3", "--size", "town"});
  EXPECT_EQ(count("<onu>\n"), 4U * 3U);
  EXPECT_EQ(count("<service-port><id>"), 64U);
}

TEST_F(GenerateTest, NoPasswordIsInTheCard) {
  EXPECT_THAT(generate(kSmall).out, Not(HasSubstr("<password>")));
}

TEST_F(GenerateTest, ASizeOfWhichNoValidCardCanBeMadeIsRefused) {
  const struct {
    std::vector<std::string> sizes;
    const char* told;
  } cases[] = {
      {{"--line-profiles", "0"}, "ONUs need a line profile"},
      {{"--bandwidth-profiles", "0"}, "line profiles need a bandwidth profile"},
      {{"--links", "0"}, "service ports need ONUs"},
      {{"--onus", "0"}, "service ports need ONUs"},
      {{"--onus", "1968"}, "suffices for 0 to 1967 ONUs, not for 1968"},
      {{"--gems", "0"}, "0 service ports only"},
      {{"--links", "1", "--onus", "1", "--gems", "1", "--service-ports", "4095"},
       "4094 service ports only"},
      {{"--links", "4000000000", "--xgs-links", "4000000000"}, "4294967295 of each at most"},
      {{"--links", "-1"}, "--links: '-1' is no number from 0 to 4294967295"},
      {{"--links", "4294967296"}, "--links: '4294967296' is no number from 0 to 4294967295"},
      {{"--links", "1.5"}, "--links: '1.5' is no number"},
      {{"--links", "0x10"}, "--links: '0x10' is no number"},
      {{"--links="}, "--links: '' is no number"},
      {{"--seed", "-1"}, "--seed: '-1' is no number from 0 to 4294967295"},
      {{"--size", "city"}, "--size: "},
      {{"--onus", "0", "--service-ports", "0", "--faults", "service-ports"},
       "service ports need ONUs"},
  };
  for (const auto& [sizes, told] : cases) {
    const Outcome run = generate(sizes);
    EXPECT_EQ(run.status, 2) << told;
    EXPECT_THAT(run.out, IsEmpty()) << told;
    EXPECT_THAT(run.err, StartsWith("gponval: ")) << told;
    EXPECT_THAT(run.err, HasSubstr(told));
    EXPECT_EQ(run.err.find('\n'), run.err.size() - 1) << told;
  }
}

}  // namespace
}  // namespace gponval::test
