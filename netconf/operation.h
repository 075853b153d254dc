#pragma once

#include <string>
#include <string_view>

#include "netconf/card.h"
#include "netconf/message.h"
#include "netconf/rpc_error.h"

namespace tarnd::netconf {

/// A session as the operation that it asked for sees it.
struct Caller {
  SessionId id = 0;
  bool closes = false;  ///< set by close-session
};

/// An operation that is running. What is refused is thrown as an RpcFailure.
struct Run {
  Card& card;
  Caller& caller;
  const Element& operation;
  const std::string& message;  ///< the text of the whole rpc
};

constexpr const char* kOk = "<ok/>";

/// Our own operation, which only a card with a history has.
constexpr std::string_view kRollback = "rollback";

[[noreturn]] void refuse(RpcError error);

/// The parameter of that name, or null.
const Element* find_parameter(const Run& run, std::string_view name);
/// The same; refuses the operation without it.
const Element& parameter(const Run& run, std::string_view name);

enum class Target { kRunning, kCandidate };

/// "running", "candidate".
std::string_view to_string(Target target);

/// The datastore that a parameter names.
Target datastore_in(const Run& run, std::string_view name);

/// "session 3", for a line of the log.
std::string session_name(const Run& run);

}  // namespace tarnd::netconf
