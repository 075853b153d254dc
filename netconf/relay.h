#pragma once

#include <filesystem>

namespace tarnd::netconf {

/// Connects to a server's socket and carries bytes between it and two open files, until the server
/// ends the connection. Throws std::system_error.
void relay(const std::filesystem::path& socket, int input, int output);

}  // namespace tarnd::netconf
