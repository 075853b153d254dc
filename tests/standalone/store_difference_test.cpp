// The difference of two whole configurations, compared with libyang's.

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <unordered_map>

#include "standalone/store/transaction.h"
#include "tests/support/change_text.h"
#include "tests/support/model.h"
#include "tests/support/own_model.h"
#include "tests/support/random_content.h"

namespace tarnd::store {
namespace {

using test::change_text;
using test::config;
using test::ContentKind;
using test::RandomContent;
using TreeOwner = std::unique_ptr<lyd_node, decltype(&lyd_free_all)>;

// One node of libyang's diff, and its places there.
struct DiffOfNode {
  const lyd_node* before = nullptr;
  const lyd_node* after = nullptr;
  std::vector<const lyd_node*> diffs;

  [[nodiscard]] const SchemaNode& schema() const {
    return schema_of(after != nullptr ? after : before);
  }
};

const lyd_node* counterpart(const lyd_node* parent, const lyd_node* node) {
  lyd_node* found = nullptr;
  if ((node->schema->nodetype & (LYS_LIST | LYS_LEAFLIST)) != 0) {
    lyd_find_sibling_first(lyd_child(parent), node, &found);
  } else {
    lyd_find_sibling_val(lyd_child(parent), node->schema, nullptr, 0, &found);
  }
  return found;
}

// The nodes directly below, in the diff's order. libyang may have one node in several places.
std::vector<DiffOfNode> diffs_below(const DiffOfNode& parent) {
  std::vector<DiffOfNode> nodes;
  std::unordered_map<const lyd_node*, std::size_t> place_of;
  for (const lyd_node* diff : parent.diffs) {
    for (const lyd_node* child = lyd_child(diff); child != nullptr; child = child->next) {
      if (lysc_is_key(child->schema)) continue;
      const lyd_node* before = counterpart(parent.before, child);
      const lyd_node* after = counterpart(parent.after, child);
      if (before == nullptr && after == nullptr) continue;
      const auto place = place_of.emplace(after != nullptr ? after : before, nodes.size());
      if (place.second) nodes.push_back({before, after, {}});
      nodes[place.first->second].diffs.push_back(child);
    }
  }
  return nodes;
}

std::vector<const lyd_node*> values_of(const lyd_node* parent, const SchemaNode& leaf_list) {
  std::vector<const lyd_node*> values;
  for (const lyd_node* child = lyd_child(parent); child != nullptr; child = child->next) {
    if (child->schema == leaf_list.lysc) values.push_back(child);
  }
  std::sort(values.begin(), values.end(), value_less);
  return values;
}

void put_in_order(std::vector<Change>& changes) {
  const auto node = [](const Change& change) {
    return change.after != nullptr ? change.after : change.before;
  };
  std::sort(changes.begin(), changes.end(), [&](const Change& left, const Change& right) {
    if (left.schema != right.schema) return left.schema->position < right.schema->position;
    return left.schema->kind == NodeKind::kList && key_less(node(left), node(right));
  });
}

std::optional<Change> change_of(const DiffOfNode& node);

std::vector<Change> changes_below(const DiffOfNode& node) {
  std::vector<Change> changes;
  std::vector<const SchemaNode*> leaf_lists;
  for (const DiffOfNode& child : diffs_below(node)) {
    const SchemaNode& schema = child.schema();
    if (schema.kind != NodeKind::kLeafList) {
      std::optional<Change> change = change_of(child);
      if (change.has_value()) changes.push_back(std::move(*change));
    } else if (std::find(leaf_lists.begin(), leaf_lists.end(), &schema) == leaf_lists.end()) {
      leaf_lists.push_back(&schema);
      changes.push_back({&schema,
                         nullptr,
                         nullptr,
                         values_of(node.before, schema),
                         values_of(node.after, schema),
                         {}});
    }
  }
  put_in_order(changes);
  return changes;
}

// Follows libyang's diff of two trees to the nodes themselves. A leaf that only becomes a default
// with the same value, and a container without content, are no changes here.
std::optional<Change> change_of(const DiffOfNode& node) {
  const SchemaNode& schema = node.schema();
  Change change{&schema, node.before, node.after, {}, {}, {}};
  if (node.before == nullptr || node.after == nullptr) {
    const bool given = has_given_content(node.after != nullptr ? node.after : node.before);
    return given ? std::optional(change) : std::nullopt;
  }
  if (schema.kind == NodeKind::kLeaf) {
    const bool differs = value_text(node.before) != value_text(node.after);
    return differs ? std::optional(change) : std::nullopt;
  }
  change.children = changes_below(node);
  return change.children.empty() ? std::nullopt : std::optional(change);
}

std::string libyang_difference(const lyd_node* before, const lyd_node* after) {
  lyd_node* diff = nullptr;
  EXPECT_EQ(lyd_diff_tree(before, after, 0, &diff), LY_SUCCESS);
  const TreeOwner owner(diff, lyd_free_all);
  const auto change = diff != nullptr ? change_of({before, after, {diff}}) : std::nullopt;
  return change_text(change.has_value() ? &*change : nullptr);
}

TEST(DifferenceTest, OfWholeConfigurationsIsThatOfLibyang) {
  const test::OwnModel model(test::kModelOfRules);
  const Schema schema(model.folder());
  const Path root = *Path::parse(schema, "/config", nullptr);
  constexpr ContentKind kContent{.values = 4, .mistakes = 100'000};
  unsigned differ = 0;
  for (unsigned seed = 0; seed < 2000; ++seed) {
    RandomContent content(seed, kContent);
    Datastore datastore(schema);
    const std::string after = content.load_into(datastore);
    const std::string before = content.load_into(datastore);
    Transaction transaction(datastore);
    transaction.replace(after, Format::kXml);
    transaction.prepare();
    const std::string expected = libyang_difference(transaction.committed(root), datastore.root());
    ASSERT_EQ(change_text(transaction), expected) << before << "\n" << after;
    if (!expected.empty()) ++differ;
  }
  EXPECT_GT(differ, 1500U);
}

}  // namespace
}  // namespace tarnd::store
