#include "tools/gponval/save_file.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <string_view>
#include <system_error>
#include <thread>
#include <utility>

#include "tools/gponval/temporary_file.h"
#include "tools/gponval/usage_error.h"

namespace gponval {
namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kLongestWait(5);
constexpr std::chrono::milliseconds kBetweenLooks(10);
constexpr int kMostLinks = 40;
constexpr std::size_t kReadSize = std::size_t{1} << 16;

constexpr const char* kStandardInput = "-";
constexpr const char* kStandardInputFile = "/proc/self/fd/0";
constexpr std::string_view kRemovedMark = " (deleted)";

[[noreturn]] void cannot_save(const std::string& name, const std::string& why) {
  throw UsageError("cannot save '" + name + "': " + why);
}

[[noreturn]] void cannot_save(const std::string& name, int error) {
  cannot_save(name, std::generic_category().message(error));
}

fs::path folder_of(const fs::path& file) {
  return file.has_parent_path() ? file.parent_path() : fs::path(".");
}

// The name without symbolic links, even if there is no such file yet.
fs::path resolved(fs::path file) {
  std::error_code error;
  for (int links = 0; fs::is_symlink(file, error) && links < kMostLinks; ++links) {
    file = file.parent_path() / fs::read_symlink(file, error);
  }
  const fs::path folder = fs::canonical(folder_of(file), error);
  return error ? file : folder / file.filename();
}

fs::path target_of(const std::string& name) {
  if (name.empty()) throw UsageError("--save needs the name of a file");
  std::error_code error;
  const fs::file_status status = fs::status(name, error);
  if (!fs::status_known(status)) cannot_save(name, error.message());
  if (fs::exists(status) && !fs::is_regular_file(status)) {
    cannot_save(name, "it is not a regular file");
  }
  fs::path target = resolved(name);
  const fs::path folder = folder_of(target);
  if (!fs::is_directory(folder, error)) {
    cannot_save(name, "there is no folder '" + folder.string() + "'");
  }
  if (::access(folder.c_str(), W_OK | X_OK) != 0) {
    cannot_save(name, "no file can be made in '" + folder.string() + "'");
  }
  return target;
}

// Whether the running configuration is read from the target. Names are compared as well as files,
// because another run may have replaced the file between two checks, or since a shell opened it as
// standard input.
bool reads_from(const std::string& running, const fs::path& target) {
  const fs::path source = running == kStandardInput ? kStandardInputFile : running;
  std::string name = resolved(source).string();
  if (name.ends_with(kRemovedMark)) name.resize(name.size() - kRemovedMark.size());
  std::error_code missing;
  return name == target.string() || fs::equivalent(source, target, missing);
}

// The lock is on the file itself, so that no lock file is left over. While a run waits for the
// lock, the file may be replaced by a new one; then it tries again with that.
tarnd::Descriptor lock_file(const std::string& name, const fs::path& target) {
  const Clock::time_point give_up = Clock::now() + kLongestWait;
  while (true) {
    tarnd::Descriptor file = open_to_lock(target);
    if (!file.is_open()) {
      throw UsageError("cannot read '" + name + "': " + std::generic_category().message(errno));
    }
    const int error = try_lock(file);
    if (error == 0 && is_regular_file_at(file, target)) return file;
    if (error != 0 && error != EWOULDBLOCK) cannot_save(name, error);
    if (Clock::now() > give_up) cannot_save(name, "another run is committing to it");
    if (error != 0) std::this_thread::sleep_for(kBetweenLooks);
  }
}

bool holds(const tarnd::Descriptor& file, std::string_view text) {
  std::array<char, kReadSize> buffer{};
  for (off_t at = 0;;) {
    const ssize_t size = ::pread(file.get(), buffer.data(), buffer.size(), at);
    if (size < 0 && errno == EINTR) continue;
    if (size <= 0) return size == 0 && text.empty();
    const std::string_view part(buffer.data(), static_cast<std::size_t>(size));
    if (!text.starts_with(part)) return false;
    text.remove_prefix(part.size());
    at += size;
  }
}

}  // namespace

SaveFile::SaveFile(const std::string& name, const std::string& running)
    : name_(name), target_(target_of(name)) {
  if (reads_from(running, target_)) locked_ = lock_file(name_, target_);
  remove_leftovers(folder_of(target_));
}

// The whole text is compared: neither times nor sizes show every change.
void SaveFile::check_unchanged() const {
  if (!is_regular_file_at(*locked_, target_) || !holds(*locked_, running_)) {
    cannot_save(name_, "it has changed since it was read");
  }
}

void SaveFile::replace(const std::string& text) const {
  try {
    const fs::path folder_name = folder_of(target_);
    // Opened before the rename, so that a failure leaves the old file in place.
    const tarnd::Descriptor folder(::open(folder_name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!folder.is_open()) cannot_save(name_, errno);
    TemporaryFile file(folder_name);
    file.write(text);
    file.take_mode_of(target_);
    // As late as possible, since programs that do not use the lock may write at any time.
    if (locked_.has_value()) check_unchanged();
    file.replace(target_);
    if (::fsync(folder.get()) != 0) cannot_save(name_, errno);
  } catch (const std::system_error& error) {
    cannot_save(name_, error.code().message());
  }
}

}  // namespace gponval
