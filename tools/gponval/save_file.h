#pragma once

#include <filesystem>
#include <string>

namespace gponval {

/// The file that a save to this name writes: links followed. Throws UsageError for a name that
/// cannot be saved to, such as a folder, a device or standard input's.
std::filesystem::path save_target(const std::string& name);

/// Replaces the file by the text, or makes it, at once: whoever reads it sees the old text or the
/// new one, also after a power failure. An existing file keeps its mode and, as far as allowed, its
/// owner. Throws UsageError; the target is then as it was.
void save_file(const std::filesystem::path& target, const std::string& text);

}  // namespace gponval
