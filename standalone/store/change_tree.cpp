#include "standalone/store/change_tree.h"

#include <algorithm>
#include <unordered_map>

namespace tarnd::store {
namespace {

bool is_default(const lyd_node* node) {
  return (node->flags & LYD_DEFAULT) != 0;
}

const lyd_node* standing_node(const Change& change) {
  if (change.after != nullptr) return change.after;
  if (change.before != nullptr) return change.before;
  return change.values_after.empty() ? change.values_before.front() : change.values_after.front();
}

bool in_model_and_key_order(const Change& left, const Change& right) {
  if (left.schema != right.schema) return left.schema->position < right.schema->position;
  return left.schema->kind == NodeKind::kList &&
         key_less(standing_node(left), standing_node(right));
}

// The changes below one node, gathered in any order.
class ChildChanges {
 public:
  void add(std::optional<Change> change) {
    if (change.has_value()) changes_.push_back(std::move(*change));
  }

  // The values of one leaf-list are one change, however many of them differ.
  void add_leaf_list(const SchemaNode& schema, std::vector<const lyd_node*> before,
                     std::vector<const lyd_node*> after) {
    for (const Change& change : changes_) {
      if (change.schema == &schema) return;
    }
    std::sort(before.begin(), before.end(), value_less);
    std::sort(after.begin(), after.end(), value_less);
    changes_.push_back({&schema, nullptr, nullptr, std::move(before), std::move(after), {}});
  }

  [[nodiscard]] std::vector<Change> take() {
    std::sort(changes_.begin(), changes_.end(), in_model_and_key_order);
    return std::move(changes_);
  }

 private:
  std::vector<Change> changes_;
};

std::optional<Change> created(const lyd_node* after) {
  if (!has_given_content(after)) return std::nullopt;
  return Change{&schema_of(after), nullptr, after, {}, {}, {}};
}

std::optional<Change> deleted(const lyd_node* before) {
  if (!has_given_content(before)) return std::nullopt;
  return Change{&schema_of(before), before, nullptr, {}, {}, {}};
}

std::optional<Change> changed_leaf(const lyd_node* before, const lyd_node* after) {
  if (value_text(before) == value_text(after)) return std::nullopt;
  return Change{&schema_of(after), before, after, {}, {}, {}};
}

std::optional<Change> with_children(const lyd_node* before, const lyd_node* after,
                                    std::vector<Change> children) {
  if (children.empty()) return std::nullopt;
  return Change{&schema_of(after), before, after, {}, {}, std::move(children)};
}

const lyd_node* counterpart(const lyd_node* parent, const lyd_node* node) {
  lyd_node* found = nullptr;
  if (parent == nullptr) return nullptr;
  if ((node->schema->nodetype & (LYS_LIST | LYS_LEAFLIST)) != 0) {
    lyd_find_sibling_first(lyd_child(parent), node, &found);
  } else {
    lyd_find_sibling_val(lyd_child(parent), node->schema, nullptr, 0, &found);
  }
  return found;
}

std::vector<const lyd_node*> values_of(const lyd_node* parent, const SchemaNode& leaf_list) {
  std::vector<const lyd_node*> values;
  for (const lyd_node* child = lyd_child(parent); child != nullptr; child = child->next) {
    if (child->schema == leaf_list.lysc) values.push_back(child);
  }
  return values;
}

// One node that libyang's diff speaks of, and where it does.
struct DiffOfNode {
  const lyd_node* before = nullptr;
  const lyd_node* after = nullptr;
  std::vector<const lyd_node*> diffs;
};

// The nodes directly below, in the diff's order. libyang may speak of one node in several places.
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

// Follows libyang's diff of two trees to the nodes themselves.
std::optional<Change> from_diff(const DiffOfNode& node) {
  if (node.before == nullptr) return created(node.after);
  if (node.after == nullptr) return deleted(node.before);
  if (schema_of(node.after).kind == NodeKind::kLeaf) return changed_leaf(node.before, node.after);
  ChildChanges children;
  for (const DiffOfNode& child : diffs_below(node)) {
    const SchemaNode& schema = schema_of(child.after != nullptr ? child.after : child.before);
    if (schema.kind == NodeKind::kLeafList) {
      children.add_leaf_list(schema, values_of(node.before, schema), values_of(node.after, schema));
    } else {
      children.add(from_diff(child));
    }
  }
  return with_children(node.before, node.after, children.take());
}

std::optional<Change> swapped(const lyd_node* before, const lyd_node* after) {
  if (schema_of(after).kind == NodeKind::kLeaf) return changed_leaf(before, after);
  // libyang compares trees from their roots on, so a node inside one is copied out.
  lyd_node* copied = nullptr;
  if (after->parent != nullptr) {
    lyd_dup_single(after, nullptr, LYD_DUP_RECURSIVE | LYD_DUP_WITH_FLAGS, &copied);
  }
  const TreeOwner copy(copied, lyd_free_all);
  lyd_node* diff = nullptr;
  lyd_diff_tree(before, copied != nullptr ? copied : after, 0, &diff);
  const TreeOwner owner(diff, lyd_free_all);
  return diff != nullptr ? from_diff({before, after, {diff}}) : std::nullopt;
}

// The values before the edits, told from those that stand now and the records of what came and
// went.
std::vector<const lyd_node*> values_before(const EditRecord& parent, const SchemaNode& schema,
                                           std::vector<const lyd_node*> values) {
  for (const auto& record : parent.children) {
    if (record->schema != &schema || record->before == record->after) continue;
    if (record->after != nullptr) {
      values.erase(std::find(values.begin(), values.end(), record->after));
    }
    if (record->before != nullptr) values.push_back(record->before);
  }
  return values;
}

}  // namespace

bool has_given_content(const lyd_node* node) {
  switch (schema_of(node).kind) {
    case NodeKind::kList:
    case NodeKind::kPresence:
    case NodeKind::kLeafList:
      return true;
    case NodeKind::kLeaf:
      return !is_default(node);
    default:
      break;
  }
  for (const lyd_node* child = lyd_child(node); child != nullptr; child = child->next) {
    if (has_given_content(child)) return true;
  }
  return false;
}

std::optional<Change> change_tree(const EditRecord& record) {
  if (record.before == nullptr && record.after == nullptr) return std::nullopt;
  if (record.before == nullptr) return created(record.after);
  if (record.after == nullptr) return deleted(record.before);
  if (!record.tracked()) return swapped(record.before, record.after);
  ChildChanges children;
  for (const auto& child : record.children) {
    if (child->schema->kind != NodeKind::kLeafList) {
      children.add(change_tree(*child));
    } else if ((child->before == nullptr) != (child->after == nullptr)) {
      auto values = values_of(record.after, *child->schema);
      children.add_leaf_list(*child->schema, values_before(record, *child->schema, values), values);
    }
  }
  return with_children(record.before, record.after, children.take());
}

}  // namespace tarnd::store
