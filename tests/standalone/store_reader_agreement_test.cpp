// The reader compared with libyang's own parser and validation: the same verdict and the same tree.

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>
#include <sstream>

#include "standalone/store/datastore.h"
#include "standalone/store/libyang_compat.h"
#include "tests/support/model.h"
#include "tests/support/own_model.h"
#include "tests/support/random_content.h"
#include "tools/gponval/generated_card.h"

namespace tarnd::store {
namespace {

using test::config;
using test::kModelOfRules;
using test::OwnModel;
using test::RandomContent;

// With every default and every empty container.
std::string printed(const lyd_node* tree, Format format) {
  char* text = nullptr;
  lyd_print_mem(&text, tree, format == Format::kJson ? LYD_JSON : LYD_XML,
                LYD_PRINT_WD_ALL | LYD_PRINT_KEEPEMPTYCONT);
  const std::unique_ptr<char, decltype(&std::free)> owner(text, &std::free);
  return text != nullptr ? text : "";
}

// If a container is empty in the text, libyang does not add its defaults.
void bring_all_defaults(lyd_node* tree) {
  lyd_node* node = nullptr;
  LYD_TREE_DFS_BEGIN(tree, node) {
    if (node->schema->nodetype == LYS_CONTAINER) {
      node->flags &= ~static_cast<std::uint32_t>(LYD_DEFAULT);
    }
    LYD_TREE_DFS_END(tree, node);
  }
  lyd_new_implicit_tree(tree, LYD_IMPLICIT_NO_STATE, nullptr);
}

// libyang's own tree of the text; null if it refuses the text.
TreeOwner tree_of_libyang(const Schema& schema, const std::string& text, Format format) {
  lyd_node* tree = nullptr;
  lyd_parse_data_mem(schema.context(), text.c_str(), format == Format::kJson ? LYD_JSON : LYD_XML,
                     LYD_PARSE_STRICT, LYD_VALIDATE_PRESENT, &tree);
  return {tree, lyd_free_all};
}

// The tree that libyang reads from the text, sorted; empty if it refuses the text.
std::string read_by_libyang(const Schema& schema, const std::string& text, Format format) {
  const TreeOwner tree = tree_of_libyang(schema, text, format);
  if (tree == nullptr) return "";
  bring_all_defaults(tree.get());
  return printed(tree.get(), Format::kXml);
}

// The siblings and all below: the members of their nodes that libyang relies on, and that it finds
// each of them. Counts them.
std::size_t expect_same_nodes(const lyd_node* here, const lyd_node* there) {
  std::size_t count = 0;
  const lyd_node* first = here;
  const lyd_node* before = nullptr;
  for (; here != nullptr && there != nullptr; here = here->next, there = there->next) {
    ++count;
    EXPECT_EQ(here->schema, there->schema);
    EXPECT_EQ(here->hash, there->hash) << here->schema->name;
    EXPECT_EQ(here->flags & LYD_DEFAULT, there->flags & LYD_DEFAULT) << here->schema->name;
    EXPECT_EQ(here->parent, first->parent);
    if (here != first) {
      EXPECT_EQ(here->prev, before);
    }
    EXPECT_EQ(lyd_compare_single(here, there, 0), LY_SUCCESS) << here->schema->name;
    lyd_node* found = nullptr;
    EXPECT_EQ(lyd_find_sibling_first(first, there, &found), LY_SUCCESS) << here->schema->name;
    EXPECT_EQ(found, here);
    count += expect_same_nodes(lyd_child(here), lyd_child(there));
    before = here;
  }
  EXPECT_EQ(here, nullptr);
  EXPECT_EQ(there, nullptr);
  if (first != nullptr) {
    EXPECT_EQ(first->prev, before);
  }
  return count;
}

std::string read_here(const Schema& schema, const std::string& text, Format format) {
  try {
    return printed(read_configuration(schema, text, format).root.get(), Format::kXml);
  } catch (const InputError&) {
    return "";
  }
}

TEST(ReaderAgreement, OnRandomConfigurationsInXmlAndJson) {
  const OwnModel model(kModelOfRules);
  const Schema schema(model.folder());
  unsigned taken = 0;
  constexpr unsigned kConfigurations = 4000;
  for (unsigned seed = 0; seed < kConfigurations; ++seed) {
    const std::string text = config(RandomContent(seed, {}).of(schema.root().lysc));
    const std::string here = read_here(schema, text, Format::kXml);
    ASSERT_EQ(here, read_by_libyang(schema, text, Format::kXml)) << "seed " << seed << "\n" << text;
    if (here.empty()) continue;
    ++taken;
    const std::string json =
        printed(read_configuration(schema, text, Format::kXml).root.get(), Format::kJson);
    ASSERT_EQ(read_here(schema, json, Format::kJson), read_by_libyang(schema, json, Format::kJson))
        << "seed " << seed << "\n"
        << json;
  }
  EXPECT_GT(taken, kConfigurations / 5);
  EXPECT_LT(taken, kConfigurations * 4 / 5);
}

TEST(ReaderAgreement, OnTheTownAndOnAGeneratedCard) {
  std::ifstream file(TARND_EXAMPLES_DIR "/town.xml");
  const std::string town{std::istreambuf_iterator<char>(file), {}};
  ASSERT_FALSE(town.empty());
  gponval::CardSize size;
  size.links = 2;
  size.xgs_links = 2;
  size.onus = 16;
  size.service_ports = 64;
  std::ostringstream card;
  gponval::write_card(card, size);
  for (const std::string& text : {town, card.str()}) {
    // libyang keeps clear text, so only texts that are already encrypted can be equal.
    const Schema& schema = test::model();
    Datastore datastore(schema);
    datastore.load(text, Format::kXml);
    for (const Format format : {Format::kXml, Format::kJson}) {
      const std::string stored = datastore.print(format);
      const std::string here = read_here(schema, stored, format);
      EXPECT_FALSE(here.empty());
      EXPECT_EQ(here, read_by_libyang(schema, stored, format));
      const ReadConfiguration read = read_configuration(schema, stored, format);
      const TreeOwner there = tree_of_libyang(schema, stored, format);
      EXPECT_GT(expect_same_nodes(read.root.get(), there.get()), 500U);
    }
  }
}

}  // namespace
}  // namespace tarnd::store
