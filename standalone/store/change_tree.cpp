#include "standalone/store/change_tree.h"

#include <algorithm>
#include <iterator>
#include <unordered_set>

#include "standalone/store/instance_key.h"

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

// The changes below one node, collected in any order.
class ChildChanges {
 public:
  void add(std::optional<Change> change) {
    if (change.has_value()) changes_.push_back(std::move(*change));
  }

  // All values of one leaf-list together are one change.
  void add_leaf_list(const SchemaNode& schema, std::vector<const lyd_node*> before,
                     std::vector<const lyd_node*> after) {
    std::sort(before.begin(), before.end(), value_less);
    std::sort(after.begin(), after.end(), value_less);
    if (std::equal(before.begin(), before.end(), after.begin(), after.end(), same_value)) return;
    changes_.push_back({&schema, nullptr, nullptr, std::move(before), std::move(after), {}});
  }

  [[nodiscard]] bool empty() const { return changes_.empty(); }

  [[nodiscard]] std::vector<Change> take() {
    if (!std::is_sorted(changes_.begin(), changes_.end(), in_model_and_key_order)) {
      std::sort(changes_.begin(), changes_.end(), in_model_and_key_order);
    }
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
  if (same_value(before, after)) return std::nullopt;
  return Change{&schema_of(after), before, after, {}, {}, {}};
}

std::optional<Change> with_children(const lyd_node* before, const lyd_node* after,
                                    std::vector<Change> children) {
  if (children.empty()) return std::nullopt;
  return Change{&schema_of(after), before, after, {}, {}, std::move(children)};
}

std::vector<const lyd_node*> values_of(const lyd_node* parent, const SchemaNode& leaf_list) {
  std::vector<const lyd_node*> values;
  for (const lyd_node* child = child_instance(parent, leaf_list);
       child != nullptr && child->schema == leaf_list.lysc; child = child->next) {
    values.push_back(child);
  }
  return values;
}

void compare_children(const lyd_node* before, const lyd_node* after, ChildChanges& changes);

// Compares two instances of one container or one entry.
void add_difference(const lyd_node* before, const lyd_node* after, ChildChanges& changes) {
  ChildChanges below;
  compare_children(before, after, below);
  if (!below.empty()) changes.add(with_children(before, after, below.take()));
}

void put_in_key_order(std::vector<const lyd_node*>& entries) {
  if (std::is_sorted(entries.begin(), entries.end(), key_less)) return;
  std::sort(entries.begin(), entries.end(), key_less);
}

// Notes entries of one list that only one side has, or such a container or leaf.
void compare_entries(std::vector<const lyd_node*> before, std::vector<const lyd_node*> after,
                     ChildChanges& changes) {
  put_in_key_order(before);
  put_in_key_order(after);
  auto left = before.begin();
  for (const lyd_node* entry : after) {
    while (left != before.end() && key_less(*left, entry)) changes.add(deleted(*left++));
    if (left == before.end() || key_less(entry, *left)) {
      changes.add(created(entry));
    } else {
      add_difference(*left++, entry, changes);
    }
  }
  for (; left != before.end(); ++left) changes.add(deleted(*left));
}

// Takes the instances of the model's node that begin at this sibling, and moves past them.
std::vector<const lyd_node*> take_instances(const lyd_node*& node, const SchemaNode& schema) {
  std::vector<const lyd_node*> instances;
  for (; node != nullptr && node->schema == schema.lysc; node = node->next) {
    instances.push_back(node);
  }
  return instances;
}

// Of the next nodes of both rows of siblings, the one that comes first in the model.
const SchemaNode& next_schema(const lyd_node* before, const lyd_node* after) {
  if (before == nullptr) return schema_of(after);
  if (after == nullptr) return schema_of(before);
  const SchemaNode& left = schema_of(before);
  const SchemaNode& right = schema_of(after);
  return left.position < right.position ? left : right;
}

// Siblings are in the order of the model, and equal nodes are mostly in the same place on both
// sides.
void compare_children(const lyd_node* before, const lyd_node* after, ChildChanges& changes) {
  const lyd_node* left = lyd_child(before);
  const lyd_node* right = lyd_child(after);
  for (;;) {
    for (; left != nullptr && right != nullptr && same_instance(left, right);
         left = left->next, right = right->next) {
      if (left->schema->nodetype == LYS_LEAF) {
        if (!same_value(left, right)) changes.add(changed_leaf(left, right));
      } else if (left->schema->nodetype != LYS_LEAFLIST) {
        add_difference(left, right, changes);
      }
    }
    if (left == nullptr && right == nullptr) return;
    const SchemaNode& schema = next_schema(left, right);
    auto entries_before = take_instances(left, schema);
    auto entries_after = take_instances(right, schema);
    if (schema.kind == NodeKind::kLeafList) {
      changes.add_leaf_list(schema, values_of(before, schema), values_of(after, schema));
    } else {
      compare_entries(std::move(entries_before), std::move(entries_after), changes);
    }
  }
}

// Compares two instances of one node.
std::optional<Change> difference(const lyd_node* before, const lyd_node* after) {
  if (schema_of(after).kind == NodeKind::kLeaf) return changed_leaf(before, after);
  ChildChanges changes;
  compare_children(before, after, changes);
  return with_children(before, after, changes.take());
}

// The values before the edits: the present ones without those that were created, and those that
// were deleted.
std::vector<const lyd_node*> values_before(const EditRecord& parent, const SchemaNode& schema,
                                           const std::vector<const lyd_node*>& now) {
  std::vector<const lyd_node*> values;
  std::unordered_set<const lyd_node*> came;
  for (const auto& record : parent.children) {
    if (record->schema != &schema || record->before == record->after) continue;
    if (record->after != nullptr) came.insert(record->after);
    if (record->before != nullptr) values.push_back(record->before);
  }
  std::copy_if(now.begin(), now.end(), std::back_inserter(values),
               [&](const lyd_node* value) { return !came.contains(value); });
  return values;
}

void add_leaf_lists(const EditRecord& parent, ChildChanges& changes) {
  std::unordered_set<const SchemaNode*> seen;
  for (const auto& record : parent.children) {
    const SchemaNode& schema = *record->schema;
    if (schema.kind != NodeKind::kLeafList || !seen.insert(&schema).second) continue;
    const std::vector<const lyd_node*> now = values_of(parent.after, schema);
    changes.add_leaf_list(schema, values_before(parent, schema, now), now);
  }
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
  if (!record.tracked()) return difference(record.before, record.after);
  ChildChanges children;
  for (const auto& child : record.children) {
    if (child->schema->kind != NodeKind::kLeafList) children.add(change_tree(*child));
  }
  add_leaf_lists(record, children);
  return with_children(record.before, record.after, children.take());
}

}  // namespace tarnd::store
