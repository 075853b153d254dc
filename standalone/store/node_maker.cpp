#include "standalone/store/node_maker.h"

#include <libyang/plugins_types.h>

#include <cstdlib>
#include <memory>
#include <new>

#include "standalone/store/libyang_compat.h"

namespace tarnd::store {
namespace {

// libyang's functions look for the node of the model by its name, then for the place among the
// siblings, and enter every fourth and later sibling into a hash table. A document in the model's
// order needs none of that: its next node is the last of its siblings, and where there is no table
// libyang looks at the siblings one by one. So the nodes are put together here, member by member,
// as tree_data.h describes them. What is not that simple is left to libyang: entries and values of
// leaf-lists, which may be many, and whatever comes out of order or below a node with a table.

constexpr std::uint32_t kDefault = LYD_DEFAULT;

struct FreeMemory {
  void operator()(void* memory) const { std::free(memory); }
};

// libyang will free() it.
template <typename Node>
std::unique_ptr<Node, FreeMemory> cleared_memory() {
  auto* memory = static_cast<Node*>(std::calloc(1, sizeof(Node)));
  if (memory == nullptr) throw std::bad_alloc();
  return std::unique_ptr<Node, FreeMemory>(memory);
}

// True when the instance would be the last child, and no table needs to know of it.
bool is_simple(const lyd_node* parent, const SchemaNode& schema) {
  const auto* inner = reinterpret_cast<const lyd_node_inner*>(parent);
  if (schema.hash == 0 || inner->children_ht != nullptr) return false;
  return inner->child == nullptr || schema_of(inner->child->prev).position <= schema.position;
}

void append(lyd_node* parent, lyd_node* node) {
  auto* inner = reinterpret_cast<lyd_node_inner*>(parent);
  node->parent = inner;
  if (inner->child == nullptr) {
    inner->child = node;
    node->prev = node;
    return;
  }
  node->prev = inner->child->prev;
  node->prev->next = node;
  inner->child->prev = node;
}

void fill(lyd_node& node, const SchemaNode& schema, std::uint32_t flags) {
  node.hash = schema.hash;
  node.flags = flags;
  node.schema = schema.lysc;
}

// A container counts as a default until something is given in it.
void unmark_defaults(lyd_node* node) {
  while (node != nullptr && (node->flags & kDefault) != 0) {
    node->flags &= ~kDefault;
    node = node->parent != nullptr ? &node->parent->node : nullptr;
  }
}

bool store_value(const SchemaNode& leaf, const std::string& text, bool canonical,
                 lyd_value& value) {
  const lysc_type* type = reinterpret_cast<const lysc_node_leaf*>(leaf.lysc)->type;
  ly_err_item* error = nullptr;
  const LY_ERR result = type->plugin->store(leaf.lysc->module->ctx, type, text.data(), text.size(),
                                            0, canonical ? LY_VALUE_CANON : LY_VALUE_JSON, nullptr,
                                            LYD_HINT_DATA, leaf.lysc, &value, nullptr, &error);
  ly_err_free(error);
  return result == LY_SUCCESS;
}

// The hash is that of the names of the module and of the node.
lyd_node* remember_hash(const SchemaNode& schema, const lyd_node* node) {
  schema.hash = node->hash;
  return const_cast<lyd_node*>(node);
}

}  // namespace

lyd_node* make_container(lyd_node* parent, const SchemaNode& container) {
  if (!is_simple(parent, container)) {
    lyd_node* node = nullptr;
    lyd_new_inner(parent, container.lysc->module, container.name.c_str(), 0, &node);
    return remember_hash(container, node);
  }
  lyd_node_inner* made = cleared_memory<lyd_node_inner>().release();
  const bool presence = container.kind == NodeKind::kPresence;
  fill(made->node, container, presence ? LYD_NEW : LYD_NEW | LYD_DEFAULT);
  append(parent, &made->node);
  if (presence) unmark_defaults(parent);
  return &made->node;
}

lyd_node* make_term(lyd_node* parent, const SchemaNode& leaf, const std::string& value,
                    bool canonical) {
  if (leaf.kind == NodeKind::kLeafList) {
    return new_term(parent, leaf.lysc, value.c_str(), canonical);
  }
  if (!is_simple(parent, leaf)) {
    lyd_node* node = new_term(parent, leaf.lysc, value.c_str(), canonical);
    return node != nullptr ? remember_hash(leaf, node) : nullptr;
  }
  auto memory = cleared_memory<lyd_node_term>();
  if (!store_value(leaf, value, canonical, memory->value)) return nullptr;
  lyd_node_term* made = memory.release();
  fill(made->node, leaf, LYD_NEW);
  append(parent, &made->node);
  unmark_defaults(parent);
  return &made->node;
}

}  // namespace tarnd::store
