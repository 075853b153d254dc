#include "standalone/confd/selector.h"

#include <algorithm>

namespace tarnd::confd {
namespace {

using store::NodeKind;
using store::SchemaNode;

std::string_view take_step(std::string_view& path) {
  const std::size_t slash = std::min(path.find('/'), path.size());
  const std::string_view step = path.substr(0, slash);
  path.remove_prefix(std::min(slash + 1, path.size()));
  return step;
}

std::string_view without_prefix(const store::Schema& schema, std::string_view name) {
  const std::size_t colon = name.find(':');
  const bool own_prefix =
      colon != std::string_view::npos && name.substr(0, colon) == schema.prefix();
  return own_prefix ? name.substr(colon + 1) : name;
}

}  // namespace

std::optional<Selector> Selector::make(const store::Schema& schema, const SchemaNode& result,
                                       std::string_view path) {
  Selector selector;
  selector.target_ = &result;
  if (path.empty()) return std::nullopt;
  while (!path.empty()) {
    const std::string_view step = take_step(path);
    if (step == ".") continue;
    const bool up = step == "..";
    const SchemaNode* next =
        up ? selector.target_->parent : selector.target_->child(without_prefix(schema, step));
    if (next == nullptr || (!up && next->kind == NodeKind::kList)) return std::nullopt;
    selector.steps_.push_back(up ? nullptr : next);
    selector.target_ = next;
  }
  return selector;
}

const lyd_node* Selector::node(const store::Datastore& datastore, const lyd_node* result) const {
  const lyd_node* node = result;
  for (const SchemaNode* step : steps_) {
    if (node == nullptr) return nullptr;
    if (step == nullptr) {
      node = lyd_parent(node);
    } else if (step->kind == NodeKind::kLeafList) {
      const auto values = datastore.leaf_list(node, *step);
      node = values.empty() ? nullptr : values.front();
    } else {
      node = datastore.child(node, *step);
    }
  }
  return node;
}

OwnedValue Selector::value(const Model& model, const store::Datastore& datastore,
                           const lyd_node* result) const {
  const lyd_node* found = node(datastore, result);
  if (found == nullptr) return {};
  switch (target_->kind) {
    case NodeKind::kLeaf:
      return OwnedValue(own_leaf_value(model, found));
    case NodeKind::kLeafList:
      if (found == result) return OwnedValue(own_leaf_value(model, found));
      return OwnedValue(own_list_value(model, datastore.leaf_list(lyd_parent(found), *target_)));
    default:
      return OwnedValue(tag_value(model, *target_));
  }
}

}  // namespace tarnd::confd
