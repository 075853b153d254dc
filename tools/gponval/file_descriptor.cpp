#include "tools/gponval/file_descriptor.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace gponval {

FileDescriptor FileDescriptor::open_to_lock(const std::filesystem::path& name) {
  constexpr int kHow = O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
  const int descriptor = ::open(name.c_str(), O_RDWR | kHow);
  // cppcheck-suppress resourceLeak; the result owns it
  return FileDescriptor(descriptor >= 0 ? descriptor : ::open(name.c_str(), O_RDONLY | kHow));
}

FileDescriptor::FileDescriptor(FileDescriptor&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)) {}

FileDescriptor& FileDescriptor::operator=(FileDescriptor&& other) noexcept {
  std::swap(descriptor_, other.descriptor_);
  return *this;
}

FileDescriptor::~FileDescriptor() {
  if (is_open()) ::close(descriptor_);
}

int FileDescriptor::try_lock() const {
  while (::flock(descriptor_, LOCK_EX | LOCK_NB) != 0) {
    if (errno != EINTR) return errno;
  }
  return 0;
}

bool FileDescriptor::is_regular_file_at(const std::filesystem::path& name) const {
  struct stat own {};
  struct stat named {};
  if (::fstat(descriptor_, &own) != 0 || ::lstat(name.c_str(), &named) != 0) return false;
  return S_ISREG(own.st_mode) && own.st_dev == named.st_dev && own.st_ino == named.st_ino;
}

}  // namespace gponval
