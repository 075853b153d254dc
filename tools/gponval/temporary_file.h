#pragma once

#include <filesystem>
#include <string_view>

#include "tools/gponval/file_lock.h"

namespace gponval {

/// A new file that replaces another one, or is removed. Its name is ".gponval-save-" and 16
/// hexadecimal digits. It is locked while its run lives, so an unlocked one belongs to a killed run
/// and may be removed by any run. Every function throws std::system_error.
class TemporaryFile {
 public:
  explicit TemporaryFile(const std::filesystem::path& folder);
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;
  ~TemporaryFile();

  void write(std::string_view text);
  /// Sets the mode and, as far as allowed, the owner of the target, or the mode of a new file.
  void take_mode_of(const std::filesystem::path& target);
  /// Writes the content to the disk and renames the file to the target; readers see this as one
  /// step.
  void replace(const std::filesystem::path& target);

 private:
  std::filesystem::path name_;
  tarnd::Descriptor file_;
  bool renamed_ = false;
};

/// Removes the temporary files of killed runs from the folder, as far as this user may.
void remove_leftovers(const std::filesystem::path& folder);

}  // namespace gponval
