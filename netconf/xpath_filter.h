#pragma once

#include <string>
#include <vector>

#include "netconf/message.h"
#include "standalone/store/datastore.h"

namespace tarnd::netconf {

/// A copy of what an XPath filter (RFC 6241, section 8.9) selects of a datastore: the nodes that
/// its attribute `select` names, with all below them, inside the nodes around them, entries with
/// their keys. Null when it selects nothing. Throws RpcFailure for an expression that is malformed
/// or names no nodes.
store::TreeOwner select_by_xpath(const Element& filter, const store::Datastore& datastore);

}  // namespace tarnd::netconf
