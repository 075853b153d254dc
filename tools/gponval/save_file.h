#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "tools/gponval/file_lock.h"

namespace gponval {

/// The file that a commit writes. If it is also the file of the running configuration, it is
/// locked, so that no run overwrites what another has saved meanwhile.
class SaveFile {
 public:
  /// `running` is the name of the running configuration, which must be read after this. Waits a
  /// while for another run on the same file. Removes temporary files of killed runs from the
  /// folder. Throws UsageError if the name cannot be saved to, such as a folder or a device.
  SaveFile(const std::string& name, const std::string& running);

  /// Sets the text that was read from `running`.
  void set_running(std::string text) { running_ = std::move(text); }

  /// Replaces or creates the file in one step: a reader sees the old text or the new one, even
  /// after a power failure. An existing file keeps its mode and, as far as allowed, its owner.
  /// Throws UsageError, and leaves the file as it was, if it cannot be written, or if it is the
  /// running file and has changed since it was read.
  void replace(const std::string& text) const;

 private:
  void check_unchanged() const;

  std::string name_;
  std::filesystem::path target_;             ///< links followed
  std::optional<tarnd::Descriptor> locked_;  ///< the target, if it is the running file
  std::string running_;
};

}  // namespace gponval
