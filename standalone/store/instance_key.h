#pragma once

#include <cstddef>
#include <span>
#include <string>

#include "standalone/store/schema.h"

namespace tarnd::store {

/// What tells the instances of one node of the model apart: an entry's keys, the value of a
/// leaf-list, nothing for the others. As texts they are canonical, as in a PathStep.
using InstanceKey = std::span<const std::string>;

std::size_t key_hash(const lyd_node* node);
std::size_t key_hash(InstanceKey key);

/// True when the node, an instance of the model's node that the key is meant for, has this key.
bool has_key(const lyd_node* node, InstanceKey key);

/// Two leaves or values of leaf-lists of one model.
bool same_value(const lyd_node* left, const lyd_node* right);

/// The same node of the model with the same key.
bool same_instance(const lyd_node* left, const lyd_node* right);

}  // namespace tarnd::store
