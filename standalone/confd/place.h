#pragma once

#include "standalone/store/datastore.h"
#include "standalone/store/path.h"

namespace tarnd::confd {

/// Where a path leads in the transaction.
struct Place {
  const store::SchemaNode* schema = nullptr;
  lyd_node* node = nullptr;    ///< the node at the path, or null
  lyd_node* parent = nullptr;  ///< the instance that the last element is part of, or null
  bool keyed = false;          ///< the last element names one entry of a list or leaf-list
  /// The node exists, or it is a container without presence in a parent that exists.
  bool exists = false;
};

/// Follows a path in the tree.
Place find_place(const store::Datastore& datastore, const store::Path& path);

}  // namespace tarnd::confd
