#include "netconf/unix_socket.h"

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace tarnd::netconf {
namespace {

constexpr int kWaiting = 64;  // connections that may wait to be accepted
constexpr mode_t kForOwner = 0600;
constexpr mode_t kForEverybody = 0666;

[[noreturn]] void fail(int error, const std::filesystem::path& name) {
  throw std::system_error(error, std::generic_category(), "socket '" + name.string() + "'");
}

sockaddr_un address_of(const std::filesystem::path& name) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  const std::string& text = name.native();
  if (text.size() >= sizeof address.sun_path) fail(ENAMETOOLONG, name);
  std::copy(text.begin(), text.end(), static_cast<char*>(address.sun_path));
  return address;
}

const sockaddr* generic(const sockaddr_un& address) {
  return reinterpret_cast<const sockaddr*>(&address);
}

Descriptor new_socket(int options, const std::filesystem::path& name) {
  Descriptor made(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | options, 0));
  if (made.get() < 0) fail(errno, name);
  return made;
}

void remove_abandoned(const std::filesystem::path& name) {
  std::error_code none;
  if (!std::filesystem::is_socket(name, none)) return;
  try {
    connect_to(name);
  } catch (const std::system_error& error) {
    if (error.code().value() == ECONNREFUSED) std::filesystem::remove(name);
  }
}

}  // namespace

Descriptor connect_to(const std::filesystem::path& name) {
  const sockaddr_un address = address_of(name);
  Descriptor connection = new_socket(0, name);
  if (connect(connection.get(), generic(address), sizeof address) != 0) fail(errno, name);
  return connection;
}

Descriptor listen_at(const std::filesystem::path& name, bool for_everybody) {
  const sockaddr_un address = address_of(name);
  remove_abandoned(name);
  Descriptor listener = new_socket(SOCK_NONBLOCK, name);
  // Nobody else may connect before the mode is right.
  const mode_t before = umask(static_cast<mode_t>(~kForOwner & 0777));
  const int bound = bind(listener.get(), generic(address), sizeof address);
  const int error = errno;
  umask(before);
  if (bound != 0) fail(error, name);
  if (for_everybody && chmod(name.c_str(), kForEverybody) != 0) fail(errno, name);
  if (listen(listener.get(), kWaiting) != 0) fail(errno, name);
  return listener;
}

uid_t peer_of(const Descriptor& connection) {
  ucred peer{};
  socklen_t size = sizeof peer;
  if (getsockopt(connection.get(), SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) {
    throw std::system_error(errno, std::generic_category(), "SO_PEERCRED");
  }
  return peer.uid;
}

}  // namespace tarnd::netconf
