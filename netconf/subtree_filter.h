#pragma once

#include "netconf/message.h"
#include "netconf/with_defaults.h"
#include "standalone/store/reader.h"

namespace tarnd::netconf {

/// A copy of what a subtree filter (RFC 6241, section 6) selects of a tree, entries with their
/// keys; null when it selects nothing. The children of `filter` name top-level nodes. A leaf that
/// is not reported does not match a value.
store::TreeOwner select_subtrees(const Element& filter, const lyd_node* root, Defaults defaults);

/// Whether the filter has so many elements that to apply it may take much longer than to read
/// everything: each of them is compared with all nodes at its place.
bool is_many_subtrees(const Element& filter);

}  // namespace tarnd::netconf
