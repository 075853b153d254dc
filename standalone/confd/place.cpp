#include "standalone/confd/place.h"

#include <string_view>
#include <vector>

namespace tarnd::confd {
namespace {

using store::InstanceKeyView;
using store::NodeKind;
using store::SchemaNode;

lyd_node* keyed_leaf(const store::Datastore& datastore, const lyd_node* parent,
                     const SchemaNode& node, InstanceKeyView keys) {
  for (lyd_node* value : datastore.leaf_list(parent, node)) {
    if (keys.size() == 1 && store::value_text(value) == keys.front()) return value;
  }
  return nullptr;
}

lyd_node* instance(const store::Datastore& datastore, const lyd_node* parent,
                   const SchemaNode& node, bool keyed, InstanceKeyView keys) {
  switch (node.kind) {
    case NodeKind::kList:
      return keyed ? datastore.entry(parent, node, keys) : nullptr;
    case NodeKind::kLeafList:
      return keyed ? keyed_leaf(datastore, parent, node, keys) : nullptr;
    default:
      return datastore.child(parent, node);
  }
}

}  // namespace

Place root_place(const store::Datastore& datastore) {
  return {&datastore.schema().root(), datastore.root(), nullptr, false, true};
}

Place step_down(const store::Datastore& datastore, const Place& around, const SchemaNode& node,
                bool keyed, InstanceKeyView keys) {
  Place place;
  place.schema = &node;
  place.keyed = keyed;
  place.parent = around.node;
  if (around.node != nullptr) place.node = instance(datastore, around.node, node, keyed, keys);
  // Of a choice, the tree has only the containers of the chosen branch.
  const bool implied = node.kind == NodeKind::kContainer && around.exists;
  place.exists = place.node != nullptr || implied;
  return place;
}

bool names_many(const Place& place) {
  return !place.keyed &&
         (place.schema->kind == NodeKind::kList || place.schema->kind == NodeKind::kLeafList);
}

Place find_place(const store::Datastore& datastore, const store::Path& path) {
  Place place = root_place(datastore);
  for (std::size_t i = 1; i < path.steps().size(); ++i) {
    const store::PathStep& step = path.steps()[i];
    const std::vector<std::string_view> keys(step.keys.begin(), step.keys.end());
    place = step_down(datastore, place, *step.node, step.keyed, keys);
  }
  return place;
}

}  // namespace tarnd::confd
