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

// The changes below one node, gathered in any order.
class ChildChanges {
 public:
  void add(std::optional<Change> change) {
    if (change.has_value()) changes_.push_back(std::move(*change));
  }

  // The values of one leaf-list are one change, however many of them differ.
  void add_leaf_list(const SchemaNode& schema, std::vector<const lyd_node*> before,
                     std::vector<const lyd_node*> after) {
    std::sort(before.begin(), before.end(), value_less);
    std::sort(after.begin(), after.end(), value_less);
    if (std::equal(before.begin(), before.end(), after.begin(), after.end(), same_value)) return;
    changes_.push_back({&schema, nullptr, nullptr, std::move(before), std::move(after), {}});
  }

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

// The instances of one node of the model that are left of a walk over siblings.
class Run {
 public:
  explicit Run(const lyd_node* first) : node_(first), schema_(first->schema) {}

  [[nodiscard]] bool at_end() const { return node_ == nullptr || node_->schema != schema_; }
  [[nodiscard]] const lyd_node* node() const { return node_; }
  void step() { node_ = node_->next; }

  std::vector<const lyd_node*> take_rest() {
    std::vector<const lyd_node*> rest;
    for (; !at_end(); step()) rest.push_back(node_);
    return rest;
  }

 private:
  const lyd_node* node_;
  const lysc_node* schema_;
};

std::optional<Change> difference(const lyd_node* before, const lyd_node* after);

void put_in_key_order(std::vector<const lyd_node*>& entries) {
  if (std::is_sorted(entries.begin(), entries.end(), key_less)) return;
  std::sort(entries.begin(), entries.end(), key_less);
}

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
      changes.add(difference(*left++, entry));
    }
  }
  for (; left != before.end(); ++left) changes.add(deleted(*left));
}

// Instances of the same node of the model on both sides. What is the same most often stands in the
// same place, too.
void compare(Run& before, Run& after, ChildChanges& changes) {
  const SchemaNode& schema = schema_of(before.node());
  if (schema.kind == NodeKind::kLeafList) {
    return changes.add_leaf_list(schema, before.take_rest(), after.take_rest());
  }
  while (!before.at_end() && !after.at_end() && same_instance(before.node(), after.node())) {
    changes.add(difference(before.node(), after.node()));
    before.step();
    after.step();
  }
  if (!before.at_end() || !after.at_end()) {
    compare_entries(before.take_rest(), after.take_rest(), changes);
  }
}

void add_created(Run& run, ChildChanges& changes) {
  const SchemaNode& schema = schema_of(run.node());
  if (schema.kind == NodeKind::kLeafList) return changes.add_leaf_list(schema, {}, run.take_rest());
  for (; !run.at_end(); run.step()) changes.add(created(run.node()));
}

void add_deleted(Run& run, ChildChanges& changes) {
  const SchemaNode& schema = schema_of(run.node());
  if (schema.kind == NodeKind::kLeafList) return changes.add_leaf_list(schema, run.take_rest(), {});
  for (; !run.at_end(); run.step()) changes.add(deleted(run.node()));
}

std::vector<Change> compare_children(const lyd_node* before, const lyd_node* after) {
  ChildChanges changes;
  // Siblings are in the order of the model.
  const lyd_node* old = lyd_child_no_keys(before);
  const lyd_node* now = lyd_child_no_keys(after);
  while (old != nullptr && now != nullptr) {
    Run left(old);
    Run right(now);
    if (old->schema == now->schema) {
      compare(left, right, changes);
    } else if (schema_of(old).position < schema_of(now).position) {
      add_deleted(left, changes);
    } else {
      add_created(right, changes);
    }
    old = left.node();
    now = right.node();
  }
  while (old != nullptr) {
    Run rest(old);
    add_deleted(rest, changes);
    old = rest.node();
  }
  while (now != nullptr) {
    Run rest(now);
    add_created(rest, changes);
    now = rest.node();
  }
  return changes.take();
}

// Of two instances of one node.
std::optional<Change> difference(const lyd_node* before, const lyd_node* after) {
  if (schema_of(after).kind == NodeKind::kLeaf) return changed_leaf(before, after);
  return with_children(before, after, compare_children(before, after));
}

// The values before the edits, told from those that stand now and the records of what came and
// went.
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
