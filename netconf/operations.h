#pragma once

#include <string>
#include <string_view>

#include "netconf/card.h"
#include "netconf/message.h"

namespace tarnd::netconf {

/// A session as the operation that it asked for sees it.
struct Caller {
  SessionId id = 0;
  bool closes = false;  ///< set by close-session
};

/// Runs the operation that an `rpc` holds. Returns the content of its reply. Throws RpcFailure.
/// `message` is the text of the whole `rpc`.
std::string run_operation(Card& card, Caller& caller, const Element& rpc,
                          const std::string& message);

/// What a server's hello announces.
std::string capabilities(const store::Schema& schema);

}  // namespace tarnd::netconf
