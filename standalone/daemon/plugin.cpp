#include "standalone/daemon/plugin.h"

#include <dlfcn.h>

#include <string>

namespace tarnd {
namespace {

template <typename Function>
Function* entry_point(void* handle, const char* name) {
  auto* function = reinterpret_cast<Function*>(dlsym(handle, name));
  if (function == nullptr) {
    throw PluginError("the plug-in has no entry point " + std::string(name));
  }
  return function;
}

}  // namespace

Plugin::Plugin(const std::filesystem::path& file) {
  if (!std::filesystem::exists(file)) {
    throw PluginError("there is no plug-in " + file.string());
  }
  // Given a name without a slash, dlopen would search the system's folders.
  handle_ = dlopen(std::filesystem::absolute(file).c_str(), RTLD_NOW | RTLD_LOCAL);
  if (handle_ == nullptr) {
    throw PluginError("cannot load the plug-in " + file.string() + ": " + dlerror());
  }
  try {
    entry_points_.lib_init = entry_point<int()>(handle_, "lib_init");
    entry_points_.get_validation_point =
        entry_point<int(char*, int)>(handle_, "get_validation_point");
    entry_points_.validate =
        entry_point<int(confd_trans_ctx*, confd_hkeypath_t*, confd_value_t*)>(handle_, "validate");
    entry_points_.lib_finish = entry_point<int()>(handle_, "lib_finish");
  } catch (...) {
    dlclose(handle_);
    throw;
  }
}

void* Plugin::symbol(const char* name) const {
  void* found = dlsym(handle_, name);
  if (found == nullptr) throw PluginError("the plug-in exports no " + std::string(name));
  return found;
}

Plugin::~Plugin() {
  dlclose(handle_);
}

}  // namespace tarnd
