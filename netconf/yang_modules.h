#pragma once

#include <libyang/libyang.h>

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace tarnd::netconf {

/// A module that the server implements, or that one of them imports.
struct YangModule {
  std::string name;
  std::string revision;
  std::string name_space;
  bool is_implemented = false;
  std::vector<std::string> features;
  const lys_module* module = nullptr;
};

/// The modules of the card's model and of the protocol, for clients that ask for them.
class YangModules {
 public:
  /// Reads the protocol's modules from the first folder, and the model and what the server adds to
  /// the protocol from the second. Throws InputError.
  YangModules(const std::filesystem::path& protocol, const std::filesystem::path& model);
  YangModules(const YangModules&) = delete;
  YangModules& operator=(const YangModules&) = delete;
  ~YangModules();

  [[nodiscard]] const std::vector<YangModule>& all() const { return all_; }
  /// Changes when one of the modules does.
  [[nodiscard]] const std::string& set_id() const { return set_id_; }
  [[nodiscard]] ly_ctx* context() const { return context_.get(); }
  /// The module as a YANG text.
  [[nodiscard]] static std::string text_of(const YangModule& module);

 private:
  const lys_module* load(const char* name, const char* revision, const char** features);
  void add(const lys_module* module);

  std::unique_ptr<ly_ctx, void (*)(ly_ctx*)> context_;
  std::vector<YangModule> all_;
  std::string set_id_;
};

}  // namespace tarnd::netconf
