#include "standalone/confd/place.h"

#include <vector>

namespace tarnd::confd {
namespace {

using store::NodeKind;
using store::PathStep;

lyd_node* keyed_leaf(const store::Datastore& datastore, const lyd_node* parent,
                     const PathStep& step) {
  for (lyd_node* value : datastore.leaf_list(parent, *step.node)) {
    if (step.keys.size() == 1 && store::value_text(value) == step.keys.front()) return value;
  }
  return nullptr;
}

lyd_node* step_down(const store::Datastore& datastore, const lyd_node* parent,
                    const PathStep& step) {
  switch (step.node->kind) {
    case NodeKind::kList:
      return step.keyed ? datastore.entry(parent, *step.node, step.keys) : nullptr;
    case NodeKind::kLeafList:
      return step.keyed ? keyed_leaf(datastore, parent, step) : nullptr;
    default:
      return datastore.child(parent, *step.node);
  }
}

}  // namespace

Place find_place(const store::Datastore& datastore, const store::Path& path) {
  const std::vector<PathStep>& steps = path.steps();
  Place place{&datastore.schema().root(), datastore.root(), nullptr, false, true};
  for (std::size_t i = 1; i < steps.size(); ++i) {
    const PathStep& step = steps[i];
    place.schema = step.node;
    place.keyed = step.keyed;
    place.parent = place.node;
    place.node = place.node != nullptr ? step_down(datastore, place.node, step) : nullptr;
    // Of a choice, the tree has only the containers of the chosen branch.
    const bool implied = step.node->kind == NodeKind::kContainer && place.exists;
    place.exists = place.node != nullptr || implied;
  }
  return place;
}

}  // namespace tarnd::confd
