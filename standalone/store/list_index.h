#pragma once

#include <span>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "standalone/store/instance_key.h"

namespace tarnd::store {

/// The entries of one list of one parent: by key through a hash, and in key order. Adding and
/// removing an entry costs little; the next read of the order brings it up to date for all of them
/// at once.
class ListIndex {
 public:
  /// Indexes the entries that are below the parent now.
  ListIndex(const lyd_node* parent, const SchemaNode& list);

  [[nodiscard]] std::span<lyd_node* const> ordered() const;
  [[nodiscard]] lyd_node* find(InstanceKey keys) const;
  [[nodiscard]] lyd_node* find(InstanceKeyView keys) const;

  /// Returns true if the entry belongs after all others, as far as that is known without sorting.
  bool insert(lyd_node* entry);
  /// Called while the entry still has its keys.
  void erase(lyd_node* entry);

 private:
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(const lyd_node* entry) const { return key_hash(entry); }
    std::size_t operator()(InstanceKey keys) const { return key_hash(keys); }
    std::size_t operator()(InstanceKeyView keys) const { return key_hash(keys); }
  };
  struct Equal {
    using is_transparent = void;
    bool operator()(const lyd_node* left, const lyd_node* right) const { return left == right; }
    bool operator()(InstanceKey keys, const lyd_node* entry) const { return has_key(entry, keys); }
    bool operator()(const lyd_node* entry, InstanceKey keys) const { return has_key(entry, keys); }
    bool operator()(InstanceKeyView keys, const lyd_node* entry) const {
      return has_key(entry, keys);
    }
    bool operator()(const lyd_node* entry, InstanceKeyView keys) const {
      return has_key(entry, keys);
    }
  };

  void settle() const;

  // In key order, but with removed entries and without some new ones. A removed entry may have been
  // freed: only its address is compared, and a new entry may have the same address.
  mutable std::vector<lyd_node*> ordered_;
  mutable std::unordered_set<const lyd_node*> gone_;
  mutable std::unordered_set<lyd_node*> came_;
  mutable int erased_at_once_ = 0;
  std::unordered_set<lyd_node*, Hash, Equal> by_key_;
};

/// The indexes of a tree, each made when its list is first needed.
class IndexSet {
 public:
  ListIndex& of(const lyd_node* parent, const SchemaNode& list);
  /// The index if it was already made, or else null.
  ListIndex* made(const lyd_node* parent, const SchemaNode& list);
  /// Drops the indexes of everything below the node, which is about to be freed.
  void forget_below(const lyd_node* node);

 private:
  using ListsOfParent = std::vector<std::pair<const SchemaNode*, ListIndex>>;
  std::unordered_map<const lyd_node*, ListsOfParent> by_parent_;
};

}  // namespace tarnd::store
