#pragma once

#include "standalone/store/datastore.h"
#include "standalone/store/instance_key.h"
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

/// The place of the root.
Place root_place(const store::Datastore& datastore);

/// The place of a node of the model below another place. Keys count only if the step is keyed.
Place step_down(const store::Datastore& datastore, const Place& around,
                const store::SchemaNode& node, bool keyed, store::InstanceKeyView keys);

/// Whether the place is a list or leaf-list without keys, inside which no path leads.
bool names_many(const Place& place);

/// Follows a path in the tree.
Place find_place(const store::Datastore& datastore, const store::Path& path);

}  // namespace tarnd::confd
