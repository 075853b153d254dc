#pragma once

#include <string>

#include "netconf/card.h"
#include "netconf/operation.h"

namespace tarnd::netconf {

/// Runs the operation that an `rpc` holds. Returns the content of its reply. Throws RpcFailure.
/// `message` is the text of the whole `rpc`.
std::string run_operation(Card& card, Caller& caller, const Element& rpc,
                          const std::string& message);

/// Whether an `rpc` may take much longer than to read the whole configuration. It then only reads.
bool may_take_long(const Element& rpc);

/// What a server's hello announces.
std::string capabilities(const Card& card);

}  // namespace tarnd::netconf
