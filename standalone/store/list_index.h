#pragma once

#include <span>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "standalone/store/schema.h"

namespace tarnd::store {

/// The entries of one list of one parent: by key through a hash, and in key order.
class ListIndex {
 public:
  /// Indexes what stands below the parent now.
  ListIndex(const lyd_node* parent, const SchemaNode& list);

  [[nodiscard]] std::span<lyd_node* const> ordered() const { return ordered_; }
  [[nodiscard]] lyd_node* find(std::span<const std::string> keys) const;

  /// Returns false when the entry belongs before one that already stands.
  bool insert(lyd_node* entry);
  void erase(lyd_node* entry);

 private:
  using KeyTexts = std::span<const std::string>;
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(const lyd_node* entry) const;
    std::size_t operator()(KeyTexts keys) const;
  };
  struct Equal {
    using is_transparent = void;
    bool operator()(const lyd_node* left, const lyd_node* right) const { return left == right; }
    bool operator()(KeyTexts keys, const lyd_node* entry) const;
    bool operator()(const lyd_node* entry, KeyTexts keys) const { return (*this)(keys, entry); }
  };

  std::vector<lyd_node*> ordered_;
  std::unordered_set<lyd_node*, Hash, Equal> by_key_;
};

/// The indexes of a tree, each made when its list is first asked for.
class IndexSet {
 public:
  ListIndex& of(const lyd_node* parent, const SchemaNode& list);
  /// The index if it was made already, else null.
  ListIndex* made(const lyd_node* parent, const SchemaNode& list);
  /// Drops the indexes of everything below the node, which is about to be freed.
  void forget_below(const lyd_node* node);

 private:
  using ListsOfParent = std::vector<std::pair<const SchemaNode*, ListIndex>>;
  std::unordered_map<const lyd_node*, ListsOfParent> by_parent_;
};

}  // namespace tarnd::store
