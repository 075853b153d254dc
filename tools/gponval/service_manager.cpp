#include "tools/gponval/service_manager.h"

#include <sys/socket.h>
#include <sys/un.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <string_view>

#include "standalone/descriptor.h"

namespace gponval {

void report_ready() {
  constexpr std::string_view kReady = "READY=1";
  const char* variable = std::getenv("NOTIFY_SOCKET");
  if (variable == nullptr) return;
  const std::string_view name = variable;
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (name.empty() || name.size() >= sizeof address.sun_path) return;
  char* path = static_cast<char*>(address.sun_path);
  std::copy(name.begin(), name.end(), path);
  if (*path == '@') *path = '\0';  // a name outside the file system
  const tarnd::Descriptor socket(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  // The manager waits for it and says so if it does not come.
  sendto(socket.get(), kReady.data(), kReady.size(), MSG_NOSIGNAL,
         reinterpret_cast<const sockaddr*>(&address),
         static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + name.size()));
}

}  // namespace gponval
