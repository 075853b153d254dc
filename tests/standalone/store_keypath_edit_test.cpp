#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "standalone/crypto.h"
#include "standalone/store/transaction.h"
#include "tests/support/model.h"

namespace tarnd::store {
namespace {

using test::config;

const lyd_node* node_at(const Datastore& datastore, const std::string& path) {
  return datastore.find(*Path::parse(datastore.schema(), path, nullptr));
}

const lysc_type* type_of(const SchemaNode& leaf) {
  return leaf.kind == NodeKind::kLeafList
             ? reinterpret_cast<const lysc_node_leaflist*>(leaf.lysc)->type
             : reinterpret_cast<const lysc_node_leaf*>(leaf.lysc)->type;
}

// Some of these, or one of its names, are values of any type that the model has.
std::vector<std::string> candidates_for(const SchemaNode& leaf) {
  std::vector<std::string> values = {"false",        "true",         "1",    "2",
                                     "192.0.2.1/24", "192.0.2.2/24", "",     "192.0.2.1",
                                     "192.0.2.2",    "$0$a",         "$0$b", "some text"};
  const lysc_type* type = type_of(leaf);
  if (type->basetype != LY_TYPE_ENUM) return values;
  const auto* names = reinterpret_cast<const lysc_type_enum*>(type)->enums;
  LY_ARRAY_COUNT_TYPE i = 0;
  LY_ARRAY_FOR(names, i) {
    values.emplace_back(names[i].name);
  }
  return values;
}

std::vector<std::string> values_for(const SchemaNode& leaf) {
  std::vector<std::string> values;
  for (const std::string& value : candidates_for(leaf)) {
    const LY_ERR valid = lyd_value_validate(leaf.lysc->module->ctx, leaf.lysc, value.data(),
                                            value.size(), nullptr, nullptr, nullptr);
    if (valid == LY_SUCCESS) values.push_back(value);
  }
  ly_err_clean(leaf.lysc->module->ctx, nullptr);
  return values;
}

// An instance of each node around and of the node itself, in both ways of writing.
struct Instance {
  std::string keypath;
  std::string xpath;
};

Instance instance_of(const SchemaNode& node) {
  if (node.parent == nullptr) return {"/config", "/base:config"};
  Instance at = instance_of(*node.parent);
  at.keypath += "/" + node.name;
  at.xpath += "/" + node.name;
  if (node.kind == NodeKind::kLeafList) {
    const std::string value = values_for(node).front();
    return {at.keypath + "{" + value + "}", at.xpath + "[.='" + value + "']"};
  }
  if (node.kind != NodeKind::kList) return at;
  at.keypath += "{";
  for (std::size_t i = 0; i < node.num_keys; ++i) {
    const SchemaNode& key = *node.children[i];
    const std::string value = values_for(key).front();
    at.keypath += (i > 0 ? " " : "") + value;
    at.xpath += "[" + key.name + "=\"" + value + "\"]";
  }
  at.keypath += "}";
  return at;
}

class KeypathEditTest : public ::testing::Test {
 protected:
  KeypathEditTest() : KeypathEditTest(test::model()) {}
  explicit KeypathEditTest(const Schema& schema) : datastore_(schema), transaction_(datastore_) {}

  // The error's text, empty if the edit was applied.
  std::string edit(Operation operation, const std::string& text) {
    try {
      transaction_.edit(KeypathEdit{operation, text});
    } catch (const InputError& error) {
      return error.what();
    }
    return "";
  }
  std::string set(const std::string& text) { return edit(Operation::kMerge, text); }
  std::string erase(const std::string& text) { return edit(Operation::kDelete, text); }

  [[nodiscard]] bool has(const std::string& path) const {
    const lyd_node* node = node_at(datastore_, path);
    return node != nullptr && has_given_content(node);
  }
  [[nodiscard]] std::string value(const std::string& path) const {
    const lyd_node* leaf = node_at(datastore_, path);
    if (leaf == nullptr) return "(none)";
    const std::string text(value_text(leaf));
    return schema_of(leaf).value == ValueKind::kEncrypted ? "$0$" + *decrypt_string(text) : text;
  }

  void set_change_and_delete_leaf(const SchemaNode& leaf, const std::string& path) {
    const std::vector<std::string> values = values_for(leaf);
    ASSERT_FALSE(values.empty()) << "no value for " << leaf.path();
    for (const std::string& wanted : {values.front(), values.back()}) {
      EXPECT_EQ(set(path + "=" + wanted), "");
      EXPECT_EQ(value(instance_of(leaf).keypath), wanted);
    }
    if (leaf.value == ValueKind::kEncrypted) {
      EXPECT_EQ(set(path + "=clear"), "");
      EXPECT_EQ(value(instance_of(leaf).keypath), "$0$clear");
    }
    EXPECT_TRUE(has(instance_of(leaf).keypath));
  }

  void set_and_delete(const SchemaNode& node, const std::string& path) {
    const std::string keypath = instance_of(node).keypath;
    if (node.kind == NodeKind::kLeaf) {
      set_change_and_delete_leaf(node, path);
    } else if (node.kind == NodeKind::kContainer) {
      EXPECT_EQ(set(path), keypath + ": a container holds nothing by itself; name a node in it");
      const SchemaNode* inside = &node;
      while (inside->kind == NodeKind::kContainer) inside = inside->children.front();
      const bool has_value = inside->kind == NodeKind::kLeaf && inside->value != ValueKind::kEmpty;
      const std::string with = has_value ? "=" + values_for(*inside).back() : "";
      EXPECT_EQ(set(instance_of(*inside).keypath + with), "");
    } else {
      EXPECT_EQ(set(path), "");
    }
    EXPECT_TRUE(has(keypath));
    EXPECT_EQ(erase(path), "");
    EXPECT_FALSE(has(keypath));
    EXPECT_NE(erase(path), "");
    EXPECT_EQ(edit(Operation::kRemove, path), "");
  }

  Datastore datastore_;
  Transaction transaction_;
};

TEST_F(KeypathEditTest, EveryNodeOfTheModelIsSetChangedAndDeleted) {
  std::size_t seen = 0;
  for (const SchemaNode& node : test::model().nodes()) {
    if (node.is_key() || node.parent == nullptr) continue;
    SCOPED_TRACE(node.path());
    for (const std::string& path : {instance_of(node).keypath, instance_of(node).xpath}) {
      set_and_delete(node, path);
    }
    ++seen;
  }
  EXPECT_GT(seen, 100U);
}

TEST_F(KeypathEditTest, AKeyIsNoNodeToSet) {
  for (const SchemaNode& node : test::model().nodes()) {
    if (!node.is_key()) continue;
    const std::string entry = instance_of(*node.parent).keypath;
    EXPECT_EQ(set(entry + "/" + node.name + "=1").find(entry + ": '" + node.name + "' is a key"),
              0U)
        << node.path();
  }
}

TEST_F(KeypathEditTest, AChangedLeafKeepsWhatIsAroundIt) {
  EXPECT_EQ(set("/config/service-port{7}/gpon/id=1/1/1"), "");
  EXPECT_EQ(set("/config/service-port{7}/upstream-rate=5"), "");
  EXPECT_EQ(set("/config/service-port{7}/upstream-rate=6"), "");
  EXPECT_EQ(value("/config/service-port{7}/gpon/id"), "1/1/1");
  EXPECT_EQ(value("/config/service-port{7}/upstream-rate"), "6");
}

TEST_F(KeypathEditTest, AnEntryIsReplacedWithItsContent) {
  EXPECT_EQ(set("/config/service-port{7}/upstream-rate=5"), "");
  EXPECT_EQ(edit(Operation::kReplace, "/config/service-port{7}"), "");
  EXPECT_TRUE(has("/config/service-port{7}"));
  EXPECT_EQ(value("/config/service-port{7}/upstream-rate"), "(none)");
}

TEST_F(KeypathEditTest, ACreatedNodeMustNotExist) {
  EXPECT_EQ(edit(Operation::kCreate, "/config/service-port{7}/upstream-rate=5"), "");
  EXPECT_EQ(edit(Operation::kCreate, "/config/service-port{7}/upstream-rate=6"),
            "cannot create /config/service-port{7}/upstream-rate: it exists already");
}

TEST_F(KeypathEditTest, TheWholeConfigurationCanGo) {
  EXPECT_EQ(set("/config/service-port{7}"), "");
  EXPECT_EQ(erase("/config/"), "");
  EXPECT_FALSE(has("/config"));
}

TEST_F(KeypathEditTest, WhatIsRemovedNeedNotExistAndNothingIsMade) {
  for (const char* path :
       {"/config/service-port{7}", "/config/service-port{7}/gpon",
        "/config/service-port{7}/gpon/onu/id", "/config/interface/gpon{1 1 1}"}) {
    EXPECT_EQ(edit(Operation::kRemove, path), "");
  }
  EXPECT_FALSE(has("/config"));
}

TEST_F(KeypathEditTest, AValueMayHoldWhatPathsGiveAMeaning) {
  const std::string onu = "/config/interface/gpon{1 1 1}/onu{1}";
  EXPECT_EQ(set(onu + "/description=a=b/c{d}[e] \"f\""), "");
  EXPECT_EQ(value(onu + "/description"), "a=b/c{d}[e] \"f\"");
  EXPECT_EQ(set(onu + "/description="), "");
  EXPECT_EQ(value(onu + "/description"), "");
}

TEST_F(KeypathEditTest, PathsThatMeanTheSame) {
  EXPECT_EQ(set("/config/interface/gpon{1 1 3}/downstream-fec=false"), "");
  for (const char* path :
       {"/config/interface/gpon{1 1 3}/downstream-fec",
        "/config/interface/gpon/{01 1 \"3\"}/downstream-fec",
        "/base:config/base:interface/gpon[chassis-id='1'][slot-id=\"1\"][port-id=3]/downstream-fec",
        "/config/interface/gpon[ base:port-id = '3' and slot-id = '1' ][chassis-id='1']"
        "/downstream-fec"}) {
    EXPECT_EQ(set(std::string(path) + "=true"), "");
    EXPECT_EQ(value("/config/interface/gpon{1 1 3}/downstream-fec"), "true") << path;
    EXPECT_EQ(set("/config/interface/gpon{1 1 3}/downstream-fec=false"), "");
  }
}

TEST_F(KeypathEditTest, WhatIsWrongIsOneLine) {
  const std::string gpon = "/config/interface/gpon";
  const std::string link = gpon + "{1 1 1}";
  const std::string wanted = "gpon{chassis-id slot-id port-id} is needed";
  const struct {
    std::string text;
    std::string told;
  } cases[] = {
      {"", "'' is no path; one begins with /config"},
      {"config/service-port{1}", "'config/service-port{1}' is no path; one begins with /config"},
      {"/confg/service-port{1}", "'/confg/service-port{1}' is no path; one begins with /config"},
      {"/config", "/config: a container holds nothing by itself; name a node in it"},
      {"/config{1}", "/config: 'config' is no list, so no keys can follow it"},
      {"/config/interface{1}",
       "/config/interface: 'interface' is no list, so no keys can follow it"},
      {"/config//interface", "/config: a name is missing after '/'"},
      {"/config/servic-port{1}",
       "/config: there is no 'servic-port' here; did you mean 'service-port'?"},
      {gpon + "/upstream-fec=true", gpon + ": no key given; " + wanted},
      {gpon + "{}/upstream-fec=true", gpon + ": no key given; " + wanted},
      {gpon + "{1}", gpon + ": 1 key given; " + wanted},
      {gpon + "{1 1 1 1}", gpon + ": 4 keys given; " + wanted},
      {gpon + "[slot-id=1]", gpon + ": 1 key given; " + wanted},
      {gpon + "[slot-id=1][slot-id=1]", gpon + ": holds 'slot-id' twice"},
      {gpon + "[sot-id=1]", gpon + ": there is no 'sot-id' here; did you mean 'slot-id'?"},
      {gpon + "[onu=1]", gpon + ": 'onu' is no key; " + wanted},
      {gpon + "[3]", gpon + ": a predicate is not of the form [NAME='VALUE']"},
      {gpon + "[slot-id='1]", gpon + ": a quote is not closed"},
      {gpon + "[slot-id='1'", gpon + ": a predicate is not closed with ']'"},
      {gpon + "{1 1 1", gpon + ": a brace, or a quote inside, is not closed"},
      {gpon + "{1 1 \"1}", gpon + ": a brace, or a quote inside, is not closed"},
      {gpon + "{1 1 x}", gpon + "/port-id: 'x' is not a number from 0 to 4294967295"},
      {link + "upstream-fec=true", link + ": '/' or '=' is needed before 'upstream-fec=true'"},
      {link + "=3", link + ": an entry takes no value; name a leaf in it"},
      {link + "/upstream-fec",
       link + "/upstream-fec: a value is missing after '='; it takes true or false"},
      {link + "/upstream-fec=no", link + "/upstream-fec: 'no' is not true or false"},
      {link + "/upstream-fec/x=1", link + "/upstream-fec: holds 'x', but upstream-fec is a leaf"},
      {link + "/onu{1}/snmp/real-time=1",
       link + "/onu{1}/snmp/real-time: '1' is given; it takes no value"},
      {link + "/onu{1}/ip-host=1",
       link + "/onu{1}/ip-host: a container takes no value; name a leaf in it"},
      {link + "/onu{1}/description=a\nb\x01",
       link + "/onu{1}/description: the value holds a character that no text may hold"},
  };
  for (const auto& [text, told] : cases) EXPECT_EQ(set(text), told) << text;
  EXPECT_EQ(erase(link + "/upstream-fec=true"),
            link + "/upstream-fec: a node that goes is named without a value");
  EXPECT_EQ(erase(link), "cannot delete " + link + ": it does not exist");
  EXPECT_EQ(erase(link + "/upstream-fec"), link + " does not exist");
  EXPECT_FALSE(has("/config"));
}

TEST_F(KeypathEditTest, ARefusedEncryptedValueIsNotShown) {
  const SchemaNode* encrypted = nullptr;
  for (const SchemaNode& node : test::model().nodes()) {
    if (node.value == ValueKind::kEncrypted) encrypted = &node;
  }
  ASSERT_NE(encrypted, nullptr);
  const std::string told = set(instance_of(*encrypted).keypath + "=$8$secret");
  EXPECT_NE(told, "");
  EXPECT_EQ(told.find("secret"), std::string::npos) << told;
}

}  // namespace
}  // namespace tarnd::store
