#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace tarnd::test {

/// A folder with the shipped modules and numbers, and a base.yang of the test's own: this body
/// inside the module.
class OwnModel {
 public:
  explicit OwnModel(const std::string& body) {
    for (const char* file : {"tailf-common.yang", "ietf-netconf.yang", "known-numbers.txt"}) {
      std::filesystem::copy_file(std::filesystem::path(TARND_MODEL_DIR) / file, folder_ / file);
    }
    std::ofstream(folder_ / "base.yang")
        << "module base { yang-version 1.1; namespace \"urn:tarnd:base\"; prefix base;\n"
        << "import tailf-common { prefix tailf; }\n"
        << body << "\n}\n";
  }
  OwnModel(const OwnModel&) = delete;
  OwnModel& operator=(const OwnModel&) = delete;
  ~OwnModel() { std::filesystem::remove_all(folder_); }

  [[nodiscard]] const std::filesystem::path& folder() const { return folder_; }

 private:
  static std::filesystem::path make_folder() {
    std::string name = (std::filesystem::temp_directory_path() / "model-XXXXXX").string();
    return mkdtemp(name.data());
  }

  std::filesystem::path folder_ = make_folder();
};

}  // namespace tarnd::test
