#include "netconf/pipe.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <system_error>

namespace tarnd::netconf {

Pipe new_pipe() {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) {
    throw std::system_error(errno, std::generic_category(), "pipe");
  }
  return {Descriptor(ends[0]), Descriptor(ends[1])};
}

}  // namespace tarnd::netconf
