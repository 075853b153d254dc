#include "tools/gponval/socket_name.h"

#include <cstdlib>

#include "tools/gponval/usage_error.h"

namespace gponval {

std::filesystem::path socket_name(const std::optional<std::string>& named) {
  if (named.has_value()) return *named;
  const char* folder = std::getenv("XDG_RUNTIME_DIR");
  if (folder == nullptr || *folder == '\0') {
    throw UsageError("name a socket with --socket: XDG_RUNTIME_DIR, where it would be, is not set");
  }
  return std::filesystem::path(folder) / "gponval.socket";
}

}  // namespace gponval
