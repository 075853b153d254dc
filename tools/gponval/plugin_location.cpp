#include "tools/gponval/plugin_location.h"

#include <array>

#include "tools/gponval/usage_error.h"

namespace gponval {
namespace {

// Relative to the folder of the command: beside it, where it is installed, and in the build tree.
constexpr std::array kPluginPlaces = {
    "libgpon_valid.so",
    "../lib/tarnd/libgpon_valid.so",
    GPONVAL_INSTALLED_PLUGIN,
    GPONVAL_BUILT_PLUGIN,
};
constexpr std::array kModelPlaces = {
    "../share/tarnd/model",
    GPONVAL_INSTALLED_MODEL,
    GPONVAL_BUILT_MODEL,
};
constexpr const char* kModelFile = "base.yang";

}  // namespace

std::filesystem::path command_file() {
  std::error_code error;
  std::filesystem::path command = std::filesystem::read_symlink("/proc/self/exe", error);
  if (error) throw UsageError("cannot find the folder of this command: " + error.message());
  return command;
}

std::filesystem::path find_plugin(const std::optional<std::string>& named) {
  if (named.has_value()) return *named;
  const std::filesystem::path folder = command_file().parent_path();
  std::error_code unknown;
  for (const char* place : kPluginPlaces) {
    std::filesystem::path file = (folder / place).lexically_normal();
    if (std::filesystem::is_regular_file(file, unknown)) return file;
  }
  throw UsageError("no plug-in libgpon_valid.so beside this command, name one with --plugin");
}

std::filesystem::path find_model() {
  const std::filesystem::path folder = command_file().parent_path();
  std::error_code unknown;
  for (const char* place : kModelPlaces) {
    std::filesystem::path model = (folder / place).lexically_normal();
    if (std::filesystem::is_regular_file(model / kModelFile, unknown)) return model;
  }
  throw UsageError("the data model base.yang is not beside this command");
}

}  // namespace gponval
