#pragma once

#include <sys/types.h>

#include <filesystem>

#include "standalone/descriptor.h"

namespace tarnd::netconf {

/// Connects to the socket of that name. Throws std::system_error.
Descriptor connect_to(const std::filesystem::path& name);

/// Listens at a new socket of that name, which only this user may write to, or everybody. One that
/// nobody listens at any more is replaced. Throws std::system_error.
Descriptor listen_at(const std::filesystem::path& name, bool for_everybody);

/// The user at the other end of a connection.
uid_t peer_of(const Descriptor& connection);

}  // namespace tarnd::netconf
