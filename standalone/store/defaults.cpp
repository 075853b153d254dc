#include "standalone/store/defaults.h"

#include <cstdint>

#include "standalone/store/datastore.h"
#include "standalone/store/libyang_compat.h"
#include "standalone/store/node_maker.h"
#include "standalone/store/transaction.h"

namespace tarnd::store {
namespace {

constexpr std::uint32_t kDefault = LYD_DEFAULT;

void bring_own_defaults(lyd_node* node);

bool is_inner(const lyd_node* node) {
  return (node->schema->nodetype & (LYS_CONTAINER | LYS_LIST)) != 0;
}

bool exists(const lyd_node* parent, const lysc_node* schema) {
  return child_instance(parent, *static_cast<const SchemaNode*>(schema->priv)) != nullptr;
}

// Calls `take` with each data node of the case, those of choices inside it included.
template <typename Take>
void for_each_node(const lysc_node* one, Take take) {
  for (const lysc_node* node = lysc_node_child(one); node != nullptr; node = node->next) {
    if ((node->nodetype & (LYS_CHOICE | LYS_CASE)) != 0) {
      for_each_node(node, take);
    } else {
      take(*static_cast<const SchemaNode*>(node->priv));
    }
  }
}

bool in_use(const lyd_node* parent, const lysc_node* one) {
  bool given = false;
  for_each_node(one, [&](const SchemaNode& schema) {
    const lyd_node* node = child_instance(parent, schema);
    given = given || (node != nullptr && has_given_content(node));
  });
  return given;
}

// An empty container in the text does not bring its case into use.
void drop_empty_containers(const lyd_node* parent, const lysc_node* one) {
  for_each_node(one, [&](const SchemaNode& schema) {
    lyd_node* node = child_instance(parent, schema);
    if (node != nullptr) free_node(node);
  });
}

// The case that is in use, or else the default case or null. Removes the empty containers of all
// other cases.
const lysc_node* settle_case(const lyd_node* parent, const lysc_node* choice) {
  const lysc_node* used = nullptr;
  for (const lysc_node* one = lysc_node_child(choice); one != nullptr; one = one->next) {
    if (in_use(parent, one)) {
      used = one;
    } else {
      drop_empty_containers(parent, one);
    }
  }
  if (used != nullptr) return used;
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
  lyd_node* node = make_term(parent, *static_cast<const SchemaNode*>(leaf->priv),
                             lyd_value_get_canonical(leaf->module->ctx, value), false);
  if (node == nullptr) throw InputError(take_libyang_error(leaf->module->ctx));
  node->flags |= kDefault;
}

void add_container(lyd_node* parent, const lysc_node* container) {
  if ((container->flags & LYS_PRESENCE) != 0 || exists(parent, container)) return;
  bring_own_defaults(make_container(parent, *static_cast<const SchemaNode*>(container->priv)));
}

void add_missing(lyd_node* parent, const lysc_node* around) {
  for (const lysc_node* node = lysc_node_child(around); node != nullptr; node = node->next) {
    if (node->nodetype == LYS_LEAF) {
      add_leaf(parent, node);
    } else if (node->nodetype == LYS_CONTAINER) {
      add_container(parent, node);
    } else if (node->nodetype == LYS_CHOICE) {
      const lysc_node* one = settle_case(parent, node);
      if (one != nullptr) add_missing(parent, one);
    }
  }
}

// Adds the defaults of the node alone: the nodes below it have theirs already.
void bring_own_defaults(lyd_node* node) {
  add_missing(node, node->schema);
  // Adding a leaf removed the container's mark.
  if (is_empty_container(node)) node->flags |= kDefault;
}

}  // namespace

void bring_defaults(lyd_node* tree) {
  lyd_node* next = nullptr;
  for (lyd_node* child = lyd_child(tree); child != nullptr; child = next) {
    next = child->next;
    if (is_inner(child)) bring_defaults(child);
  }
  bring_own_defaults(tree);
}

}  // namespace tarnd::store
