#include "standalone/confd/changes.h"

#include <algorithm>

namespace tarnd::confd {

using store::Change;
using store::PathStep;

const lyd_node* node_of(const Change& change) {
  if (change.after != nullptr) return change.after;
  if (change.before != nullptr) return change.before;
  return change.values_after.empty() ? change.values_before.front() : change.values_after.front();
}

bool names(const PathStep& step, const lyd_node* node) {
  if (node->schema != step.node->lysc) return false;
  if (!step.keyed || step.node->kind != store::NodeKind::kList) return true;
  if (step.keys.size() != step.node->num_keys) return false;
  const lyd_node* key = lyd_child(node);
  return std::all_of(step.keys.begin(), step.keys.end(), [&](const std::string& text) {
    const bool same = store::value_text(key) == text;
    key = key->next;
    return same;
  });
}

const Change* find_change(const Change& change, std::span<const PathStep> steps) {
  if (steps.empty()) return &change;
  for (const Change& child : change.children) {
    if (names(steps.front(), node_of(child))) return find_change(child, steps.subspan(1));
  }
  return nullptr;
}

}  // namespace tarnd::confd
