#pragma once

#include <optional>

#include "netconf/message.h"
#include "standalone/store/reader.h"

namespace tarnd::netconf {

/// A copy of what an XPath filter (RFC 6241, section 8.9) selects of a tree and its siblings: the
/// nodes that its attribute `select` names, with all below them, inside the nodes around them,
/// entries with their keys. Null if it selects nothing; no value if the expression has a prefix of
/// a namespace that is not in the tree. Throws RpcFailure for an expression that is malformed or
/// names no nodes.
std::optional<store::TreeOwner> select_by_xpath(const Element& filter, const lyd_node* tree);

/// Whether the filter's expression is a path of names with a few conditions such as [name='value'].
/// To evaluate it takes at most as long as to read a whole configuration a few times; of any other
/// expression that cannot be said.
bool is_plain_path(const Element& filter);

}  // namespace tarnd::netconf
