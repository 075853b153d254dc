// Names with the size of their buffers, and names with characters that have a meaning in a path, a
// format or an XPath.

#include <gmock/gmock.h>

#include <algorithm>
#include <map>
#include <set>

#include "gpon_card_valid.h"
#include "standalone/confd/model.h"
#include "standalone/middleware/trace.h"
#include "tests/catalogue/expected_trace.h"
#include "tests/support/model.h"
#include "tests/support/own_model.h"

namespace tarnd::test {
namespace {

// ---- A model that allows any name of profiles and connections

const store::Schema& loose_schema() {
  // The numbers of names are read from it later.
  static const OwnModel loose =
      OwnModel::loosened({"profile-name", "rg-profile-name", "connection-name"});
  static const store::Schema schema(loose.folder());
  return schema;
}

/// A card with the loose model. A content is the inside of the top-level `config`.
class LooseNames : public testing::Test {
 protected:
  LooseNames() : datastore_(loose_schema()) {
    insert_card(CardDescription::standard());
    confd::load_model(loose_schema());
    lib_init();
  }

  void running(const std::string& content) {
    datastore_.load(config(""), store::Format::kXml);
    store::Transaction transaction(datastore_);
    edit(transaction, content);
    transaction.commit();
  }

  /// The answer to a request on the keypath after the change. With the trace it must be the same;
  /// `records` then has the records.
  Outcome ask(const std::string& request, const std::string& keypath, const std::string& change) {
    store::Transaction transaction(datastore_);
    edit(transaction, change);
    ValidationSession session(transaction);
    Outcome outcome = dispatch(session, request, keypath);
    EXPECT_EQ(session.open_resources().configuration_sessions, 0);
    EXPECT_EQ(session.open_resources().queries, 0);

    records_ = traced(TraceLevel::kDetail,
                      [&] { EXPECT_EQ(dispatch(session, request, keypath), outcome) << request; });
    return outcome;
  }

  [[nodiscard]] const Records& records() const { return records_; }

 private:
  static void edit(store::Transaction& transaction, const std::string& content) {
    transaction.edit(config(content), store::Format::kXml);
    transaction.prepare();
  }

  store::Datastore datastore_;
  Records records_;
};

// ---- All names of a card

using AnswersByName = std::map<std::string, Outcome>;

/// Every name filled up to this length.
Naming of_length(std::size_t length) {
  return [length](const std::string& plain) {
    return plain + std::string(length - plain.size(), 'n');
  };
}

/// Every name with these characters after its first one.
Naming with(const std::string& characters) {
  return [characters](const std::string& plain) {
    return plain.substr(0, 1) + characters + plain.substr(1);
  };
}

/// Every name after these characters.
Naming behind(const std::string& characters) {
  return [characters](const std::string& plain) { return characters + plain; };
}

/// The names of the card and of its changes; a name is after those that begin with it.
std::vector<std::string> plain_names() {
  std::set<std::string> names;
  const Naming collect = [&names](const std::string& plain) {
    names.insert(plain);
    return plain;
  };
  whole_card(Names(collect));
  scenarios(Names(collect));
  return {names.rbegin(), names.rend()};
}

void replace_all(std::string& text, const std::string& what, const std::string& by) {
  for (std::size_t at = text.find(what); at != std::string::npos;
       at = text.find(what, at + by.size())) {
    text.replace(at, what.size(), by);
  }
}

/// The records with the plain names again, in an order that does not depend on names.
Records plainly(Records records, const Naming& naming) {
  static const std::vector<std::string> names = plain_names();
  for (std::string& record : records) {
    for (const std::string& plain : names) {
      const std::string name = naming(plain);
      replace_all(record, "{" + store::quote_key(name) + "}", "{" + plain + "}");
      replace_all(record, name, plain);
    }
  }
  std::sort(records.begin(), records.end());
  return records;
}

AnswersByName same_for_confirmations(const Outcome& outcome) {
  AnswersByName answers;
  for (const char* request :
       {"line_confirmation_warning", "rg_profile_confirmation_warning",
        "tr069_profile_confirmation_warning", "sip_agent_profile_confirmation_warning",
        "voip_media_profile_confirmation_warning"}) {
    answers.emplace(request, outcome);
  }
  return answers;
}

const Outcome kAccepted{CONFD_OK, ""};
const Outcome kUnreadable{CONFD_ERR, "Failed accessing confd data."};
const Outcome kNoGemOfNewPort{CONFD_ERR, "Service-port [4] gem [1] was not configured to onu [1]"};
const Outcome kNoGemOfOldPort{CONFD_ERR, "Service-port [1] gem [1] was not configured to onu [1]"};

/// Names, and the differences that they make.
struct HostileNames {
  std::string title;
  Naming naming;
  AnswersByName different{};
  /// The scenarios with the same answer that read something else, so that their records differ.
  std::set<std::string> read_otherwise{};
  /// The scenarios that end the process.
  std::set<std::string> ending{};
};

void PrintTo(const HostileNames& names, std::ostream* out) {
  *out << names.title;
}

std::vector<HostileNames> all_names() {
  // Cut to 48 characters, the name of a connection is another one, which has no interface grouping.
  // A longer line profile of an ONU is not read at all.
  const std::set<std::string> cut_at_48{"itf_grp_validation", "onu_gem_check"};
  // The keypath of the WLANs has the same room.
  std::set<std::string> cut_at_8191 = cut_at_48;
  cut_at_8191.insert("rg_profile_ssid_unique_check");
  // Cut to 8191 characters, a name is another one: this profile is not committed, this line profile
  // has no TCONT and no GEM port.
  const std::set<std::string> bandwidth{"onu_bw_check", "ponlink_bw_check"};
  std::set<std::string> cut = cut_at_8191;
  cut.insert(bandwidth.begin(), bandwidth.end());
  AnswersByName of_cut = same_for_confirmations(kAccepted);
  of_cut.emplace("sp_gem_check", kNoGemOfNewPort);
  // A blank separates two keys, and no entry has two: neither a grouping nor a TCONT is found.
  AnswersByName of_parted = of_cut;
  of_parted.emplace("onu_gem_check", kNoGemOfOldPort);
  std::set<std::string> parted = bandwidth;
  parted.insert("itf_grp_validation");
  // With an invalid path it is not known whether a profile is committed. If a line profile or
  // connection cannot be looked up, no GEM port counts as missing, and there is no grouping; but
  // the size of its TCONTs is not known either, which is a fault.
  const AnswersByName no_path = same_for_confirmations(kUnreadable);
  const std::set<std::string> ungrouped{"itf_grp_validation"};
  return {
      {"Of48Characters", of_length(48)},
      {"Of49Characters", of_length(49), {}, cut_at_48},
      {"Of64Characters", of_length(64), {}, cut_at_48},
      {"Of255Characters", of_length(255), {}, cut_at_48},
      {"Of256Characters", of_length(256), {}, cut_at_48},
      {"Of1023Characters", of_length(1023), {}, cut_at_48},
      {"Of1024Characters", of_length(1024), {}, cut_at_48},
      {"Of8191Characters", of_length(8191), {}, cut_at_8191},
      {"Of8192Characters", of_length(8192), of_cut, cut},
      {"Of9000Characters", of_length(9000), of_cut, cut},
      {"WithPercentSigns", with("%s%n%d%x%h%*x%")},
      {"WithOtherScripts", with("\u00e9\u65e5\u672c")},
      {"WithSlashes", with("/../")},
      {"WithBackslashes", with(R"(\"\)")},
      {"WithMarkup", with("&<>")},
      {"WithDollarSigns", with("$")},
      {"WithBlanks", with(" "), of_parted, parted},
      // Outside the quotes of the expression, or of the path's key.
      {"WithSingleQuotes", with("'"), same_for_confirmations(kUnreadable)},
      // A key ends at a blank or a closing brace; all other characters are part of it.
      {"WithDoubleQuotes", with("\"")},
      {"WithOpeningBraces", with("{")},
      {"BehindOpeningBraces", behind("{")},
      // After the closing brace there is no slash, after an unfinished quotation no brace.
      {"WithClosingBraces", with("}"), no_path, ungrouped, bandwidth},
      {"WithBraces", with("{}"), no_path, ungrouped, bandwidth},
      {"WithBracesReversed", with("}{"), no_path, ungrouped, bandwidth},
      {"BehindClosingBraces", behind("}"), no_path, ungrouped, bandwidth},
      {"BehindDoubleQuotes", behind("\""), no_path, ungrouped, bandwidth},
  };
}

class NamesOfACard : public LooseNames, public testing::WithParamInterface<HostileNames> {
 protected:
  struct Answered {
    Outcome outcome;
    Records records;
  };

  /// All scenarios of the card with such names that do not end the process.
  std::map<std::string, Answered> ask_all(const Naming& naming) {
    const Names n(naming);
    std::map<std::string, Answered> answers;
    running(whole_card(n));
    for (const Scenario& one : scenarios(n)) {
      if (GetParam().ending.contains(one.name)) continue;
      const Outcome outcome = ask(one.request, one.keypath, one.change);
      answers.emplace(one.name, Answered{outcome, records()});
    }
    return answers;
  }
};

TEST_P(NamesOfACard, GetTheAnswersOfPlainOnes) {
  const HostileNames& names = GetParam();
  const std::map<std::string, Answered> plain = ask_all(plain_name);
  for (const auto& [asked, answered] : ask_all(names.naming)) {
    const Outcome& of_plain = plain.at(asked).outcome;
    const auto different = names.different.find(asked);
    if (different == names.different.end()) {
      EXPECT_EQ(answered.outcome, of_plain) << asked;
    } else {
      EXPECT_EQ(answered.outcome, different->second) << asked;
      EXPECT_NE(answered.outcome, of_plain) << asked;
    }
  }
}

// Complete and unchanged: no record uses a name as its format or has too little room for it.
TEST_P(NamesOfACard, AreInTheRecordsOfPlainOnes) {
  const HostileNames& names = GetParam();
  const std::map<std::string, Answered> plain = ask_all(plain_name);
  for (const auto& [asked, answered] : ask_all(names.naming)) {
    if (names.different.contains(asked)) continue;
    SCOPED_TRACE(asked);
    const Records records = plainly(answered.records, names.naming);
    const Records of_plain = plainly(plain.at(asked).records, names.naming);
    if (names.read_otherwise.contains(asked)) {
      EXPECT_NE(records, of_plain);
    } else {
      expect_records(records, of_plain);
    }
  }
}

std::string title_of(const testing::TestParamInfo<HostileNames>& info) {
  return info.param.title;
}

INSTANTIATE_TEST_SUITE_P(Are, NamesOfACard, testing::ValuesIn(all_names()), title_of);

using NamesOfACardDeathTest = NamesOfACard;

TEST_P(NamesOfACardDeathTest, MakePathsToTcontsOfNoKnownSize) {
  const Names n(GetParam().naming);
  running(whole_card(n));
  for (const Scenario& one : scenarios(n)) {
    if (!GetParam().ending.contains(one.name)) continue;
    EXPECT_EXIT(ask(one.request, one.keypath, one.change), testing::ExitedWithCode(1),
                "Fault 1 raised by ConfdGetObjsItf at src/validation/confd_get_objects_itf\\.cpp:.*"
                "object size \\(0\\) differs from expected \\(2\\)\\.\n$")
        << one.name;
  }
}

std::vector<HostileNames> fatal_names() {
  std::vector<HostileNames> names = all_names();
  std::erase_if(names, [](const HostileNames& some) { return some.ending.empty(); });
  return names;
}

INSTANTIATE_TEST_SUITE_P(Are, NamesOfACardDeathTest, testing::ValuesIn(fatal_names()), title_of);

// ---- One name at the size of its buffer

constexpr const char* kProfiles = "/config/profile/gpon/";

std::string filled(std::size_t length) {
  std::string name(length, 'n');
  return name;
}

std::string keyed(const std::string& list, const std::string& name) {
  return kProfiles + list + "{" + store::quote_key(name) + "}";
}

std::string grouping(const std::string& kind, const std::string& name, const std::string& content) {
  return element("wan-" + kind + "-connection",
                 element("name", name) + element("itf-grouping", content));
}

std::string port(const std::string& name) {
  return element("ports", element("port", name));
}

const Outcome kPortUsedTwice{
    CONFD_ERR, "Port eth1 untagged cannot be used in more than one interface grouping", 2};
const Outcome kSameNetwork{
    CONFD_ERR, "Network 10.0.0.1/24 from WAN b conflicts with network 10.0.0.1/24 from WAN a", 1};

TEST_F(LooseNames, TheKeypathOfAGatewayProfileIsCutAt255Characters) {
  const std::string network = element("ipv4-address", "10.0.0.1/24");
  struct Row {
    int length;
    std::string grouped;
    Outcome outcome;
  };
  // "/config/profile/gpon/rg-profile{" and "}" leave 222 for the name. The path is printed twice,
  // for the ports and for the networks.
  const std::vector<Row> rows{
      {222, port("eth1"), kPortUsedTwice}, {222, network, kSameNetwork},
      {223, port("eth1"), kAccepted},      {223, network, kAccepted},
      {9000, port("eth1"), kAccepted},     {9000, network, kAccepted},
  };
  for (const Row& row : rows) {
    const std::string name = filled(static_cast<std::size_t>(row.length));
    const std::string groupings =
        grouping("ip", "a", row.grouped) + grouping("ip", "b", row.grouped);
    running("");
    EXPECT_EQ(ask("itf_grp_validation", keyed("rg-profile", name), rg_profile(name, groupings)),
              row.outcome)
        << row.length << row.grouped;
  }
}

TEST_F(LooseNames, TheNameOfAConnectionIsCutAt48Characters) {
  for (const auto& [length, outcome] :
       {std::pair(48, kPortUsedTwice), std::pair(49, kAccepted), std::pair(9000, kAccepted)}) {
    running("");
    EXPECT_EQ(ask("itf_grp_validation", keyed("rg-profile", "rg"),
                  rg_profile("rg", grouping("pppoe", filled(static_cast<std::size_t>(length)),
                                            port("eth1")) +
                                       grouping("ip", "b", port("eth1")))),
              outcome)
        << length;
  }
}

TEST_F(LooseNames, TheListOfWlansIsCutAt8191Characters) {
  const Outcome repeated{CONFD_ERR,
                         "There are two or more WLANs with the same SSID. SSID must be unique "
                         "within the RG profile.",
                         1};
  std::string wlans;
  for (const char* id : {"1", "2"}) {
    wlans += element("wlan", element("id", id) + element("ssid", element("custom", "Home")));
  }
  // "/config/profile/gpon/rg-profile{" and "}/wlan" leave 8153 for the name.
  for (const auto& [length, outcome] : {std::pair(8153, repeated), std::pair(8154, kAccepted)}) {
    const std::string name = filled(static_cast<std::size_t>(length));
    running("");
    EXPECT_EQ(ask("rg_profile_ssid_unique_check", keyed("rg-profile", name) + "/wlan",
                  rg_profile(name, wlans)),
              outcome)
        << length;
  }
}

TEST_F(LooseNames, ALineProfileIsFoundByAsMuchOfItsNameAsIsRead) {
  // The line profile's name is one character shorter than the ONU's reference; after the cut they
  // may be the same.
  const Outcome missing{CONFD_ERR, "Line profile " + filled(8191) + " doesn't not exist."};
  for (const auto& [length, outcome] :
       {std::pair(8190, missing), std::pair(8191, kAccepted), std::pair(9000, kAccepted)}) {
    const std::string name = filled(static_cast<std::size_t>(length));
    running(line_profile(name, "") + gpon_link(1, onu(1, uses_line(name + "n"))));
    EXPECT_EQ(ask("onu_bw_check", "/config/interface/gpon{1 1 1}/onu", ""), outcome) << length;
  }
}

TEST_F(LooseNames, TheTextsHoldNamesAsTheyAre) {
  const std::string name = "50%s%n{/'\"\u00e9";
  const std::string address = element("ipv4-address", "10.0.0.1/24");
  running("");
  EXPECT_EQ(ask("itf_grp_validation", keyed("rg-profile", "rg"),
                rg_profile("rg", grouping("ip", "50%s%n'\u00e9", address) +
                                     grouping("bridge", "%d", address))),
            (Outcome{CONFD_ERR,
                     "Network 10.0.0.1/24 from WAN %d conflicts with network 10.0.0.1/24 from WAN "
                     "50%s%n'\u00e9",
                     1}));
  running(gpon_link(1, onu(1, uses_line(name))));
  EXPECT_EQ(ask("onu_bw_check", "/config/interface/gpon{1 1 1}/onu", ""),
            (Outcome{CONFD_ERR, "Line profile " + name + " doesn't not exist."}));
}

TEST_F(LooseNames, TheRecordsHoldAsMuchOfANameAsIsRead) {
  using testing::Contains;
  const std::string name = filled(9000);
  running(line_profile(name, ""));
  ask("ponlink_bw_check", "/config/profile/gpon/line-profile", "");
  EXPECT_THAT(
      records(),
      Contains(Source("gpon_bw_limit").detail("loadAllLines", "Loading line " + filled(8191))));
  running("");
  ask("itf_grp_validation", keyed("rg-profile", "g" + name),
      rg_profile("g" + name, grouping("ip", name, port("eth1"))));
  const Source groupings("gpon_itf_grp_validation");
  EXPECT_THAT(records(),
              Contains(groupings.detail("validate_itf_grp_ports",
                                        "Took # usecs to validate the Interface Groupings Ports "
                                        "from RG-profile g" +
                                            filled(47))));
  ask("itf_grp_validation", keyed("rg-profile", "rg"),
      rg_profile("rg", grouping("ip", name, port("eth1"))));
  EXPECT_THAT(records(), Contains(groupings.detail("check_port_vlan",
                                                   "Interface Grouping not created for WAN " +
                                                       filled(48) + ". Skipping validation.")));
}

using LooseNamesDeathTest = LooseNames;

TEST_F(LooseNamesDeathTest, ABraceInALineProfilesNameMakesAPathThatTheModelDoesNotHave) {
  running(line_profile("a}b", ""));
  EXPECT_EXIT(ask("ponlink_bw_check", "/config/profile/gpon/line-profile", ""),
              testing::ExitedWithCode(1),
              "Fault 1 raised by ConfdGetObjsItf at src/validation/confd_get_objects_itf\\.cpp:.*"
              "\\[/config/profile/gpon/line-profile\\{a\\}b\\}/tcont\\] object size \\(0\\) "
              "differs from expected \\(2\\)\\.");
}

TEST_F(LooseNamesDeathTest, TheFaultsTextIsCutAt349Characters) {
  const std::string name = "}" + filled(9000);
  running(line_profile(name, ""));
  EXPECT_EXIT(ask("ponlink_bw_check", "/config/profile/gpon/line-profile", ""),
              testing::ExitedWithCode(1), "\\[/config/profile/gpon/line-profile\\{\\}n{313}\n$");
}

// ---- Texts for which the model allows anything

class HostileTexts : public CardFixture {
 protected:
  Outcome ask(const std::string& request, const std::string& keypath,
              const std::string& change = "") {
    return dispatch(open(change), request, keypath);
  }
};

constexpr const char* kOnus = "/config/interface/gpon{1 1 1}/onu";

std::string repeated_serials(const std::string& serial) {
  return "ONU serial number must be unique and as shown on the product label.\n"
         " Repeated serial numbers:\n"
         "interface gpon 1 onu 1 serial-number: [" +
         serial + "]\ninterface gpon 1 onu 2 serial-number: [" + serial + "]\n";
}

TEST_F(HostileTexts, CredentialsAreComparedUpTo8191Characters) {
  struct Row {
    std::string serial;
    Outcome outcome;
  };
  const std::string longest = "ZQRT" + std::string(8187, 'A');
  const std::vector<Row> rows{
      {"",
       {CONFD_ERR,
        "ONU serial number must be unique and as shown on the product label.\n"
        " Repeated serial numbers:\n"
        " serial-number: []\n"
        "interface gpon 1 onu 1 serial-number: []\n"
        "interface gpon 1 onu 2 serial-number: []\n"}},
      {"abc", {CONFD_ERR, repeated_serials("abc")}},
      {"abcde", {CONFD_ERR, repeated_serials("abcdE")}},
      {"%s%n%d {}'/", {CONFD_ERR, repeated_serials("%s%n%D {}'/")}},
      {"ZQRT\u00e9\u65e5", {CONFD_ERR, repeated_serials("ZQRT\u00e9\u65e5")}},
      {longest, {CONFD_ERR, repeated_serials(longest)}},
      {longest + "A", kAccepted},
  };
  for (const Row& row : rows) {
    running(gpon_link(1, onu(1, serial_number(row.serial)) + onu(2, serial_number(row.serial))));
    EXPECT_EQ(ask("onu_pwd_sn_unique_check", kOnus), row.outcome) << row.serial;
  }
}

TEST_F(HostileTexts, LineProfilesOfAnOnuAreComparedUpTo48Characters) {
  struct Row {
    std::string before;
    std::string after;
    bool changed;
  };
  const std::vector<Row> rows{
      {filled(47) + "a", filled(47) + "b", true},
      {filled(48) + "a", filled(48) + "b", false},
      {filled(48), filled(49), true},
      {filled(8191), filled(9000), false},
      {"a", "a b", true},
      {"%s", "%d", true},
  };
  const Outcome no_gem{CONFD_ERR, "Service-port [1] gem [7] was not configured to onu [1]"};
  for (const Row& row : rows) {
    running(gpon_link(1, onu(1, uses_line(row.before))) + service_port(1, "gpon", "1/1/1", 1, 7));
    EXPECT_EQ(ask("onu_gem_check", kOnus, gpon_link(1, onu(1, uses_line(row.after)))),
              row.changed ? no_gem : kAccepted)
        << row.before.substr(0, 60) << " " << row.after.substr(0, 60);
  }
}

TEST_F(HostileTexts, InterfaceNamesOfServicePorts) {
  // A name with unmatched braces makes paths that cannot be looked up: the ONU is not rejected, and
  // without its line profile there is no GEM port.
  const Outcome no_gem{CONFD_ERR, "Service-port [1] gem [7] was not configured to onu [2]"};
  const Outcome conflict{CONFD_ERR, "Service-port 1 and 2 have conflicting matches."};
  for (const std::string& name :
       {std::string(), std::string("1"), std::string("1/1/1/1"), std::string("}"), std::string("{"),
        std::string("1 1 1}/onu{2}/snmp"), std::string("\""), std::string("%s%n%d%x"),
        std::string("\u65e5\u672c"), filled(48), filled(49), filled(255), filled(8191),
        filled(9000)}) {
    running("");
    EXPECT_EQ(ask("sp_gem_check", "/config/service-port", service_port(1, "gpon", name, 2, 7)),
              no_gem)
        << name.substr(0, 60);
    EXPECT_EQ(ask("service_port_global_validation", "/config/service-port",
                  service_port(1, "xgspon", name, 2, 7) + service_port(2, "xgspon", name, 2, 7)),
              conflict)
        << name.substr(0, 60);
    running(gpon_link(1, onu(1)) + service_port(1, "gpon", name, 1, 7));
    EXPECT_EQ(ask("onu_gem_check", kOnus, gpon_link(1, onu(1, "", "delete"))), kAccepted)
        << name.substr(0, 60);
  }
}

TEST_F(HostileTexts, AnInterfaceNameIsShownWithSlashesForBlanks) {
  running("");
  // The GEM port's message would replace the ONU's.
  constexpr int kLookForGem = 3;
  for (const std::string& name : {std::string("1 1/%s"), std::string("1/1 %s")}) {
    fail_call(PlatformCall::maapi_exists, kLookForGem);
    EXPECT_EQ(ask("sp_gem_check", "/config/service-port", service_port(1, "gpon", name, 2, 7)),
              (Outcome{CONFD_ERR,
                       "Service-port [1] ONU [2] was not configured on interface gpon [1/1/%s]"}));
  }
}

TEST_F(HostileTexts, AQuotedNameCountsTheUsersOfAnExpression) {
  // The name is inserted into the expression as it is, and with these quotes the condition is true
  // for every ONU.
  const std::string name = "x'or''='";
  running(line_profile(name, "") + gpon_link(1, onu(1, uses_line("other"))));
  EXPECT_EQ(
      ask("line_confirmation_warning", keyed("line-profile", name), line_profile(name, gem(1)))
          .result,
      CONFD_VALIDATION_WARN);
}

TEST_F(HostileTexts, PasswordsOfProfiles) {
  const Outcome invalid{CONFD_ERR, "Invalid password length/size"};
  struct Row {
    std::string clear;
    Outcome outcome;
  };
  const std::vector<Row> rows{
      {"", kAccepted},
      {"%s%n%d%x%h {}'/", kAccepted},
      // Length in bytes: eight characters of three each.
      {"\u65e5\u65e5\u65e5\u65e5\u65e5\u65e5\u65e5\u65e5", kAccepted},
      {"\u65e5\u65e5\u65e5\u65e5\u65e5\u65e5\u65e5\u65e5\u00e9", invalid},
      {filled(25), kAccepted},
      {filled(26), invalid},
      {filled(255), invalid},
      {filled(8191), invalid},
      {filled(100000), invalid},
  };
  for (const Row& row : rows) {
    running(profiles(element("tr069-acs-profile", element("name", "acs"))));
    EXPECT_EQ(
        ask("tr069_profile_password_length_check", keyed("tr069-acs-profile", "acs") + "/password",
            profiles(element("tr069-acs-profile",
                             element("name", "acs") + element("password", "$0$" + row.clear)))),
        row.outcome)
        << row.clear.size();
  }
}

TEST_F(HostileTexts, RequestNames) {
  running("");
  confd_hkeypath_t path{};
  for (const std::string& name : {std::string("%s%n"), std::string("{}"), filled(48), filled(8192),
                                  std::string("\u65e5\u672c"), std::string(" onu_bw_check")}) {
    EXPECT_EQ(dispatch(open(), name, &path, nullptr), kAccepted) << name.substr(0, 60);
  }
}

}  // namespace
}  // namespace tarnd::test
