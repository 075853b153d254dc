#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tarnd::netconf {

/// Where an SSH server listens.
struct SshAddress {
  std::string host;  ///< an IPv4 or IPv6 address, without brackets
  std::uint16_t port = 0;
};

/// Reads "[ADDRESS:]PORT", with an IPv6 address in brackets. Without an address it is 127.0.0.1, so
/// that only this machine can connect. No value for any other text.
std::optional<SshAddress> ssh_address(std::string_view text);

/// The host for a client on this machine: that of the address unless it is "every address".
std::string host_to_connect_to(const SshAddress& address);

}  // namespace tarnd::netconf
