#pragma once

#include <cstddef>
#include <cstring>
#include <span>
#include <string>
#include <string_view>

#include "standalone/store/schema.h"

namespace tarnd::store {

/// What identifies an instance among those of one node of the model: an entry's keys, or the value
/// of a leaf-list; nothing for other nodes. The texts are canonical, as in a PathStep.
using InstanceKey = std::span<const std::string>;
/// The same without memory of its own.
using InstanceKeyView = std::span<const std::string_view>;

std::size_t key_hash(const lyd_node* node);
std::size_t key_hash(InstanceKey key);
std::size_t key_hash(InstanceKeyView key);

/// Whether the node has this key. It must be an instance of the model's node that the key is for.
bool has_key(const lyd_node* node, InstanceKey key);
bool has_key(const lyd_node* node, InstanceKeyView key);

/// Compares two leaves, or values of leaf-lists, of one model.
inline bool same_value(const lyd_node* left, const lyd_node* right) {
  // libyang stores equal texts once.
  const char* l = lyd_get_value(left);
  const char* r = lyd_get_value(right);
  return l == r || std::strcmp(l, r) == 0;
}

inline bool same_keys(const lyd_node* left, const lyd_node* right) {
  const lyd_node* l = lyd_child(left);
  const lyd_node* r = lyd_child(right);
  for (; l != nullptr && lysc_is_key(l->schema); l = l->next, r = r->next) {
    if (!same_value(l, r)) return false;
  }
  return true;
}

/// The same node of the model with the same key.
inline bool same_instance(const lyd_node* left, const lyd_node* right) {
  if (left->schema != right->schema) return false;
  if (left->schema->nodetype == LYS_LIST) return same_keys(left, right);
  return left->schema->nodetype != LYS_LEAFLIST || same_value(left, right);
}

}  // namespace tarnd::store
