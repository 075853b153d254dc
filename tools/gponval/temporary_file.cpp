#include "tools/gponval/temporary_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <random>
#include <string>
#include <system_error>

namespace gponval {
namespace {

constexpr mode_t kOwnMode = 0600;
constexpr mode_t kNewFileMode = 0644;
constexpr mode_t kPermissionBits = 07777;

constexpr std::string_view kNamePrefix = ".gponval-save-";
constexpr std::string_view kHexDigits = "0123456789abcdef";
constexpr std::size_t kDigits = 16;

[[noreturn]] void fail() {
  throw std::system_error(errno, std::generic_category());
}

std::string new_name() {
  std::random_device random;
  std::uniform_int_distribution<std::size_t> digit(0, kHexDigits.size() - 1);
  std::string name(kNamePrefix);
  for (std::size_t i = 0; i < kDigits; ++i) name += kHexDigits[digit(random)];
  return name;
}

bool is_temporary_name(const std::string& name) {
  return name.size() == kNamePrefix.size() + kDigits && name.starts_with(kNamePrefix) &&
         name.find_first_not_of(kHexDigits, kNamePrefix.size()) == std::string::npos;
}

// Unlinked while it is locked, so that no other run can lock it and use it meanwhile.
void remove_unless_owned(const std::filesystem::path& name) {
  const tarnd::Descriptor file = open_to_lock(name);
  if (!file.is_open() || try_lock(file) != 0 || !is_regular_file_at(file, name)) return;
  ::unlink(name.c_str());
}

}  // namespace

TemporaryFile::TemporaryFile(const std::filesystem::path& folder) : file_(-1) {
  // Until the new file is locked, another run may remove it as a file of a killed run. If the file
  // system has no locks, nothing is ever removed.
  bool owned = false;
  while (!owned) {
    name_ = folder / new_name();
    file_ =
        tarnd::Descriptor(::open(name_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, kOwnMode));
    if (!file_.is_open() && errno == EEXIST) continue;
    if (!file_.is_open()) fail();
    owned = try_lock(file_) != EWOULDBLOCK && is_regular_file_at(file_, name_);
  }
}

TemporaryFile::~TemporaryFile() {
  if (!renamed_) ::unlink(name_.c_str());
}

void TemporaryFile::write(std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(file_.get(), text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) fail();
    text.remove_prefix(static_cast<std::size_t>(written));
  }
}

void TemporaryFile::take_mode_of(const std::filesystem::path& target) {
  struct stat old {};
  if (::stat(target.c_str(), &old) == 0) {
    // Only the administrator may change the owner. The mode is set afterwards, since a change of
    // the owner clears parts of it.
    if (::fchown(file_.get(), old.st_uid, old.st_gid) != 0) errno = 0;
    if (::fchmod(file_.get(), old.st_mode & kPermissionBits) != 0) fail();
    return;
  }
  const mode_t mask = ::umask(0);
  ::umask(mask);
  if (::fchmod(file_.get(), kNewFileMode & ~mask) != 0) fail();
}

void TemporaryFile::replace(const std::filesystem::path& target) {
  if (::fsync(file_.get()) != 0) fail();
  // The file stays open, and so locked, until after the rename: otherwise another run might remove
  // it.
  if (::rename(name_.c_str(), target.c_str()) != 0) fail();
  renamed_ = true;
}

void remove_leftovers(const std::filesystem::path& folder) {
  std::error_code unreadable;
  for (std::filesystem::directory_iterator entry(folder, unreadable), end;
       !unreadable && entry != end; entry.increment(unreadable)) {
    if (is_temporary_name(entry->path().filename().string())) remove_unless_owned(entry->path());
  }
}

}  // namespace gponval
