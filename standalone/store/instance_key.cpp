#include "standalone/store/instance_key.h"

#include <functional>
#include <string_view>

#include "standalone/store/datastore.h"

namespace tarnd::store {
namespace {

std::size_t mix(std::size_t seed, std::string_view text) {
  return seed * 31 + std::hash<std::string_view>{}(text);
}

// The first of the nodes whose values are the key, and their number.
struct KeyNodes {
  const lyd_node* first = nullptr;
  std::size_t count = 0;
};

KeyNodes key_nodes(const lyd_node* node) {
  const SchemaNode& schema = schema_of(node);
  if (schema.kind == NodeKind::kList) return {lyd_child(node), schema.num_keys};
  if (schema.kind == NodeKind::kLeafList) return {node, 1};
  return {};
}

template <typename Key>
std::size_t hash_of(Key key) {
  std::size_t hash = 0;
  for (const auto& text : key) hash = mix(hash, text);
  return hash;
}

template <typename Key>
bool is_key_of(const lyd_node* node, Key key) {
  const KeyNodes keys = key_nodes(node);
  if (keys.count != key.size()) return false;
  const lyd_node* own = keys.first;
  for (const auto& text : key) {
    if (text != lyd_get_value(own)) return false;
    own = own->next;
  }
  return true;
}

}  // namespace

std::size_t key_hash(const lyd_node* node) {
  std::size_t hash = 0;
  const KeyNodes keys = key_nodes(node);
  const lyd_node* key = keys.first;
  for (std::size_t i = 0; i < keys.count; ++i, key = key->next) hash = mix(hash, value_text(key));
  return hash;
}

std::size_t key_hash(InstanceKey key) {
  return hash_of(key);
}

std::size_t key_hash(InstanceKeyView key) {
  return hash_of(key);
}

bool has_key(const lyd_node* node, InstanceKey key) {
  return is_key_of(node, key);
}

bool has_key(const lyd_node* node, InstanceKeyView key) {
  return is_key_of(node, key);
}

}  // namespace tarnd::store
