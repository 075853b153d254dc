#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <libyang/libyang.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "base.h"
#include "model/base_header.h"
#include "model/name_numbers.h"
#include "standalone/store/schema.h"

namespace tarnd {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;

constexpr const char* kNamespaceLine = "namespace urn:tarnd:base 864307902\n";

const store::Schema& schema() {
  static const store::Schema schema(TARND_MODEL_DIR);
  return schema;
}

NameNumbers model_numbers() {
  return NameNumbers(std::filesystem::path(TARND_MODEL_DIR) / "known-numbers.txt");
}

NameNumbers numbers_from(const std::string& text) {
  std::istringstream lines(text);
  return {lines, "test"};
}

std::vector<std::string> model_names() {
  std::set<std::string> names;
  for (const store::SchemaNode& node : schema().nodes()) names.insert(node.name);
  return {names.begin(), names.end()};
}

const store::SchemaNode& node_at(std::initializer_list<std::string> names) {
  const store::SchemaNode* node = &schema().root();
  for (const std::string& name : names) {
    node = node->child(name);
    if (node == nullptr) throw std::runtime_error("the model has no " + name);
  }
  return *node;
}

// The text of the function's exception, empty if it throws none.
template <typename Function>
std::string error_of(Function function) {
  try {
    function();
  } catch (const std::runtime_error& error) {
    return error.what();
  }
  return {};
}

// The values of one list entry, depth first: a container counts as one and its children follow, a
// list inside counts as one.
void append_values(const store::SchemaNode& parent, const std::string& path,
                   std::vector<std::string>* values) {
  for (const store::SchemaNode* child : parent.children) {
    const std::string child_path = path.empty() ? child->name : path + "/" + child->name;
    values->push_back(child_path);
    if (child->kind != store::NodeKind::kList) append_values(*child, child_path, values);
  }
}

std::vector<std::string> values_of(const store::SchemaNode& list) {
  std::vector<std::string> values;
  append_values(list, "", &values);
  return values;
}

// --- Numbers of names ---

TEST(NameNumbersTest, KnownNumbersAreThoseOfTheSchemaCompiler) {
  const std::map<std::string, std::uint32_t> expected = {
      {"service-port", 2078118842}, {"gpon", 1802393476},       {"xgspon", 1305479277},
      {"id", 1279252765},           {"onu", 1099044037},        {"gem", 54084138},
      {"gem-id", 730022296},        {"rg-profile", 0x31a8c1d5}, {"rg-one-shot-prov", 0x4de0ba35}};
  const NameNumbers numbers = model_numbers();
  for (const auto& [name, number] : expected) EXPECT_EQ(numbers.number(name), number) << name;
  EXPECT_EQ(numbers.known().size(), expected.size());
  EXPECT_EQ(numbers.namespace_number(), 864307902U);
  EXPECT_EQ(numbers.namespace_uri(), schema().namespace_uri());
}

TEST(NameNumbersTest, NumbersOfTheModelAreDistinctAndHave31Bits) {
  const NameNumbers numbers = model_numbers();
  std::set<std::uint32_t> seen{numbers.namespace_number()};
  for (const std::string& name : model_names()) {
    const std::uint32_t number = numbers.number(name);
    EXPECT_TRUE(seen.insert(number).second) << name;
    EXPECT_GT(number, 0U) << name;
    EXPECT_LE(number, 0x7fffffffU) << name;
  }
}

TEST(NameNumbersTest, HashIsTheSameInEveryBuild) {
  // FNV-1a of "a" is 0xe40c292c; its top bit folds into the lowest.
  EXPECT_EQ(model_numbers().number("a"), 0x640c292dU);
}

TEST(NameNumbersTest, NameIsFoundByItsNumber) {
  NameNumbers numbers = model_numbers();
  for (const std::string& name : model_names()) numbers.add(name);
  for (const std::string& name : model_names()) {
    const std::string* found = numbers.name_of(numbers.number(name));
    ASSERT_NE(found, nullptr) << name;
    EXPECT_EQ(*found, name);
  }
  EXPECT_EQ(numbers.name_of(numbers.number("no-such-node")), nullptr);
}

TEST(NameNumbersTest, AddingANameAgainIsHarmless) {
  NameNumbers numbers = model_numbers();
  numbers.add("vlan");
  numbers.add("vlan");
  EXPECT_EQ(*numbers.name_of(numbers.number("vlan")), "vlan");
}

TEST(NameNumbersTest, CollisionNamesBoth) {
  const std::uint32_t hash_of_beta = model_numbers().number("beta");
  NameNumbers numbers =
      numbers_from(kNamespaceLine + ("name alpha " + std::to_string(hash_of_beta)));
  EXPECT_THAT(error_of([&] { numbers.add("beta"); }),
              AllOf(HasSubstr("alpha"), HasSubstr("beta"), HasSubstr("same number")));
}

TEST(NameNumbersTest, CollisionWithTheNamespaceIsDetected) {
  const std::uint32_t hash_of_beta = model_numbers().number("beta");
  NameNumbers numbers = numbers_from("namespace urn:x " + std::to_string(hash_of_beta));
  EXPECT_THAT(error_of([&] { numbers.add("beta"); }), HasSubstr("urn:x and beta"));
}

TEST(NameNumbersTest, KnownNumbersMayBeHexadecimalAndCommented) {
  const NameNumbers numbers =
      numbers_from("# all of them\n\nnamespace urn:x 7 # here\nname alpha 0x1F\n");
  EXPECT_EQ(numbers.number("alpha"), 31U);
  EXPECT_EQ(numbers.namespace_number(), 7U);
}

TEST(NameNumbersTest, BadKnownNumbersAreRefusedWithTheirLine) {
  const std::string head = kNamespaceLine;
  const std::vector<std::pair<std::string, std::string>> cases = {
      {head + "name alpha\n", "test:2: kind, name and number are expected"},
      {head + "name alpha 1 2\n", "test:2: kind, name and number are expected"},
      {head + "name alpha x\n", "test:2: \"x\" is not a number of 31 bits"},
      {head + "name alpha 0\n", "test:2: \"0\" is not a number of 31 bits"},
      {head + "name alpha 12y\n", "test:2: \"12y\" is not a number of 31 bits"},
      {head + "name alpha 2147483648\n", "test:2: \"2147483648\" is not a number of 31 bits"},
      {head + "name alpha 0x80000000\n", "test:2: \"0x80000000\" is not a number of 31 bits"},
      {head + "name alpha 3\nname beta 3\n", "test:3: beta and alpha have the same number"},
      {head + "name alpha 3\nname alpha 4\n", "test:3: alpha stands here twice"},
      {head + "namespace urn:y 4\n", "test:2: a second namespace"},
      {head + "node alpha 3\n", "test:2: \"node\" is neither namespace nor name"},
      {"name alpha 3\n", "test: no namespace"},
  };
  for (const auto& [text, error] : cases) {
    EXPECT_EQ(error_of([&text = text] { numbers_from(text); }), error) << text;
  }
}

TEST(NameNumbersTest, UnreadableFileIsAnError) {
  EXPECT_THAT(error_of([] { const NameNumbers unread("no-such-folder/known-numbers.txt"); }),
              AllOf(HasSubstr("no-such-folder/known-numbers.txt"), HasSubstr("cannot be read")));
}

// --- The generated header ---

TEST(BaseHeaderTest, FileOfTheBuildIsGeneratedFromTheModel) {
  std::ifstream file(TARND_BASE_HEADER);
  ASSERT_TRUE(file) << TARND_BASE_HEADER;
  std::ostringstream text;
  text << file.rdbuf();
  EXPECT_EQ(text.str(),
            base_header(model_numbers(), std::string(schema().prefix()), model_names()));
}

TEST(BaseHeaderTest, EveryNameOfTheModelHasItsSymbol) {
  std::ifstream file(TARND_BASE_HEADER);
  ASSERT_TRUE(file) << TARND_BASE_HEADER;
  std::map<std::string, std::string> symbols;
  for (std::string line; std::getline(file, line);) {
    std::istringstream words(line);
    std::string define;
    std::string symbol;
    std::string value;
    if (words >> define >> symbol >> value && define == "#define") symbols[symbol] = value;
  }
  const NameNumbers numbers = model_numbers();
  for (const std::string& name : model_names()) {
    std::string symbol = "base_" + name;
    std::replace(symbol.begin(), symbol.end(), '-', '_');
    EXPECT_EQ(symbols[symbol], std::to_string(numbers.number(name))) << symbol;
  }
  EXPECT_EQ(symbols.size(), model_names().size() + 3);
}

TEST(BaseHeaderTest, SymbolsCompileToTheNumbers) {
  const NameNumbers numbers = model_numbers();
  EXPECT_EQ(std::uint32_t{base__ns}, 864307902U);
  EXPECT_EQ(std::string(base__ns_id), "urn:tarnd:base");
  EXPECT_EQ(std::string(base__ns_uri), "urn:tarnd:base");
  EXPECT_EQ(std::uint32_t{base_service_port}, 2078118842U);
  EXPECT_EQ(std::uint32_t{base_rg_one_shot_prov}, 0x4de0ba35U);
  EXPECT_EQ(std::uint32_t{base_downstream_fec}, numbers.number("downstream-fec"));
  EXPECT_EQ(std::uint32_t{base_upstream_fec}, numbers.number("upstream-fec"));
}

TEST(BaseHeaderTest, OrderAndRepetitionOfNamesDoNotMatter) {
  const NameNumbers numbers = numbers_from(kNamespaceLine);
  EXPECT_EQ(base_header(numbers, "base", {"onu", "gem", "onu"}),
            base_header(numbers, "base", {"gem", "onu"}));
}

TEST(BaseHeaderTest, EqualNumbersAreRefused) {
  const std::uint32_t hash_of_beta = model_numbers().number("beta");
  const NameNumbers numbers =
      numbers_from(kNamespaceLine + ("name alpha " + std::to_string(hash_of_beta)));
  EXPECT_THAT(error_of([&] {
                base_header(numbers, "base", {"alpha", "beta"});
              }),
              HasSubstr("the names alpha and beta have the same number"));
}

TEST(BaseHeaderTest, EqualSymbolsAreRefused) {
  const NameNumbers numbers = numbers_from(kNamespaceLine);
  EXPECT_EQ(error_of([&] {
              base_header(numbers, "base", {"vlan_id", "vlan-id"});
            }),
            "the names vlan-id and vlan_id have the same symbol base_vlan_id");
  EXPECT_EQ(error_of([&] { base_header(numbers, "base", {"_ns"}); }),
            "the names the namespace and _ns have the same symbol base__ns");
}

TEST(BaseHeaderTest, KnownNameThatTheModelLacksIsRefused) {
  const NameNumbers numbers = numbers_from(std::string(kNamespaceLine) + "name alpha 3\n");
  EXPECT_EQ(error_of([&] { base_header(numbers, "base", {"beta"}); }),
            "the model has no node named alpha, which has a known number");
}

// --- Positions of values ---

TEST(ModelTest, BandwidthProfileHas15Values) {
  EXPECT_THAT(values_of(node_at({"profile", "gpon", "bandwidth-profile"})),
              ElementsAre("name", "traffic", "traffic/type-1", "traffic/type-1/fixed",
                          "traffic/type-2", "traffic/type-2/assured", "traffic/type-3",
                          "traffic/type-3/assured", "traffic/type-3/maximum", "traffic/type-4",
                          "traffic/type-4/maximum", "traffic/type-5", "traffic/type-5/fixed",
                          "traffic/type-5/assured", "traffic/type-5/maximum"));
}

TEST(ModelTest, TcontHas2Values) {
  EXPECT_THAT(values_of(node_at({"profile", "gpon", "line-profile", "tcont"})),
              ElementsAre("id", "bandwidth-profile"));
}

TEST(ModelTest, ServicePortHas26Values) {
  const std::vector<std::string> expected = {"id",
                                             "xgspon",
                                             "xgspon/id",
                                             "xgspon/onu",
                                             "xgspon/onu/id",
                                             "xgspon/onu/gem",
                                             "xgspon/onu/gem/gem-id",
                                             "gpon",
                                             "gpon/id",
                                             "gpon/onu",
                                             "gpon/onu/id",
                                             "gpon/onu/gem",
                                             "gpon/onu/gem/gem-id",
                                             "match",
                                             "match/ethertype",
                                             "match/vlan",
                                             "match/vlan/vlan-id",
                                             "match/vlan/cos",
                                             "action",
                                             "action/type",
                                             "action/vlan",
                                             "action/vlan/vlan-id",
                                             "action/vlan/cos",
                                             "admin-enabled",
                                             "upstream-rate",
                                             "downstream-rate"};
  EXPECT_EQ(expected.size(), 26U);
  EXPECT_EQ(values_of(node_at({"service-port"})), expected);
}

// --- Validation points ---

/// The elements are there in this order, with or without others between them.
MATCHER_P(ContainsInOrder, expected, "") {
  auto place = arg.begin();
  for (const std::string& one : expected) {
    place = std::find(place, arg.end(), one);
    if (place == arg.end()) {
      *result_listener << one << " is missing or out of order";
      return false;
    }
    ++place;
  }
  return true;
}

// The order in which a commit calls the requests. A new request may come anywhere among these; the
// catalogue of the tests says at which nodes it is called.
TEST(ModelTest, ValidationPointsAreAtTheNodesOfTheDaemon) {
  const std::vector<std::string> expected = {
      "/config/gpon one_shot_prov_check once",
      "/config/interface/gpon interface_gpon_validation once",
      "/config/interface/gpon/downstream-fec fec_confirmation_warning",
      "/config/interface/gpon/upstream-fec fec_confirmation_warning",
      "/config/interface/gpon/onu onu_bw_check once",
      "/config/interface/gpon/onu onu_pwd_sn_unique_check once",
      "/config/interface/gpon/onu onu_gem_check once",
      "/config/interface/gpon/onu onu_snmp_rt_warn once",
      "/config/interface/gpon/onu/rg-profile rg_prof_one_shot_check",
      "/config/interface/gpon/onu/rg-override rg_prof_one_shot_check",
      "/config/interface/gpon/onu/ip-host onu_gateway_ip_check",
      "/config/interface/xgspon interface_xgs_validation once",
      "/config/interface/xgspon/downstream-fec fec_confirmation_warning",
      "/config/interface/xgspon/upstream-fec fec_confirmation_warning",
      "/config/interface/xgspon/operation-mode pon_mode_validation",
      "/config/interface/xgspon/onu onu_pwd_sn_unique_check once",
      "/config/interface/xgspon/onu onu_gem_check once",
      "/config/interface/xgspon/onu onu_snmp_rt_warn once",
      "/config/interface/xgspon/onu/rg-profile rg_prof_one_shot_check",
      "/config/interface/xgspon/onu/rg-override rg_prof_one_shot_check",
      "/config/interface/xgspon/onu/ip-host onu_gateway_ip_check",
      "/config/profile/gpon/bandwidth-profile config_modified_check once",
      "/config/profile/gpon/bandwidth-profile ponlink_bw_check once",
      "/config/profile/gpon/line-profile ponlink_bw_check once",
      "/config/profile/gpon/line-profile line_confirmation_warning",
      "/config/profile/gpon/service-profile config_modified_check once",
      "/config/profile/gpon/service-profile/vlan-mapping vlan_limit_check",
      "/config/profile/gpon/service-profile/vlan-mapping vlan_match_check",
      "/config/profile/gpon/rg-profile itf_grp_validation",
      "/config/profile/gpon/rg-profile rg_profile_confirmation_warning",
      "/config/profile/gpon/rg-profile/wlan rg_profile_ssid_unique_check once",
      "/config/profile/gpon/tr069-acs-profile tr069_profile_confirmation_warning",
      "/config/profile/gpon/tr069-acs-profile/password tr069_profile_password_length_check",
      "/config/profile/gpon/sip-agent-profile sip_agent_profile_confirmation_warning",
      "/config/profile/gpon/media-profile voip_media_profile_confirmation_warning",
      "/config/service-port config_modified_check once",
      "/config/service-port service_port_global_validation once",
      "/config/service-port sp_gem_check once",
      "/config/service-port service_port_delete_all_warning_check once",
  };
  std::vector<std::string> points;
  for (const store::SchemaNode& node : schema().nodes()) {
    for (const store::ValidationPoint& point : node.points) {
      EXPECT_EQ(point.name, "gpon_validation_check") << node.path();
      EXPECT_EQ(point.priority, 0) << node.path();
      points.push_back(node.path() + " " + point.request + (point.call_once ? " once" : ""));
    }
  }
  EXPECT_THAT(points, ContainsInOrder(expected));
}

// --- Types ---

TEST(ModelTest, ValuesAreAcceptedByTheirTypes) {
  const store::SchemaNode& password = node_at({"profile", "gpon", "tr069-acs-profile", "password"});
  const store::SchemaNode& address = node_at({"interface", "gpon", "onu", "ip-host", "address"});
  const store::SchemaNode& gateway =
      node_at({"interface", "gpon", "onu", "ip-host", "default-gateway"});
  const store::SchemaNode& profile = node_at({"profile", "gpon", "media-profile", "name"});
  const store::SchemaNode& mapping =
      node_at({"profile", "gpon", "service-profile", "vlan-mapping", "name"});
  const store::SchemaNode& gateway_profile = node_at({"profile", "gpon", "rg-profile", "name"});
  const store::SchemaNode& connection =
      node_at({"profile", "gpon", "rg-profile", "wan-ip-connection", "name"});
  const store::SchemaNode& serial =
      node_at({"interface", "gpon", "onu", "auth-method", "serial-number"});
  const store::SchemaNode& match_vlan =
      node_at({"profile", "gpon", "service-profile", "vlan-mapping", "match", "outer", "vlan-id"});
  const store::SchemaNode& match_cos =
      node_at({"profile", "gpon", "service-profile", "vlan-mapping", "match", "outer", "cos"});

  struct Case {
    const store::SchemaNode& leaf;
    std::string value;
    bool accepted;
  };
  const std::vector<Case> cases = {
      {password, "$0$clear text, even with \n lines", true},
      {password, "$0$", true},
      {password, "$8$QUJDRA==", true},
      {password, "$8$QUJD", true},
      {password, "$8$", false},
      {password, "$8$QUJ", false},
      {password, "$8$QUJD=", false},
      {password, "$8$QU JD", false},
      {password, "clear text", false},
      {password, "", false},
      {address, "10.0.0.1/0", true},
      {address, "255.255.255.255/32", true},
      {address, "10.0.0.1/33", false},
      {address, "10.0.0.1/08", false},
      {address, "10.0.0.01/8", false},
      {address, "10.0.0.256/8", false},
      {address, "10.0.0/8", false},
      {address, "10.0.0.1", false},
      {gateway, "10.0.0.1", true},
      {gateway, "10.0.0.1%eth0", false},
      {gateway, "10.0.0.300", false},
      {profile, "it's-100%-café", true},
      {profile, std::string(64, 'x'), true},
      {profile, std::string(65, 'x'), false},
      {profile, "", false},
      {profile, "two words", false},
      {profile, "tab\tbed", false},
      {profile, "{brace", false},
      {profile, "brace}", false},
      {profile, "a/b", false},
      {profile, "a\"b", false},
      {mapping, "café", true},
      {gateway_profile, "it's-100%-~!", true},
      {gateway_profile, std::string(64, 'x'), true},
      {gateway_profile, std::string(65, 'x'), false},
      {gateway_profile, "", false},
      {gateway_profile, "two words", false},
      {gateway_profile, "a/b", false},
      {gateway_profile, "{brace}", false},
      {gateway_profile, "a\"b", false},
      {gateway_profile, "café", false},
      {gateway_profile, "delete\x7f", false},
      {connection, "it's-100%-~!", true},
      {connection, "café", false},
      {connection, "delete\x7f", false},
      {connection, "two words", false},
      {connection, "a/b", false},
      {connection, "{brace}", false},
      {connection, "a\"b", false},
      {connection, "", false},
      {connection, std::string(48, 'x'), true},
      {connection, std::string(49, 'x'), false},
      {serial, "", true},
      {match_vlan, "any", true},
      {match_vlan, "1", true},
      {match_vlan, "4094", true},
      {match_vlan, "0", false},
      {match_vlan, "4095", false},
      {match_cos, "any", true},
      {match_cos, "0", true},
      {match_cos, "8", false},
  };
  for (const Case& c : cases) {
    const LY_ERR result = lyd_value_validate(schema().context(), c.leaf.lysc, c.value.c_str(),
                                             c.value.size(), nullptr, nullptr, nullptr);
    EXPECT_EQ(result == LY_SUCCESS, c.accepted) << c.leaf.path() << " = \"" << c.value << "\"";
  }
}

TEST(ModelTest, ARefusedNameIsAnsweredWithWhatNamesHold) {
  constexpr const char* kNoBlanks = "A name holds no blanks, braces, slashes or double quotes.";
  struct Case {
    const store::SchemaNode& leaf;
    std::string name;
    std::string message;
  };
  const std::vector<Case> cases = {
      {node_at({"profile", "gpon", "line-profile", "name"}), "two words", kNoBlanks},
      {node_at({"profile", "gpon", "rg-profile", "name"}), "two words", kNoBlanks},
      {node_at({"profile", "gpon", "rg-profile", "name"}), "café",
       "The name of an RG profile holds printable ASCII only."},
      {node_at({"profile", "gpon", "rg-profile", "wan-ip-connection", "name"}), "two words",
       kNoBlanks},
      {node_at({"profile", "gpon", "rg-profile", "wan-ip-connection", "name"}), "café",
       "The name of a WAN connection holds printable ASCII only."},
  };
  ly_ctx* const context = schema().context();
  for (const Case& c : cases) {
    ly_err_clean(context, nullptr);
    EXPECT_NE(lyd_value_validate(context, c.leaf.lysc, c.name.c_str(), c.name.size(), nullptr,
                                 nullptr, nullptr),
              LY_SUCCESS);
    const ly_err_item* const error = ly_err_first(context);
    ASSERT_NE(error, nullptr) << c.leaf.path();
    EXPECT_STREQ(error->msg, c.message.c_str()) << c.leaf.path();
    ly_err_clean(context, nullptr);
  }
}

TEST(ModelTest, EnumerationsHaveTheDaemonsNumbers) {
  struct Case {
    const store::SchemaNode& leaf;
    std::vector<std::string> names;
  };
  const std::vector<Case> cases = {
      {node_at({"gpon", "onu-auth-method"}),
       {"serial-number", "serial-number-and-password", "password"}},
      {node_at({"interface", "xgspon", "operation-mode"}), {"gpon", "xgspon", "combo"}},
      {node_at({"profile", "gpon", "rg-profile", "wan-bridge-connection", "itf-grouping", "ports",
                "port"}),
       {"eth1", "eth2", "eth3", "eth4", "wl0", "wl0-vap1"}},
      {node_at({"service-port", "action", "type"}), {"add", "translate", "remove"}},
  };
  for (const Case& c : cases) {
    const auto* leaf = reinterpret_cast<const lysc_node_leaf*>(c.leaf.lysc);
    ASSERT_EQ(leaf->type->basetype, LY_TYPE_ENUM) << c.leaf.path();
    const auto* type = reinterpret_cast<const lysc_type_enum*>(leaf->type);
    ASSERT_EQ(LY_ARRAY_COUNT(type->enums), c.names.size()) << c.leaf.path();
    for (std::size_t i = 0; i < c.names.size(); ++i) {
      EXPECT_EQ(type->enums[i].name, c.names[i]);
      EXPECT_EQ(type->enums[i].value, static_cast<std::int32_t>(i)) << c.names[i];
    }
  }
}

}  // namespace
}  // namespace tarnd
