#pragma once

#include <filesystem>
#include <stdexcept>

#include "confd_maapi.h"

namespace tarnd {

/// The plug-in could not be loaded or initialised; the text is one line for the user.
class PluginError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// The four entry points of a validation plug-in.
struct PluginEntryPoints {
  int (*lib_init)() = nullptr;
  int (*get_validation_point)(char* name, int size) = nullptr;
  int (*validate)(confd_trans_ctx* tctx, confd_hkeypath_t* keypath,
                  confd_value_t* newval) = nullptr;
  int (*lib_finish)() = nullptr;
};

/// A plug-in loaded with dlopen; unloading calls lib_finish.
class Plugin {
 public:
  explicit Plugin(const std::filesystem::path& file);
  Plugin(const Plugin&) = delete;
  Plugin& operator=(const Plugin&) = delete;
  ~Plugin();

  [[nodiscard]] const PluginEntryPoints& entry_points() const { return entry_points_; }

  /// A variable or function that the plug-in exports besides its entry points, by the linker's
  /// name. Throws PluginError.
  [[nodiscard]] void* symbol(const char* name) const;

 private:
  void* handle_ = nullptr;
  PluginEntryPoints entry_points_;
};

}  // namespace tarnd
