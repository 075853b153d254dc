#include "netconf/yang_modules.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <functional>
#include <iterator>

#include "standalone/input_error.h"
#include "standalone/store/libyang_compat.h"

namespace tarnd::netconf {
namespace {

struct Wanted {
  const char* name;
  const char* revision;  // null for the one that is there
  const char** features;
};

std::array<const char*, 8> protocol_features{"writable-running",
                                             "candidate",
                                             "confirmed-commit",
                                             "rollback-on-error",
                                             "validate",
                                             "xpath",
                                             nullptr,
                                             nullptr};
std::array<const char*, 1> no_features{nullptr};

// In this order: what a module imports comes from the folder that was read first.
const std::array kWanted{
    Wanted{"ietf-netconf", "2011-06-01", protocol_features.data()},
    Wanted{"ietf-netconf-monitoring", "2010-10-04", no_features.data()},
    Wanted{"ietf-netconf-with-defaults", "2011-06-01", no_features.data()},
    Wanted{"ietf-yang-library", "2016-06-21", no_features.data()},
    Wanted{"gponval-netconf", nullptr, no_features.data()},
    Wanted{"base", nullptr, no_features.data()},
};

std::string text_or_empty(const char* text) {
  return text != nullptr ? text : "";
}

std::vector<std::string> features_of(const lys_module* module) {
  std::vector<std::string> names;
  if (!module->implemented || module->parsed == nullptr) return names;
  const lysp_feature* feature = nullptr;
  std::uint32_t at = 0;
  while ((feature = lysp_feature_next(feature, module->parsed, &at)) != nullptr) {
    if (lys_feature_value(module, feature->name) == LY_SUCCESS) names.emplace_back(feature->name);
  }
  return names;
}

std::string printed(const lys_module* module) {
  char* text = nullptr;
  lys_print_mem(&text, module, LYS_OUT_YANG, 0);
  const std::unique_ptr<char, decltype(&std::free)> owner(text, &std::free);
  return text_or_empty(text);
}

}  // namespace

YangModules::YangModules(const std::filesystem::path& protocol, const std::filesystem::path& model)
    : context_(nullptr, ly_ctx_destroy) {
  ly_ctx* made = nullptr;
  const auto options =
      static_cast<std::uint16_t>(LY_CTX_NO_YANGLIBRARY | LY_CTX_DISABLE_SEARCHDIR_CWD);
  if (ly_ctx_new(protocol.c_str(), options, &made) != LY_SUCCESS) {
    throw InputError("cannot read the folder " + protocol.string());
  }
  context_.reset(made);
  for (const Wanted& wanted : kWanted) {
    if (wanted.revision == nullptr) ly_ctx_set_searchdir(made, model.c_str());
    add(load(wanted.name, wanted.revision, wanted.features));
  }
  std::string names;
  for (const YangModule& module : all_) names += module.name + "@" + module.revision + " ";
  set_id_ = std::to_string(std::hash<std::string>{}(names));
}

YangModules::~YangModules() = default;

const lys_module* YangModules::load(const char* name, const char* revision, const char** features) {
  const lys_module* module = ly_ctx_load_module(context_.get(), name, revision, features);
  if (module == nullptr) {
    throw InputError("cannot read the module " + std::string(name) + ": " +
                     store::take_libyang_error(context_.get()));
  }
  return module;
}

void YangModules::add(const lys_module* module) {
  const auto is_it = [module](const YangModule& known) { return known.module == module; };
  if (std::any_of(all_.begin(), all_.end(), is_it)) return;
  all_.push_back({module->name, text_or_empty(module->revision), module->ns,
                  module->implemented != 0, features_of(module), module});
  LY_ARRAY_COUNT_TYPE i = 0;
  LY_ARRAY_FOR(module->parsed->imports, i) {
    add(module->parsed->imports[i].module);
  }
}

// A module that libyang has built in is in no file.
std::string YangModules::text_of(const YangModule& module) {
  if (module.module->filepath == nullptr) return printed(module.module);
  std::ifstream file(module.module->filepath, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace tarnd::netconf
