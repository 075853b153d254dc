#include "standalone/store/validity.h"

#include <gtest/gtest.h>

#include <random>

#include "standalone/store/libyang_compat.h"
#include "standalone/store/schema.h"
#include "tests/support/model.h"
#include "tests/support/own_model.h"

namespace tarnd::store {
namespace {

using test::config;
using TreeOwner = std::unique_ptr<lyd_node, decltype(&lyd_free_all)>;

TreeOwner parsed(const Schema& schema, const std::string& text) {
  lyd_node* tree = nullptr;
  const LY_ERR result = lyd_parse_data_mem(schema.context(), text.c_str(), LYD_XML,
                                           LYD_PARSE_ONLY | LYD_PARSE_STRICT, 0, &tree);
  EXPECT_EQ(result, LY_SUCCESS) << take_libyang_error(schema.context()) << "\n" << text;
  return {tree, lyd_free_all};
}

std::string refusal(const lyd_node* tree) {
  try {
    check_subtree(tree);
  } catch (const InputError& error) {
    return error.what();
  }
  return "";
}

std::string refusal(const std::string& content) {
  return refusal(parsed(test::model(), config(content)).get());
}

std::string profile(const std::string& content) {
  return "<profile><gpon>" + content + "</gpon></profile>";
}

TEST(ValidityTest, NamesTheEntryThatLacksAMandatoryLeaf) {
  EXPECT_EQ(refusal(profile("<line-profile><name>gold</name><tcont><id>1</id></tcont>"
                            "</line-profile>")),
            "/config/profile/gpon/line-profile{gold}/tcont{1}: mandatory node 'bandwidth-profile' "
            "does not exist");
  EXPECT_EQ(refusal(profile("<bandwidth-profile><name>b</name><traffic><type-3><assured>1</assured>"
                            "</type-3></traffic></bandwidth-profile>")),
            "/config/profile/gpon/bandwidth-profile{b}/traffic/type-3: mandatory node 'maximum' "
            "does not exist");
}

TEST(ValidityTest, NamesTheNodesThatExcludeEachOther) {
  EXPECT_EQ(refusal("<service-port><id>7</id><gpon><id>1/1/1</id></gpon><xgspon><id>1/1/2</id>"
                    "</xgspon></service-port>"),
            "/config/service-port{7}: 'xgspon' and 'gpon' exclude each other");
}

TEST(ValidityTest, NamesWhatExistsTwice) {
  const std::string two = "<service-port><id>7</id></service-port>";
  EXPECT_EQ(refusal(two + "<service-port><id>8</id></service-port>" + two),
            "/config/service-port{7}: exists twice");
  EXPECT_EQ(refusal("<service-port><id>7</id><upstream-rate>1</upstream-rate>"
                    "<upstream-rate>2</upstream-rate></service-port>"),
            "/config/service-port{7}/upstream-rate: exists twice");
  EXPECT_EQ(refusal("<service-port><id>7</id><match/><match/></service-port>"),
            "/config/service-port{7}/match: exists twice");
  EXPECT_EQ(refusal(profile("<service-profile><name>s</name><vlan-mapping><name>m</name><uni>"
                            "<ethernet>2</ethernet><ethernet>1</ethernet><ethernet>2</ethernet>"
                            "</uni></vlan-mapping></service-profile>")),
            "/config/profile/gpon/service-profile{s}/vlan-mapping{m}/uni/ethernet{2}: exists "
            "twice");
}

TEST(ValidityTest, TakesAContainerOfACaseWithoutContentForNone) {
  EXPECT_EQ(refusal(profile("<bandwidth-profile><name>b</name><traffic><type-3/></traffic>"
                            "</bandwidth-profile>")),
            "");
}

// Every shape of rule, once in an entry, once in a container with presence and once in a case.
const std::string kRules = R"(
  grouping rules {
    leaf given { type uint8; mandatory true; }
    leaf free { type uint8; default 1; }
    container plain { leaf a { type uint8; default 2; } container deep { leaf b { type string; } } }
    choice one-of {
      mandatory true;
      case x { leaf x-given { type uint8; mandatory true; } leaf x-free { type uint8; } }
      case y {
        container y-plain { leaf y-free { type empty; } }
        container y-given { leaf g { type uint8; mandatory true; } }
        choice inner {
          leaf i { type uint8; }
          container j { leaf k { type uint8; mandatory true; } leaf l { type uint8; default 3; } }
        }
      }
      leaf z { type uint8; }
    }
    leaf-list values { type uint8; }
  }
  container config {
    list entry { key name; leaf name { type uint8; } uses rules; }
    container present { presence "Counts by itself."; uses rules; }
    choice root-choice {
      case long { list pair { key "a b"; leaf a { type uint8; } leaf b { type string; } } }
      case nested { container nested { leaf c { type uint8; } container around { uses rules; } } }
      case short { leaf short { type boolean; } }
    }
    container around {
      choice optional {
        default usual;
        case usual { leaf usual { type uint8; default 4; } container by-itself { leaf e { type uint8; } } }
        case other { leaf-list others { type string; } leaf another { type uint8; default 5; } }
      }
      list inside { key name; leaf name { type string; } leaf must { type uint8; mandatory true; } }
    }
  })";

// Content by the model in which nearly all is as it should be.
class RandomContent {
  static constexpr int kRarely = 64;
  static constexpr int kValues = 100;

 public:
  explicit RandomContent(unsigned seed) : random_(seed) {}

  // The nodes below a container, a list or a case.
  std::string of(const lysc_node* parent) {
    std::string text;
    for (const lysc_node* node = lysc_node_child(parent); node != nullptr; node = node->next) {
      const bool mandatory = (node->flags & LYS_MAND_TRUE) != 0;
      const bool wanted = mandatory ? !one_in(kRarely) : one_in(2);
      if (!wanted && !lysc_is_key(node)) continue;
      text += node->nodetype == LYS_CHOICE ? of_case(node) : instances(node);
    }
    return text;
  }

 private:
  int below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(random_); }
  bool one_in(int n) { return below(n) == 0; }

  std::string of_case(const lysc_node* choice) {
    std::vector<const lysc_node*> cases;
    for (const lysc_node* one = lysc_node_child(choice); one != nullptr; one = one->next) {
      cases.push_back(one);
    }
    const std::size_t chosen = below(static_cast<int>(cases.size()));
    std::string text = of(cases[chosen]);
    if (one_in(kRarely)) text += of(cases[(chosen + 1) % cases.size()]);
    return text;
  }

  std::string instances(const lysc_node* node) {
    const bool many = (node->nodetype & (LYS_LIST | LYS_LEAFLIST)) != 0;
    int count = many ? 1 + below(3) : 1;
    // Of two containers without presence libyang drops one that is empty.
    const bool counts_alone = node->nodetype == LYS_LEAF || (node->flags & LYS_PRESENCE) != 0;
    if (counts_alone && !lysc_is_key(node) && one_in(kRarely)) ++count;
    std::string text;
    const std::string name = node->name;
    for (; count > 0; --count) text += "<" + name + ">" + content(node) + "</" + name + ">";
    return text;
  }

  std::string content(const lysc_node* node) {
    switch (static_cast<const SchemaNode*>(node->priv)->value) {
      case ValueKind::kNone:
        return node->nodetype == LYS_CONTAINER && one_in(8) ? "" : of(node);
      case ValueKind::kEmpty:
        return "";
      case ValueKind::kBoolean:
        return one_in(2) ? "true" : "false";
      default:
        return std::to_string(below(kValues));
    }
  }

  std::mt19937 random_;
};

bool is_valid_for_libyang(const lyd_node* tree) {
  lyd_node* copy = nullptr;
  lyd_dup_single(tree, nullptr, LYD_DUP_RECURSIVE | LYD_DUP_WITH_FLAGS, &copy);
  const LY_ERR result = lyd_validate_all(&copy, nullptr, LYD_VALIDATE_PRESENT, nullptr);
  lyd_free_all(copy);
  return result == LY_SUCCESS;
}

TEST(ValidityTest, AgreesWithLibyangOnWholeConfigurations) {
  const test::OwnModel model(kRules);
  const Schema schema(model.folder());
  unsigned refused = 0;
  constexpr unsigned kConfigurations = 6000;
  for (unsigned seed = 0; seed < kConfigurations; ++seed) {
    const std::string text = config(RandomContent(seed).of(schema.root().lysc));
    const TreeOwner tree = parsed(schema, text);
    const std::string what = refusal(tree.get());
    const bool valid = is_valid_for_libyang(tree.get());
    ASSERT_EQ(what.empty(), valid) << what << take_libyang_error(schema.context()) << "\n" << text;
    if (!valid) ++refused;
  }
  // Both verdicts are tried.
  EXPECT_GT(refused, kConfigurations / 4);
  EXPECT_LT(refused, kConfigurations * 3 / 4);
}

}  // namespace
}  // namespace tarnd::store
