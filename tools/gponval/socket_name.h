#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace gponval {

/// The socket that the user names, else gponval.socket in the user's own folder for such files.
/// Throws UsageError if there is no such folder.
std::filesystem::path socket_name(const std::optional<std::string>& named);

}  // namespace gponval
