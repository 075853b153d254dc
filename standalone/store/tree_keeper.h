#pragma once

#include <set>
#include <utility>

#include "standalone/store/datastore.h"
#include "standalone/store/list_index.h"

namespace tarnd::store {

/// Keeps what stands beside a datastore's tree right while nodes come and go: the lists' indexes,
/// and which lists are out of order in the tree. For the store's own sources.
class TreeKeeper {
 public:
  /// Links a node that stands alone below the parent.
  void insert(lyd_node* parent, lyd_node* node);
  /// Takes a node out of the tree; the caller owns it then.
  void unlink(lyd_node* node);
  /// Frees a node that stands alone, with everything below.
  void free(lyd_node* node);
  /// Entries of this list, or values of this leaf-list, may stand out of order in the tree.
  void mark_unordered(const lyd_node* parent, const SchemaNode& list);

  IndexSet indexes;
  std::set<std::pair<const lyd_node*, const SchemaNode*>> unordered_lists;
};

/// False for an entry or a leaf-list's value that stands behind one it belongs before.
bool follows_in_order(const lyd_node* node);

inline LYD_FORMAT libyang_format(Format format) {
  return format == Format::kJson ? LYD_JSON : LYD_XML;
}

}  // namespace tarnd::store
