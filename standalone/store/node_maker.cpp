#include "standalone/store/node_maker.h"

#include <libyang/plugins_types.h>

#include <cstdlib>
#include <memory>
#include <new>

#include "standalone/store/libyang_compat.h"

namespace tarnd::store {
namespace {

// libyang's functions look for the node of the model by its name, then for the place among the
// siblings, and enter most siblings into a hash table. Nodes mostly come in the model's order, and
// need none of that: without a table libyang looks at the siblings one by one, and it makes the
// table itself before it next adds a sibling. So nodes are put together here, member by member, as
// tree_data.h describes them. The rest is left to libyang: the content of entries, whose hash only
// libyang can compute, values of leaf-lists, and all that comes to a parent that has a table.

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

bool has_table(const lyd_node* parent) {
  return reinterpret_cast<const lyd_node_inner*>(parent)->children_ht != nullptr;
}

// Whether the instance's hash is known, and no table has to contain the instance.
bool is_simple(const lyd_node* parent, const SchemaNode& schema) {
  return schema.hash != 0 && !has_table(parent);
}

// Inserts the node after its siblings that come before it, or at the same place, in the model.
void insert(lyd_node* parent, lyd_node* node) {
  auto* inner = reinterpret_cast<lyd_node_inner*>(parent);
  node->parent = inner;
  lyd_node* first = inner->child;
  if (first == nullptr) {
    inner->child = node;
    node->prev = node;
    return;
  }
  const std::size_t position = schema_of(node).position;
  lyd_node* next = nullptr;
  lyd_node* before = first->prev;
  while (before != nullptr && schema_of(before).position > position) {
    next = before;
    before = before != first ? before->prev : nullptr;
  }
  node->next = next;
  // The first sibling's predecessor is the last one.
  node->prev = before != nullptr ? before : first->prev;
  lyd_node*& from_before = before != nullptr ? before->next : inner->child;
  lyd_node*& from_next = next != nullptr ? next->prev : first->prev;
  from_before = node;
  from_next = node;
}

void fill(lyd_node& node, const SchemaNode& schema, std::uint32_t flags) {
  node.hash = schema.hash;
  node.flags = flags;
  node.schema = schema.lysc;
}

// A container counts as a default until it gets content.
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
  insert(parent, &made->node);
  if (presence) unmark_defaults(parent);
  return &made->node;
}

lyd_node* make_entry(lyd_node* parent, const SchemaNode& list, std::span<const std::string> keys,
                     bool canonical) {
  if (has_table(parent) || kKeepsListsSorted) return new_entry(parent, list.lysc, keys, canonical);
  // Below a parent of its own, libyang makes it without a look at siblings.
  lyd_node_inner alone{};
  alone.node.schema = parent->schema;
  alone.node.prev = &alone.node;
  lyd_node* node = new_entry(&alone.node, list.lysc, keys, canonical);
  if (node == nullptr) return nullptr;
  insert(parent, node);
  unmark_defaults(parent);
  return node;
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
  insert(parent, &made->node);
  unmark_defaults(parent);
  return &made->node;
}

}  // namespace tarnd::store
