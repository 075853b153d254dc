#pragma once

#include <cstdint>
#include <set>
#include <utility>

#include "standalone/store/datastore.h"
#include "standalone/store/list_index.h"

namespace tarnd::store {

/// Links and unlinks nodes of a datastore's tree, and updates what depends on it: the lists'
/// indexes, and which lists are out of order in the tree. For the store's own sources.
class TreeKeeper {
 public:
  /// Links an unlinked node below the parent.
  void insert(lyd_node* parent, lyd_node* node);
  /// Takes a node out of the tree; the caller owns it then.
  void unlink(lyd_node* node);
  /// Frees an unlinked node, with everything below it.
  void free(lyd_node* node);
  /// Notes that entries of this list, or values of this leaf-list, may be out of order in the tree.
  void mark_unordered(const lyd_node* parent, const SchemaNode& list);

  IndexSet indexes;
  std::uint64_t version = 0;  ///< see Datastore::version()
  std::set<std::pair<const lyd_node*, const SchemaNode*>> unordered_lists;
};

/// False for an entry, or a leaf-list's value, that is after one that it belongs before.
bool follows_in_order(const lyd_node* node);

inline LYD_FORMAT libyang_format(Format format) {
  return format == Format::kJson ? LYD_JSON : LYD_XML;
}

}  // namespace tarnd::store
