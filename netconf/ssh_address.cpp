#include "netconf/ssh_address.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <charconv>
#include <system_error>

namespace tarnd::netconf {
namespace {

constexpr const char* kLoopback = "127.0.0.1";

bool is_address(int family, const std::string& text) {
  in6_addr address{};  // the larger one
  return inet_pton(family, text.c_str(), &address) == 1;
}

std::optional<std::uint16_t> port_in(std::string_view text) {
  std::uint16_t port = 0;
  const char* end = text.data() + text.size();
  const auto [rest, error] = std::from_chars(text.data(), end, port);
  if (error != std::errc{} || rest != end || port == 0) return std::nullopt;
  return port;
}

std::optional<std::string> host_in(std::string_view text) {
  if (text.starts_with('[') && text.ends_with(']')) {
    std::string host(text.substr(1, text.size() - 2));
    if (is_address(AF_INET6, host)) return host;
    return std::nullopt;
  }
  std::string host(text);
  if (is_address(AF_INET, host)) return host;
  return std::nullopt;
}

}  // namespace

std::optional<SshAddress> ssh_address(std::string_view text) {
  const std::size_t colon = text.rfind(':');
  const bool has_host = colon != std::string_view::npos;
  const auto host = has_host ? host_in(text.substr(0, colon)) : std::string(kLoopback);
  const auto port = port_in(has_host ? text.substr(colon + 1) : text);
  if (!host.has_value() || !port.has_value()) return std::nullopt;
  return SshAddress{*host, *port};
}

std::string host_to_connect_to(const SshAddress& address) {
  if (address.host == "0.0.0.0" || address.host == "::") return "localhost";
  return address.host;
}

}  // namespace tarnd::netconf
