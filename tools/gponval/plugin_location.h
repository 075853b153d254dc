#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace gponval {

/// The plug-in that the user named, or else the first that is found in the places relative to this
/// command. Throws UsageError.
std::filesystem::path find_plugin(const std::optional<std::string>& named);

/// The folder of the data model that belongs to this command. Throws UsageError.
std::filesystem::path find_model();

/// The program that runs. Throws UsageError.
std::filesystem::path command_file();

}  // namespace gponval
