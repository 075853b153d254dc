#pragma once

#include <filesystem>
#include <string_view>

#include "tools/gponval/file_descriptor.h"

namespace gponval {

/// A new file that takes the place of another, or is removed. Its name is ".gponval-save-" and 16
/// hexadecimal digits. It is locked as long as its run lives: that tells the file of a killed run,
/// which anybody may remove, from the others. Every function throws std::system_error.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::filesystem::path& folder);
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile();

  void write(std::string_view text);
  /// Takes mode and, as far as allowed, owner of the target, or a new file's mode.
  void take_mode_of(const std::filesystem::path& target);
  /// Brings the content to the disk and takes the target's name, in one step for whoever reads it.
  void replace(const std::filesystem::path& target);

 private:
  std::filesystem::path name_;
  FileDescriptor file_;
  bool renamed_ = false;
};

/// Removes the temporary files of killed runs from the folder, as far as this user may.
void remove_leftovers(const std::filesystem::path& folder);

}  // namespace gponval
