#include "tools/gponval/save_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string_view>
#include <utility>

#include "tools/gponval/usage_error.h"

namespace gponval {
namespace {

constexpr mode_t kNewFileMode = 0644;
constexpr mode_t kPermissionBits = 07777;

[[noreturn]] void cannot_save(const std::filesystem::path& target, const std::string& why) {
  throw UsageError("cannot save '" + target.string() + "': " + why);
}

[[noreturn]] void cannot_save(const std::filesystem::path& target) {
  cannot_save(target, std::strerror(errno));
}

class FileDescriptor {
 public:
  explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  ~FileDescriptor() {
    if (descriptor_ >= 0) ::close(descriptor_);
  }
  [[nodiscard]] int get() const { return descriptor_; }
  /// Closes and tells whether that went well: some file systems report a full disk only then.
  bool close() { return ::close(std::exchange(descriptor_, -1)) == 0; }

 private:
  int descriptor_;
};

// A file beside the target, removed at the end unless it took the target's name.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::filesystem::path& target)
      : target_(target),
        name_(target.string() + ".XXXXXX"),
        file_(::mkostemp(name_.data(), O_CLOEXEC)) {
    if (file_.get() < 0) cannot_save(target_);
  }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile() {
    if (!renamed_) ::unlink(name_.c_str());
  }

  void write(std::string_view text) {
    while (!text.empty()) {
      const ssize_t written = ::write(file_.get(), text.data(), text.size());
      if (written < 0 && errno == EINTR) continue;
      if (written < 0) cannot_save(target_);
      text.remove_prefix(static_cast<std::size_t>(written));
    }
  }

  void take_mode() {
    struct stat old {};
    if (::stat(target_.c_str(), &old) == 0) {
      // Only the administrator may give a file away; the mode comes after, since a new owner
      // clears parts of it.
      if (::fchown(file_.get(), old.st_uid, old.st_gid) != 0) errno = 0;
      if (::fchmod(file_.get(), old.st_mode & kPermissionBits) != 0) cannot_save(target_);
      return;
    }
    const mode_t mask = ::umask(0);
    ::umask(mask);
    if (::fchmod(file_.get(), kNewFileMode & ~mask) != 0) cannot_save(target_);
  }

  void rename() {
    if (::fsync(file_.get()) != 0 || !file_.close()) cannot_save(target_);
    if (::rename(name_.c_str(), target_.c_str()) != 0) cannot_save(target_);
    renamed_ = true;
  }

 private:
  const std::filesystem::path& target_;
  std::string name_;
  FileDescriptor file_;
  bool renamed_ = false;
};

std::filesystem::path folder_of(const std::filesystem::path& target) {
  return target.has_parent_path() ? target.parent_path() : std::filesystem::path(".");
}

}  // namespace

std::filesystem::path save_target(const std::string& name) {
  if (name.empty() || name == "-") throw UsageError("--save needs the name of a file");
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(name, error);
  if (!std::filesystem::exists(status)) {
    std::filesystem::path target(name);
    if (!std::filesystem::is_directory(folder_of(target), error)) {
      cannot_save(target, "there is no folder '" + folder_of(target).string() + "'");
    }
    return target;
  }
  if (!std::filesystem::is_regular_file(status)) cannot_save(name, "it is not a regular file");
  std::filesystem::path target = std::filesystem::canonical(name, error);
  if (error) cannot_save(name, error.message());
  return target;
}

void save_file(const std::filesystem::path& target, const std::string& text) {
  // Opened before the rename: what can fail shall fail while the old file still stands.
  const FileDescriptor folder(
      ::open(folder_of(target).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (folder.get() < 0) cannot_save(target);
  TemporaryFile file(target);
  file.write(text);
  file.take_mode();
  file.rename();
  if (::fsync(folder.get()) != 0) cannot_save(target);
}

}  // namespace gponval
