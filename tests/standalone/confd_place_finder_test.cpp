// The places that PlaceFinder finds must be those that find_place() finds for the parsed path,
// whatever was asked before and however the tree has changed since.

#include "standalone/confd/place_finder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "standalone/store/transaction.h"
#include "tests/support/model.h"

namespace tarnd::confd {
namespace {

using store::Datastore;
using store::Format;
using store::Transaction;
using test::config;

constexpr const char* kConfiguration = R"(
  <interface>
    <gpon>
      <chassis-id>1</chassis-id><slot-id>1</slot-id><port-id>3</port-id>
      <onu><id>7</id><description>a</description>
        <auth-method><serial-number>ZQRT00000001</serial-number></auth-method></onu>
      <onu><id>8</id><rg-profile>home</rg-profile></onu>
    </gpon>
    <gpon><chassis-id>1</chassis-id><slot-id>1</slot-id><port-id>12</port-id></gpon>
  </interface>
  <profile><gpon>
    <line-profile><name>two-words</name></line-profile>
    <service-profile><name>s</name><vlan-mapping><name>m</name>
      <uni><ethernet>1</ethernet><ethernet>3</ethernet></uni></vlan-mapping></service-profile>
    <rg-profile><name>home</name><wan-ip-connection><name>internet</name>
      <itf-grouping><ports><port>eth2</port></ports></itf-grouping>
    </wan-ip-connection></rg-profile>
  </gpon></profile>
  <service-port><id>7</id><gpon><id>1/1/3</id></gpon></service-port>)";

// What find_place() answers; nothing for a text that is no path or leads through a whole list.
std::optional<Place> expected(const Datastore& datastore, const std::string& text) {
  const auto path = store::Path::parse(datastore.schema(), text, nullptr);
  if (!path.has_value()) return std::nullopt;
  const auto many = [](const store::PathStep& step) {
    return !step.keyed && (step.node->kind == store::NodeKind::kList ||
                           step.node->kind == store::NodeKind::kLeafList);
  };
  const auto& steps = path->steps();
  if (std::any_of(steps.begin(), steps.end() - 1, many)) return std::nullopt;
  return find_place(datastore, *path);
}

void expect_same(PlaceFinder& finder, const Datastore& datastore, const std::string& text) {
  const std::optional<Place> wanted = expected(datastore, text);
  const Place* found = finder.find(datastore, text);
  if (found == nullptr) {
    // Keys with a backslash are left to find_place().
    ASSERT_TRUE(!wanted.has_value() || text.find('\\') != std::string::npos) << text;
    return;
  }
  ASSERT_TRUE(wanted.has_value()) << text;
  ASSERT_EQ(found->schema, wanted->schema) << text;
  ASSERT_EQ(found->node, wanted->node) << text;
  ASSERT_EQ(found->parent, wanted->parent) << text;
  ASSERT_EQ(found->keyed, wanted->keyed) << text;
  ASSERT_EQ(found->exists, wanted->exists) << text;
}

class RandomPaths {
 public:
  explicit RandomPaths(unsigned seed) : random_(seed) {}

  int below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(random_); }
  bool one_in(int n) { return below(n) == 0; }

  std::string path() {
    std::string text = one_in(8) ? "/base:config" : "/config";
    text += pick({interface_path(), interface_path(), profile_path(), port_path()});
    if (one_in(10)) text += '/';
    if (one_in(10)) text.resize(static_cast<std::size_t>(below(static_cast<int>(text.size()))));
    if (one_in(10))
      text[static_cast<std::size_t>(below(static_cast<int>(text.size()) + 1)) %
           std::max<std::size_t>(text.size(), 1)] = pick_char();
    return text;
  }

  std::string edit() {
    const std::string id = std::to_string(7 + below(3));
    const std::string operation = pick({"merge", "remove", "replace"});
    const std::string onu = "<onu nc:operation=\"" + operation + "\"><id>" + id +
                            "</id><description>b</description></onu>";
    const std::string link = "<chassis-id>1</chassis-id><slot-id>1</slot-id><port-id>" +
                             pick({"3", "12"}) + "</port-id>";
    return config(pick(
        {"<interface><gpon>" + link + onu + "</gpon></interface>",
         "<interface><gpon nc:operation=\"remove\">" + link + "</gpon></interface>",
         "<service-port nc:operation=\"" + operation + "\"><id>" + id + "</id></service-port>"}));
  }

 private:
  std::string pick(const std::vector<std::string>& texts) {
    return texts[static_cast<std::size_t>(below(static_cast<int>(texts.size())))];
  }
  char pick_char() {
    static constexpr std::string_view kChars = "/{}\" 0a\\";
    return kChars[static_cast<std::size_t>(below(static_cast<int>(kChars.size())))];
  }

  // Keys between braces: sometimes missing, too many, none, or after a slash.
  std::string keys(const std::string& text) {
    if (one_in(10)) return pick({"", "{}", "{" + text + " 1}", "{" + text, text});
    return (one_in(8) ? "/{" : "{") + text + "}";
  }

  std::string interface_path() {
    std::string text = "/interface";
    if (one_in(10)) return text;
    text += pick({"/gpon", "/gpon", "/gpon", "/xgspon"}) +
            keys(pick({"1 1 3", "1 1 3", "1 1 12", "1 01 003", "\"1\" 1 3", "1 1 4"}));
    if (one_in(6)) return text + pick({"/upstream-fec", "/nothing"});
    text += "/onu" + keys(pick({"7", "7", "8", "9", "007", "\"7\""}));
    return text + pick({"", "/description", "/auth-method", "/auth-method/serial-number",
                        "/auth-method/password", "/rg-profile", "/snmp/real-time",
                        "/ip-host/default-gateway", "/nothing", "/description/deeper"});
  }

  std::string profile_path() {
    return "/profile/gpon" +
           pick({"/line-profile" + keys(pick({"\"two-words\"", "two", "\"tw\\o-words\""})) +
                     pick({"", "/name", "/gem"}),
                 "/service-profile" + keys("s") + "/vlan-mapping" + keys("m") + "/uni/ethernet" +
                     keys(pick({"1", "2", "03"})),
                 "/rg-profile" + keys("home") + "/wan-ip-connection" + keys("internet") +
                     "/itf-grouping/ports" + keys(pick({"eth2", "enum<1>", "enum<99>"})) +
                     pick({"", "/vlan", "/port"})});
  }

  std::string port_path() {
    return "/service-port" + keys(std::to_string(7 + below(3))) +
           pick({"", "/id", "/gpon", "/gpon/id", "/gpon/onu/id", "/xgspon/onu", "/match/vlan"});
  }

  std::mt19937 random_;
};

TEST(PlaceFinder, FindsWhatFindPlaceFinds) {
  Datastore datastore(test::model());
  datastore.load(config(kConfiguration), Format::kXml);
  RandomPaths random(1);
  PlaceFinder finder;
  for (int i = 0; i < 20'000; ++i) {
    ASSERT_NO_FATAL_FAILURE(expect_same(finder, datastore, random.path())) << i;
  }
}

TEST(PlaceFinder, ForgetsPlacesWhenTheTreeChanges) {
  Datastore datastore(test::model());
  datastore.load(config(kConfiguration), Format::kXml);
  RandomPaths random(2);
  PlaceFinder finder;
  const auto ask = [&] {
    for (int i = 0; i < 5; ++i) expect_same(finder, datastore, random.path());
  };
  for (int round = 0; round < 400 && !HasFatalFailure(); ++round) {
    SCOPED_TRACE(round);
    Transaction transaction(datastore);
    transaction.edit(random.edit(), Format::kXml);
    ask();
    transaction.edit(random.edit(), Format::kXml);
    ask();
    {
      const store::CommittedSight sight(transaction);
      ask();
    }
    ask();
    if (random.one_in(5)) {
      transaction.replace(config(kConfiguration), Format::kXml);
      ask();
    }
    if (random.one_in(3)) transaction.commit();
    transaction.discard();
    ask();
  }
}

struct TwoPaths {
  const char* name;
  const char* first;
  const char* second;
};
void PrintTo(const TwoPaths& paths, std::ostream* out) {
  *out << paths.first << " " << paths.second;
}

class PlaceFinderAfter : public testing::TestWithParam<TwoPaths> {};

TEST_P(PlaceFinderAfter, APathThatBeginsAlike) {
  Datastore datastore(test::model());
  datastore.load(config(kConfiguration), Format::kXml);
  PlaceFinder finder;
  for (const char* text : {GetParam().first, GetParam().second, GetParam().first}) {
    expect_same(finder, datastore, text);
  }
}

INSTANTIATE_TEST_SUITE_P(
    Paths, PlaceFinderAfter,
    testing::Values(
        TwoPaths{"OfAnotherEntry", "/config/interface/gpon{1 1 3}/onu{7}/description",
                 "/config/interface/gpon{1 1 3}/onu{9}/description"},
        TwoPaths{"OfTheEntryAfter", "/config/interface/gpon{1 1 3}/onu{7}/description",
                 "/config/interface/gpon{1 1 3}/onu{8}/description"},
        TwoPaths{"OfTheListItself", "/config/interface/gpon{1 1 3}/onu{7}/description",
                 "/config/interface/gpon{1 1 3}/onu"},
        TwoPaths{"ThroughTheListItself", "/config/interface/gpon{1 1 3}/onu{7}/description",
                 "/config/interface/gpon{1 1 3}/onu/description"},
        TwoPaths{"WithKeysAfterASlash", "/config/interface/gpon", "/config/interface/gpon/{1 1 3}"},
        TwoPaths{"WithKeysTwice", "/config/service-port{7}", "/config/service-port{7}/{7}"},
        TwoPaths{"OfALongerName", "/config/service-port{7}/gpon/id",
                 "/config/service-port{7}/gpon/onu/id"},
        TwoPaths{"OfTheOtherBranch", "/config/service-port{7}/gpon/onu/id",
                 "/config/service-port{7}/xgspon/onu/id"},
        TwoPaths{"WithTextAfterTheKeys", "/config/service-port{7}", "/config/service-port{7}7"},
        TwoPaths{"OfAMissingLink", "/config/interface/gpon{1 1 3}/onu{7}/description",
                 "/config/interface/gpon{1 1 4}/onu{7}/description"}),
    [](const testing::TestParamInfo<TwoPaths>& paths) { return paths.param.name; });

}  // namespace
}  // namespace tarnd::confd
