#include "standalone/store/defaults.h"

#include <cstdint>

#include "standalone/store/datastore.h"
#include "standalone/store/libyang_compat.h"

namespace tarnd::store {
namespace {

constexpr std::uint32_t kDefault = LYD_DEFAULT;

bool is_inner(const lyd_node* node) {
  return (node->schema->nodetype & (LYS_CONTAINER | LYS_LIST)) != 0;
}

bool exists(const lyd_node* parent, const lysc_node* schema) {
  return child_instance(parent, *static_cast<const SchemaNode*>(schema->priv)) != nullptr;
}

// Some node of the case, those of choices inside it included, exists.
bool in_use(const lyd_node* parent, const lysc_node* one) {
  for (const lysc_node* node = lysc_node_child(one); node != nullptr; node = node->next) {
    const bool around = (node->nodetype & (LYS_CHOICE | LYS_CASE)) != 0;
    if (around ? in_use(parent, node) : exists(parent, node)) return true;
  }
  return false;
}

const lysc_node* case_in_use(const lyd_node* parent, const lysc_node* choice) {
  for (const lysc_node* one = lysc_node_child(choice); one != nullptr; one = one->next) {
    if (in_use(parent, one)) return one;
  }
  const lysc_node_case* standard = reinterpret_cast<const lysc_node_choice*>(choice)->dflt;
  return standard != nullptr ? &standard->node : nullptr;
}

bool is_empty_container(const lyd_node* node) {
  if (schema_of(node).kind != NodeKind::kContainer) return false;
  for (const lyd_node* child = lyd_child(node); child != nullptr; child = child->next) {
    if ((child->flags & kDefault) == 0) return false;
  }
  return true;
}

void add_leaf(lyd_node* parent, const lysc_node* leaf) {
  const lyd_value* value = reinterpret_cast<const lysc_node_leaf*>(leaf)->dflt;
  if (value == nullptr || exists(parent, leaf)) return;
  lyd_node* node = nullptr;
  lyd_new_term(parent, leaf->module, leaf->name, lyd_value_get_canonical(leaf->module->ctx, value),
               0, &node);
  if (node == nullptr) throw InputError(take_libyang_error(leaf->module->ctx));
  node->flags |= kDefault;
}

void add_container(lyd_node* parent, const lysc_node* container) {
  if ((container->flags & LYS_PRESENCE) != 0 || exists(parent, container)) return;
  lyd_node* node = nullptr;
  lyd_new_inner(parent, container->module, container->name, 0, &node);
  bring_own_defaults(node);
}

void add_missing(lyd_node* parent, const lysc_node* around) {
  for (const lysc_node* node = lysc_node_child(around); node != nullptr; node = node->next) {
    if (node->nodetype == LYS_LEAF) {
      add_leaf(parent, node);
    } else if (node->nodetype == LYS_CONTAINER) {
      add_container(parent, node);
    } else if (node->nodetype == LYS_CHOICE) {
      const lysc_node* one = case_in_use(parent, node);
      if (one != nullptr) add_missing(parent, one);
    }
  }
}

}  // namespace

void bring_own_defaults(lyd_node* node) {
  add_missing(node, node->schema);
  // Adding a leaf took the mark away.
  if (is_empty_container(node)) node->flags |= kDefault;
}

void bring_defaults(lyd_node* tree) {
  lyd_node* next = nullptr;
  for (lyd_node* child = lyd_child(tree); child != nullptr; child = next) {
    next = child->next;
    if (is_inner(child)) bring_defaults(child);
  }
  bring_own_defaults(tree);
}

}  // namespace tarnd::store
