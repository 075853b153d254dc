#include "standalone/store/list_index.h"

#include <algorithm>
#include <functional>

#include "standalone/store/datastore.h"

namespace tarnd::store {
namespace {

std::size_t mix(std::size_t seed, std::string_view text) {
  return seed * 31 + std::hash<std::string_view>{}(text);
}

}  // namespace

std::size_t ListIndex::Hash::operator()(const lyd_node* entry) const {
  std::size_t hash = 0;
  const lyd_node* key = lyd_child(entry);
  for (std::size_t i = 0; i < schema_of(entry).num_keys; ++i, key = key->next) {
    hash = mix(hash, value_text(key));
  }
  return hash;
}

std::size_t ListIndex::Hash::operator()(KeyTexts keys) const {
  std::size_t hash = 0;
  for (const std::string& key : keys) hash = mix(hash, key);
  return hash;
}

bool ListIndex::Equal::operator()(KeyTexts keys, const lyd_node* entry) const {
  const lyd_node* key = lyd_child(entry);
  for (const std::string& text : keys) {
    if (value_text(key) != text) return false;
    key = key->next;
  }
  return true;
}

ListIndex::ListIndex(const lyd_node* parent, const SchemaNode& list) {
  lyd_node* entry = nullptr;
  if (lyd_find_sibling_val(lyd_child(parent), list.lysc, nullptr, 0, &entry) != LY_SUCCESS) return;
  // Entries of one list stand side by side.
  for (; entry != nullptr && entry->schema == list.lysc; entry = entry->next) {
    ordered_.push_back(entry);
  }
  if (!std::is_sorted(ordered_.begin(), ordered_.end(), key_less)) {
    std::sort(ordered_.begin(), ordered_.end(), key_less);
  }
  by_key_.insert(ordered_.begin(), ordered_.end());
}

lyd_node* ListIndex::find(std::span<const std::string> keys) const {
  const auto found = by_key_.find(keys);
  return found == by_key_.end() ? nullptr : *found;
}

bool ListIndex::insert(lyd_node* entry) {
  by_key_.insert(entry);
  if (ordered_.empty() || key_less(ordered_.back(), entry)) {
    ordered_.push_back(entry);
    return true;
  }
  ordered_.insert(std::lower_bound(ordered_.begin(), ordered_.end(), entry, key_less), entry);
  return false;
}

void ListIndex::erase(lyd_node* entry) {
  by_key_.erase(entry);
  const auto at = std::lower_bound(ordered_.begin(), ordered_.end(), entry, key_less);
  if (at != ordered_.end() && *at == entry) ordered_.erase(at);
}

ListIndex* IndexSet::made(const lyd_node* parent, const SchemaNode& list) {
  const auto lists = by_parent_.find(parent);
  if (lists == by_parent_.end()) return nullptr;
  for (auto& entry : lists->second) {
    if (entry.first == &list) return &entry.second;
  }
  return nullptr;
}

ListIndex& IndexSet::of(const lyd_node* parent, const SchemaNode& list) {
  ListIndex* const index = made(parent, list);
  if (index != nullptr) return *index;
  return by_parent_[parent].emplace_back(&list, ListIndex(parent, list)).second;
}

void IndexSet::forget_below(const lyd_node* node) {
  if (by_parent_.empty()) return;
  by_parent_.erase(node);
  for (const lyd_node* child = lyd_child(node); child != nullptr; child = child->next) {
    if ((child->schema->nodetype & (LYS_CONTAINER | LYS_LIST)) != 0) forget_below(child);
  }
}

}  // namespace tarnd::store
