// Paths that are counted by a walk have the number of nodes that libyang finds.

#include "standalone/store/path_count.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <optional>
#include <random>
#include <string>
#include <vector>

#include "standalone/store/datastore.h"
#include "standalone/store/xpath.h"
#include "tests/support/model.h"

namespace tarnd::store {
namespace {

using test::config;

class Random {
 public:
  explicit Random(unsigned seed) : random_(seed) {}

  std::size_t below(std::size_t limit) {
    return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random_);
  }
  bool one_in(std::size_t n) { return below(n) == 0; }
  template <typename Item>
  const Item& pick(const std::vector<Item>& items) {
    return items[below(items.size())];
  }

 private:
  std::mt19937 random_;
};

// Few values, so that conditions hold; some have quotes, blanks, or are the beginning of another.
// None needs an escape in XML.
const std::vector<std::string> kNames{"home", "home2", "it's", "say-\"hi\"", "7", "Ümlaut", "and"};
const std::vector<std::string> kTexts{"",        "a",    " a ",   "a'b",   "a\"b", "a]b",
                                      "a and b", "true", "a=b[c", "count", "0",    "Ü"};

std::string leaf(const std::string& name, const std::string& value) {
  return "<" + name + ">" + value + "</" + name + ">";
}

std::string maybe(Random& random, const std::string& text) {
  return random.one_in(2) ? text : std::string();
}

std::string onu(Random& random, int id) {
  std::string text = leaf("id", std::to_string(id));
  text += maybe(random, leaf("description", random.pick(kTexts)));
  text += maybe(random, "<auth-method>" + leaf("password", random.pick(kTexts)) + "</auth-method>");
  text += maybe(random, "<profile-references>" + leaf("line-profile", random.pick(kNames)) +
                            "</profile-references>");
  text += maybe(random, leaf("rg-profile", random.pick(kNames)));
  text += maybe(random, "<snmp><real-time/></snmp>");
  for (int port = 1; port <= 2; ++port) {
    text += maybe(random, "<pots>" + leaf("port", std::to_string(port)) +
                              maybe(random, leaf("sip-agent-profile", random.pick(kNames))) +
                              "</pots>");
  }
  return "<onu>" + text + "</onu>";
}

std::string link(Random& random, const std::string& kind, int port) {
  std::string text = leaf("chassis-id", "1") + leaf("slot-id", "1") +
                     leaf("port-id", std::to_string(port)) +
                     maybe(random, leaf("upstream-fec", "false"));
  for (int id = 1; id <= 4; ++id) text += maybe(random, onu(random, id));
  return "<" + kind + ">" + text + "</" + kind + ">";
}

std::string configuration(Random& random) {
  std::string links;
  for (int port = 1; port <= 3; ++port) links += maybe(random, link(random, "gpon", port));
  links += maybe(random, link(random, "xgspon", 4));
  std::string profiles;
  for (int i = 1; i <= 2; ++i) {
    profiles += maybe(random, "<service-profile><name>s" + std::to_string(i) +
                                  "</name><vlan-mapping><name>m</name><uni><ethernet>1</ethernet>"
                                  "<ethernet>3</ethernet></uni></vlan-mapping></service-profile>");
  }
  return config("<interface>" + links + "</interface><profile><gpon>" + profiles +
                "</gpon></profile>");
}

// A path of the model, with a condition on a leaf of its last node or without.
std::string path(Random& random, const Schema& schema) {
  const SchemaNode* node = &schema.root();
  std::string text = "/config";
  // Mostly to a node that may have data.
  const std::vector<std::string> to_onus{"interface", random.one_in(3) ? "xgspon" : "gpon", "onu"};
  for (const std::string& name : to_onus) {
    if (random.one_in(12)) break;
    node = node->child(name);
    text += "/" + name;
  }
  while (!node->children.empty() && random.one_in(2)) {
    node = random.pick(node->children);
    text += "/" + node->name;
  }
  if (node->children.empty() || random.one_in(4)) return text;
  const std::string quote = random.one_in(2) ? "'" : "\"";
  const std::string& value = random.pick(random.one_in(2) ? kNames : kTexts);
  return text + "[" + random.pick(node->children)->name + "=" + quote + value + quote + "]";
}

// Something that is nearly such a path.
std::string damaged(Random& random, std::string text) {
  static const std::string kBytes = "/[]='\" .*(@:x1";
  const std::size_t at = random.below(text.size());
  const char byte = kBytes[random.below(kBytes.size())];
  if (random.one_in(2)) return text.insert(at, 1, byte);
  text[at] = byte;
  return text;
}

// Returns true if the walk has counted the path.
bool agrees(const Datastore& datastore, const std::string& text) {
  const std::optional<std::size_t> counted = count_by_walk(datastore.root(), text);
  if (!counted.has_value()) return false;
  const auto nodes = XPath(datastore, nullptr).nodes(text);
  EXPECT_EQ(*counted, nodes.has_value() ? nodes->size() : std::string::npos) << text;
  EXPECT_EQ(XPath(datastore, nullptr).text("count(" + text + ")"), std::to_string(*counted));
  return true;
}

TEST(PathCount, IsLibyangsNumberOfNodes) {
  constexpr int kTrees = 40;
  constexpr int kPaths = 150;
  int counted = 0;
  for (unsigned seed = 0; seed < kTrees && !testing::Test::HasFailure(); ++seed) {
    SCOPED_TRACE(seed);
    Random random(seed);
    Datastore datastore(test::model());
    datastore.load(configuration(random), Format::kXml);
    for (int i = 0; i < kPaths; ++i) {
      const std::string text = path(random, datastore.schema());
      counted += agrees(datastore, text) ? 1 : 0;
      agrees(datastore, damaged(random, text));
    }
  }
  // Many of the paths are counted by a walk, or the comparison says little.
  EXPECT_GT(counted, kTrees * kPaths / 3);
}

struct Expression {
  const char* name;
  const char* path;
  bool walked;
};
void PrintTo(const Expression& expression, std::ostream* out) {
  *out << expression.path;
}

class PathCountOf : public testing::TestWithParam<Expression> {};

TEST_P(PathCountOf, WalksOnlyWhatItUnderstands) {
  Random random(7);
  Datastore datastore(test::model());
  datastore.load(configuration(random), Format::kXml);
  EXPECT_EQ(agrees(datastore, GetParam().path), GetParam().walked);
}

INSTANTIATE_TEST_SUITE_P(
    Paths, PathCountOf,
    testing::Values(
        Expression{"Nodes", "/config/interface/gpon/onu/snmp/real-time", true},
        Expression{"TextLeaf", "/config/interface/gpon/onu[rg-profile='home']", true},
        Expression{"DoubleQuotes", "/config/interface/gpon/onu[rg-profile=\"it's\"]", true},
        Expression{"QuoteInside", "/config/interface/gpon/onu[rg-profile='it's']", false},
        Expression{"OfAContainer",
                   "/config/interface/gpon/onu/profile-references[line-profile='home']", true},
        Expression{"NumberLeaf", "/config/interface/gpon/onu[id='1']", false},
        Expression{"BooleanWithDefault", "/config/interface/gpon[upstream-fec='true']", false},
        Expression{"KeyLeaf", "/config/profile/gpon/service-profile[name='s1']", false},
        Expression{"Number", "/config/interface/gpon/onu[rg-profile=7]", false},
        Expression{"TwoConditions", "/config/interface/gpon/onu[rg-profile='a'][rg-profile='a']",
                   false},
        Expression{"ConditionInside", "/config/interface/gpon[upstream-fec='true']/onu", false},
        Expression{"And", "/config/interface/gpon/onu[rg-profile='a' and description='b']", false},
        Expression{"Blanks", "/config/interface/gpon/onu[rg-profile = 'home']", false},
        Expression{"Prefix", "/base:config/interface/gpon/onu", false},
        Expression{"UnknownName", "/config/nothing", false},
        Expression{"Everywhere", "//onu", false},
        Expression{"Parent", "/config/interface/..", false},
        Expression{"TrailingSlash", "/config/interface/", false}, Expression{"Nothing", "", false}),
    [](const testing::TestParamInfo<Expression>& expression) { return expression.param.name; });

}  // namespace
}  // namespace tarnd::store
