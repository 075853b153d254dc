#pragma once

#include <optional>
#include <string>

#include "netconf/state/sqlite.h"

namespace tarnd::netconf::state {

// Where the server listens that has the state. It is true as long as the state is locked: a server
// that was killed leaves it behind. All throw Failure.

/// To be called by the server, with the absolute name of its socket.
void keep_server(Connection& connection, const std::string& socket);
/// To be called by another process that has the state.
void forget_server(Connection& connection);
std::optional<std::string> server_of(Connection& connection);

}  // namespace tarnd::netconf::state
