#include "standalone/store/defaults.h"

#include <cstdint>

#include "standalone/store/schema.h"

namespace tarnd::store {
namespace {

bool is_inner(const lyd_node* node) {
  return (node->schema->nodetype & (LYS_CONTAINER | LYS_LIST)) != 0;
}

// A container that holds nothing given is as good as none, which libyang notes as a default.
bool mark_empty_containers(lyd_node* node) {
  bool empty = schema_of(node).kind == NodeKind::kContainer;
  for (lyd_node* child = lyd_child(node); child != nullptr; child = child->next) {
    const bool child_is_empty =
        is_inner(child) ? mark_empty_containers(child) : (child->flags & LYD_DEFAULT) != 0;
    empty = empty && child_is_empty;
  }
  if (empty) node->flags |= LYD_DEFAULT;
  return empty;
}

}  // namespace

void bring_defaults(lyd_node* tree) {
  // libyang leaves containers that count as defaults without their own defaults, and an empty one
  // that somebody gave counts as one.
  lyd_node* node = nullptr;
  LYD_TREE_DFS_BEGIN(tree, node) {
    if (is_inner(node)) node->flags &= ~static_cast<std::uint32_t>(LYD_DEFAULT);
    LYD_TREE_DFS_END(tree, node);
  }
  lyd_new_implicit_tree(tree, LYD_IMPLICIT_NO_STATE, nullptr);
  mark_empty_containers(tree);
}

}  // namespace tarnd::store
