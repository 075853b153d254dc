#pragma once

#include <filesystem>

namespace gponval {

/// An open file, closed at the end.
class FileDescriptor {
 public:
  explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
  /// Opens a file, but no link, to lock it: for writing if that is allowed, since some network file
  /// systems cannot lock a file that is open for reading only.
  static FileDescriptor open_to_lock(const std::filesystem::path& name);
  FileDescriptor(const FileDescriptor&) = delete;
  FileDescriptor& operator=(const FileDescriptor&) = delete;
  FileDescriptor(FileDescriptor&& other) noexcept;
  FileDescriptor& operator=(FileDescriptor&& other) noexcept;
  ~FileDescriptor();

  [[nodiscard]] int get() const { return descriptor_; }
  [[nodiscard]] bool is_open() const { return descriptor_ >= 0; }

  /// Locks the file for this descriptor alone, until it is closed or its process ends for any
  /// reason. Returns 0, EWOULDBLOCK if another descriptor has the lock, or another errno if the
  /// file cannot be locked.
  [[nodiscard]] int try_lock() const;

  /// Whether this is a regular file and still has this name, because nobody has removed or replaced
  /// it.
  [[nodiscard]] bool is_regular_file_at(const std::filesystem::path& name) const;

 private:
  int descriptor_;
};

}  // namespace gponval
