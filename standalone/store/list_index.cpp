#include "standalone/store/list_index.h"

#include <algorithm>

#include "standalone/store/datastore.h"

namespace tarnd::store {
namespace {

// Up to this many entries are looked up in the order one by one; for more, one pass over the whole
// order costs less.
constexpr int kHandful = 16;

}  // namespace

ListIndex::ListIndex(const lyd_node* parent, const SchemaNode& list) {
  lyd_node* entry = nullptr;
  if (lyd_find_sibling_val(lyd_child(parent), list.lysc, nullptr, 0, &entry) != LY_SUCCESS) return;
  // Entries of one list are neighbours.
  for (; entry != nullptr && entry->schema == list.lysc; entry = entry->next) {
    ordered_.push_back(entry);
  }
  if (!std::is_sorted(ordered_.begin(), ordered_.end(), key_less)) {
    std::sort(ordered_.begin(), ordered_.end(), key_less);
  }
  by_key_.insert(ordered_.begin(), ordered_.end());
}

lyd_node* ListIndex::find(InstanceKey keys) const {
  const auto found = by_key_.find(keys);
  return found == by_key_.end() ? nullptr : *found;
}

lyd_node* ListIndex::find(InstanceKeyView keys) const {
  const auto found = by_key_.find(keys);
  return found == by_key_.end() ? nullptr : *found;
}

std::span<lyd_node* const> ListIndex::ordered() const {
  settle();
  return ordered_;
}

bool ListIndex::insert(lyd_node* entry) {
  by_key_.insert(entry);
  const bool settled = gone_.empty() && came_.empty();
  if (settled && (ordered_.empty() || key_less(ordered_.back(), entry))) {
    ordered_.push_back(entry);
    return true;
  }
  came_.insert(entry);
  return false;
}

void ListIndex::erase(lyd_node* entry) {
  if (by_key_.erase(entry) == 0 || came_.erase(entry) == 1) return;
  // Keys can be compared only while no entry of the order has been removed.
  if (gone_.empty() && erased_at_once_ < kHandful) {
    ++erased_at_once_;
    ordered_.erase(std::lower_bound(ordered_.begin(), ordered_.end(), entry, key_less));
  } else {
    gone_.insert(entry);
  }
}

void ListIndex::settle() const {
  erased_at_once_ = 0;
  if (!gone_.empty()) {
    std::erase_if(ordered_, [&](const lyd_node* entry) { return gone_.contains(entry); });
    gone_ = {};
  }
  if (came_.empty()) return;
  std::vector<lyd_node*> came(came_.begin(), came_.end());
  came_ = {};
  std::sort(came.begin(), came.end(), key_less);
  const auto first = std::lower_bound(ordered_.begin(), ordered_.end(), came.front(), key_less);
  const auto before = first - ordered_.begin();
  const auto middle = ordered_.insert(ordered_.end(), came.begin(), came.end());
  std::inplace_merge(ordered_.begin() + before, middle, ordered_.end(), key_less);
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
