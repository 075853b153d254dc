#include "tools/gponval/file_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <cerrno>

namespace gponval {

using tarnd::Descriptor;

Descriptor open_to_lock(const std::filesystem::path& name) {
  constexpr int kHow = O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
  const int number = ::open(name.c_str(), O_RDWR | kHow);
  // cppcheck-suppress resourceLeak; the result owns it
  return Descriptor(number >= 0 ? number : ::open(name.c_str(), O_RDONLY | kHow));
}

int try_lock(const Descriptor& file) {
  while (::flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
    if (errno != EINTR) return errno;
  }
  return 0;
}

bool is_regular_file_at(const Descriptor& file, const std::filesystem::path& name) {
  struct stat own {};
  struct stat named {};
  if (::fstat(file.get(), &own) != 0 || ::lstat(name.c_str(), &named) != 0) return false;
  return S_ISREG(own.st_mode) && own.st_dev == named.st_dev && own.st_ino == named.st_ino;
}

}  // namespace gponval
