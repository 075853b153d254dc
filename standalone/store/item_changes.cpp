#include "standalone/store/item_changes.h"

#include <utility>

#include "standalone/store/datastore.h"
#include "standalone/store/edit_log.h"

namespace tarnd::store {
namespace {

bool is_inner(const lyd_node* node) {
  return (node->schema->nodetype & (LYS_CONTAINER | LYS_LIST)) != 0;
}

// The item that the node is; none for a container without presence, which is what is in it.
std::optional<std::string> item_of(const lyd_node* node) {
  switch (schema_of(node).kind) {
    case NodeKind::kContainer:
      return std::nullopt;
    case NodeKind::kLeaf:
      if ((node->flags & LYD_DEFAULT) != 0) return std::nullopt;
      return std::string(value_text(node));
    default:
      return "";
  }
}

// libyang finds a leaf by its value, if its parent has few children.
const lyd_node* counterpart(const lyd_node* parent, const lyd_node* node) {
  if ((node->schema->nodetype & (LYS_LEAF | LYS_CONTAINER)) != 0) {
    return child_instance(parent, schema_of(node));
  }
  lyd_node* found = nullptr;
  lyd_find_sibling_first(lyd_child(parent), node, &found);
  return found;
}

class Walk {
 public:
  void take(const EditRecord& record) {
    const lyd_node* node = record.after != nullptr ? record.after : record.before;
    if (node == nullptr) return;  // created and deleted again
    if (!record.tracked()) return take(node, record.before, record.after);
    const std::size_t around = enter(node);
    for (const auto& child : record.children) take(*child);
    path_.resize(around);
  }

  std::vector<ItemChange> result() { return std::move(changes_); }

 private:
  // Two instances of one node, or one of them and null. The node is one that is not null.
  void take(const lyd_node* node, const lyd_node* before, const lyd_node* after) {
    const std::size_t around = enter(node);
    auto old_item = before != nullptr ? item_of(before) : std::nullopt;
    auto new_item = after != nullptr ? item_of(after) : std::nullopt;
    if (old_item != new_item) changes_.push_back({path_, std::move(old_item), std::move(new_item)});
    if (is_inner(node)) take_content(before, after);
    path_.resize(around);
  }

  void take_content(const lyd_node* before, const lyd_node* after) {
    const lyd_node* old_child = before != nullptr ? lyd_child_no_keys(before) : nullptr;
    for (; old_child != nullptr; old_child = old_child->next) {
      take(old_child, old_child, after != nullptr ? counterpart(after, old_child) : nullptr);
    }
    const lyd_node* new_child = after != nullptr ? lyd_child_no_keys(after) : nullptr;
    for (; new_child != nullptr; new_child = new_child->next) {
      if (before != nullptr && counterpart(before, new_child) != nullptr) continue;
      take(new_child, nullptr, new_child);
    }
  }

  std::size_t enter(const lyd_node* node) {
    const std::size_t around = path_.size();
    path_ += step_of(node);
    return around;
  }

  std::string path_;
  std::vector<ItemChange> changes_;
};

}  // namespace

std::vector<ItemChange> item_changes(const EditRecord& root) {
  Walk walk;
  walk.take(root);
  return walk.result();
}

std::vector<ItemChange> reversed(std::vector<ItemChange> changes) {
  for (ItemChange& change : changes) std::swap(change.before, change.after);
  return changes;
}

}  // namespace tarnd::store
