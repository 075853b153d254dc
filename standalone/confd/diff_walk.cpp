#include "standalone/confd/diff_walk.h"

#include <algorithm>
#include <vector>

#include "standalone/confd/changes.h"
#include "standalone/confd/keypath.h"
#include "standalone/confd/values.h"

namespace tarnd::confd {
namespace {

using store::Change;
using store::NodeKind;
using store::PathStep;
using store::SchemaNode;

bool is_default(const lyd_node* node) {
  return (node->flags & LYD_DEFAULT) != 0;
}

bool is_empty_leaf(const SchemaNode& leaf) {
  return leaf.value == store::ValueKind::kEmpty;
}

// The children of one kind, entries in the order of their keys, values in ascending order. A
// deleted subtree is outside the datastore's tree, so there is no index to take them from.
std::vector<const lyd_node*> children_of(const lyd_node* parent, const SchemaNode& schema) {
  std::vector<const lyd_node*> children;
  for (const lyd_node* child = lyd_child(parent); child != nullptr; child = child->next) {
    if (child->schema == schema.lysc) children.push_back(child);
  }
  if (schema.kind == NodeKind::kList) {
    std::sort(children.begin(), children.end(), store::key_less);
  } else if (schema.kind == NodeKind::kLeafList) {
    std::sort(children.begin(), children.end(), store::value_less);
  }
  return children;
}

// One walk over the changes. Every step returns false if the iteration must end.
class DiffWalk {
 public:
  DiffWalk(const Model& model, DiffIterator iterator, void* state)
      : model_(model), iterator_(iterator), state_(state) {}

  bool below(const Change& change, std::span<const PathStep> steps);
  [[nodiscard]] bool failed() const { return failed_; }

 private:
  // What happened to a whole subtree: the change names its top node only.
  enum class Fate { kCreated, kDeleted };

  bool below(const lyd_node* node, Fate fate, std::span<const PathStep> steps);

  bool visit(const Change& change);
  bool visit_children(const Change& change);
  bool visit(const lyd_node* node, Fate fate);
  bool visit_leaf(const lyd_node* leaf, Fate fate);
  bool visit_children(const lyd_node* node, Fate fate);
  bool visit_child(const lyd_node* node, const SchemaNode& child, Fate fate);
  bool visit_leaf_list(const lyd_node* any_value, std::span<const lyd_node* const> after);

  maapi_iter_ret report(const lyd_node* node, maapi_iter_op op, confd_value_t* new_value = nullptr);
  // Reports a node that has nothing below it.
  bool report_leaf(const lyd_node* node, maapi_iter_op op, confd_value_t* new_value = nullptr) {
    return report(node, op, new_value) != ITER_STOP;
  }

  // Runs a step with the node as part of the trail.
  template <typename Step>
  bool inside(const lyd_node* node, Step step) {
    trail_.push_back(node);
    const bool go_on = step();
    trail_.pop_back();
    return go_on;
  }

  const Model& model_;
  DiffIterator iterator_;
  void* state_;
  std::vector<const lyd_node*> trail_;  ///< from the root to the parent of the visited node
  confd_hkeypath_t keypath_{};
  bool failed_ = false;
};

maapi_iter_ret DiffWalk::report(const lyd_node* node, maapi_iter_op op, confd_value_t* new_value) {
  trail_.push_back(node);
  set_keypath(model_, trail_, keypath_);
  trail_.pop_back();
  const maapi_iter_ret answer = iterator_(&keypath_, op, nullptr, new_value, state_);
  if (answer == ITER_STOP || answer == ITER_RECURSE || answer == ITER_CONTINUE) return answer;
  failed_ = true;
  return ITER_STOP;
}

// Follows the path to the node at which the iteration begins.
bool DiffWalk::below(const Change& change, std::span<const PathStep> steps) {
  const SchemaNode& schema = *change.schema;
  if (steps.empty()) return visit(change);
  if (schema.kind != NodeKind::kLeafList && change.before == nullptr) {
    return below(change.after, Fate::kCreated, steps);
  }
  if (schema.kind != NodeKind::kLeafList && change.after == nullptr) {
    return below(change.before, Fate::kDeleted, steps);
  }
  return inside(node_of(change), [&] {
    return std::all_of(change.children.begin(), change.children.end(), [&](const Change& child) {
      const PathStep& step = steps.front();
      return !names(step, node_of(child)) || below(child, steps.subspan(1));
    });
  });
}

bool DiffWalk::below(const lyd_node* node, Fate fate, std::span<const PathStep> steps) {
  if (steps.empty()) return visit(node, fate);
  return inside(node, [&] {
    const PathStep& step = steps.front();
    if (step.node->kind == NodeKind::kLeafList) return visit_child(node, *step.node, fate);
    const auto children = children_of(node, *step.node);
    return std::all_of(children.begin(), children.end(), [&](const lyd_node* child) {
      return !names(step, child) || below(child, fate, steps.subspan(1));
    });
  });
}

bool DiffWalk::visit(const Change& change) {
  const SchemaNode& schema = *change.schema;
  if (schema.kind == NodeKind::kLeafList) {
    return visit_leaf_list(node_of(change), change.values_after);
  }
  if (change.before == nullptr) return visit(change.after, Fate::kCreated);
  if (change.after == nullptr) return visit(change.before, Fate::kDeleted);
  if (schema.kind == NodeKind::kLeaf) return visit_leaf(change.after, Fate::kCreated);
  if (schema.kind == NodeKind::kList) {
    const maapi_iter_ret answer = report(change.after, MOP_MODIFIED);
    if (answer != ITER_RECURSE) return answer != ITER_STOP;
  }
  return visit_children(change);
}

bool DiffWalk::visit_children(const Change& change) {
  return inside(change.after, [&] {
    return std::all_of(change.children.begin(), change.children.end(),
                       [&](const Change& child) { return visit(child); });
  });
}

bool DiffWalk::visit(const lyd_node* node, Fate fate) {
  const SchemaNode& schema = store::schema_of(node);
  if (schema.kind == NodeKind::kLeaf) {
    // Keys are in the keypath, and adding or removing a default is no change.
    return schema.is_key() || is_default(node) || visit_leaf(node, fate);
  }
  if (schema.kind != NodeKind::kContainer) {
    const maapi_iter_ret answer = report(node, fate == Fate::kCreated ? MOP_CREATED : MOP_DELETED);
    if (fate == Fate::kDeleted || answer != ITER_RECURSE) return answer != ITER_STOP;
  }
  return visit_children(node, fate);
}

bool DiffWalk::visit_leaf(const lyd_node* leaf, Fate fate) {
  if (fate == Fate::kDeleted) return report_leaf(leaf, MOP_DELETED);
  if (is_empty_leaf(store::schema_of(leaf))) return report_leaf(leaf, MOP_CREATED);
  confd_value_t value = leaf_value(model_, leaf);
  return report_leaf(leaf, MOP_VALUE_SET, &value);
}

bool DiffWalk::visit_children(const lyd_node* node, Fate fate) {
  const std::vector<const SchemaNode*>& children = store::schema_of(node).children;
  return inside(node, [&] {
    return std::all_of(children.begin(), children.end(),
                       [&](const SchemaNode* child) { return visit_child(node, *child, fate); });
  });
}

bool DiffWalk::visit_child(const lyd_node* node, const SchemaNode& child, Fate fate) {
  const auto found = children_of(node, child);
  if (child.kind != NodeKind::kLeafList) {
    return std::all_of(found.begin(), found.end(),
                       [&](const lyd_node* instance) { return visit(instance, fate); });
  }
  if (found.empty() || is_default(found.front())) return true;
  return visit_leaf_list(found.front(),
                         fate == Fate::kCreated ? found : std::vector<const lyd_node*>());
}

bool DiffWalk::visit_leaf_list(const lyd_node* any_value, std::span<const lyd_node* const> after) {
  if (after.empty()) return report_leaf(any_value, MOP_DELETED);
  OwnedValue value(own_list_value(model_, after));
  return report_leaf(any_value, MOP_VALUE_SET, value.data());
}

}  // namespace

bool walk_changes(const Model& model, const Change& changes, std::span<const PathStep> steps,
                  DiffIterator iterator, void* state) {
  DiffWalk walk(model, iterator, state);
  walk.below(changes, steps);
  return !walk.failed();
}

}  // namespace tarnd::confd
