#include "standalone/store/edit_places.h"

#include <utility>

namespace tarnd::store {
namespace {

std::string joined(const std::vector<std::string>& keys) {
  std::string text;
  for (const std::string& key : keys) text += quote_key(key) + ' ';
  return text;
}

std::string keys_of(const lyd_node* entry) {
  std::vector<std::string> keys;
  const lyd_node* key = lyd_child(entry);
  for (unsigned i = 0; i < schema_of(entry).num_keys; ++i, key = key->next) {
    keys.emplace_back(lyd_get_value(key));
  }
  return joined(keys);
}

}  // namespace

EditPlaces::EditPlaces(ReadChange edit) : edit_(std::move(edit)) {
  lines_.insert(edit_.notes.lines.begin(), edit_.notes.lines.end());
  add_children(edit_.root.get());
}

void EditPlaces::add_children(const lyd_node* parent) {
  for (const lyd_node* node = lyd_child(parent); node != nullptr; node = node->next) {
    nodes_[{parent, node->schema, {}}].push_back(node);
    if (schema_of(node).kind == NodeKind::kList) {
      nodes_[{parent, node->schema, keys_of(node)}].push_back(node);
    }
    add_children(node);
  }
}

EditPlaces::Nodes EditPlaces::nodes_in(const Slot& slot) const {
  const auto found = nodes_.find(slot);
  return found != nodes_.end() ? found->second : Nodes();
}

// Everything in the node is as the edit leaves it, whether the edit names it or not.
bool EditPlaces::decides_all(const lyd_node* node) const {
  const auto found = edit_.notes.operations.find(node);
  return found != edit_.notes.operations.end() && found->second != Operation::kMerge &&
         found->second != Operation::kNone;
}

EditPlace EditPlaces::place_of(const Nodes& nodes) const {
  EditPlace place;
  std::size_t places = 0;
  for (const lyd_node* node : nodes) {
    // A node may be there only to name what is in it.
    const bool edits =
        edit_.notes.default_operation != Operation::kNone || edit_.notes.noted.contains(node);
    if (!edits) continue;
    place.touched = true;
    const auto [first, last] = lines_.equal_range(node);
    for (auto line = first; line != last; ++line, ++places) place.line = line->second;
  }
  if (places != 1) place.line.reset();
  return place;
}

EditPlace EditPlaces::place_of_removal(const lyd_node* parent, const SchemaNode& leaf) const {
  const auto found = edit_.notes.removals.find(parent);
  if (found == edit_.notes.removals.end()) return {};
  for (const LeafRemoval& removal : found->second) {
    if (removal.leaf == &leaf) return {true, removal.line};
  }
  return {};
}

EditPlace EditPlaces::of(const Path& path) const {
  EditPlace around;
  // The edit then replaces the whole configuration, but no element of its text says so.
  around.touched = edit_.notes.default_operation == Operation::kReplace;
  Nodes nodes = {edit_.root.get()};
  for (std::size_t i = 1; i < path.steps().size(); ++i) {
    const lyd_node* parent = nodes.front();
    if (decides_all(parent)) around = place_of({parent});
    const PathStep& step = path.steps()[i];
    const bool one_entry = step.node->kind == NodeKind::kList && step.keyed;
    nodes = nodes_in({parent, step.node->lysc, one_entry ? joined(step.keys) : std::string()});
    if (!nodes.empty()) continue;
    const EditPlace removal = place_of_removal(parent, *step.node);
    return removal.touched ? removal : around;
  }
  const EditPlace own = place_of(nodes);
  return own.touched ? own : around;
}

}  // namespace tarnd::store
