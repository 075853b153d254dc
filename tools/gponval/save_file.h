#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "tools/gponval/file_descriptor.h"

namespace gponval {

/// The file that a commit writes. If it is the file that the commit reads as the running
/// configuration, one run at a time has it: no run writes over what another has saved meanwhile.
class SaveFile {
 public:
  /// `running` is the name of the running configuration, which is to be read after this. Waits a
  /// while for another run on the same file. Removes what killed runs left in the folder. Throws
  /// UsageError for a name that cannot be saved to, such as a folder or a device.
  SaveFile(const std::string& name, const std::string& running);

  /// The text that `running` held.
  void set_running(std::string text) { running_ = std::move(text); }

  /// Replaces the file by the text, or makes it, at once: whoever reads it sees the old text or the
  /// new one, also after a power failure. An existing file keeps its mode and, as far as allowed,
  /// its owner. Throws UsageError; the file is then as it was. So it does if the file is the
  /// running one and not any more what was read.
  void replace(const std::string& text) const;

 private:
  void check_unchanged() const;

  std::string name_;
  std::filesystem::path target_;          ///< links followed
  std::optional<FileDescriptor> locked_;  ///< the target, if it is the running file
  std::string running_;
};

}  // namespace gponval
