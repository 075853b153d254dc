#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace gponval {

/// The plug-in that the user named, else the first of the places beside this command where one is.
/// Throws UsageError.
std::filesystem::path find_plugin(const std::optional<std::string>& named);

/// The folder of the data model that belongs to this command. Throws UsageError.
std::filesystem::path find_model();

}  // namespace gponval
