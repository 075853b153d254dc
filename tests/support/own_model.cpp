#include "tests/support/own_model.h"

#include <cstdlib>
#include <fstream>
#include <sstream>

namespace tarnd::test {
namespace {

constexpr const char* kShipped = TARND_MODEL_DIR;

std::filesystem::path make_folder() {
  std::string name = (std::filesystem::temp_directory_path() / "model-XXXXXX").string();
  return mkdtemp(name.data());
}

std::string read_file(const std::filesystem::path& file) {
  std::ostringstream text;
  text << std::ifstream(file).rdbuf();
  return text.str();
}

/// Makes the type a string without a length and a pattern.
void loosen(std::string& module, const std::string& type) {
  const std::string restricted = "type string {";
  const std::size_t from = module.find(restricted, module.find("typedef " + type + " {"));
  std::size_t to = from + restricted.size();
  for (int open = 1; open > 0; ++to) {
    if (module.at(to) == '{') ++open;
    if (module.at(to) == '}') --open;
  }
  module.replace(from, to - from, "type string;");
}

}  // namespace

OwnModel::OwnModel(const Module& base) : folder_(make_folder()) {
  for (const char* file : {"tailf-common.yang", "ietf-netconf.yang", "known-numbers.txt"}) {
    std::filesystem::copy_file(std::filesystem::path(kShipped) / file, folder_ / file);
  }
  std::ofstream(folder_ / "base.yang") << base.text;
}

OwnModel::OwnModel(const std::string& body)
    : OwnModel(Module{"module base { yang-version 1.1; namespace \"urn:tarnd:base\"; prefix base;\n"
                      "import tailf-common { prefix tailf; }\n" +
                      body + "\n}\n"}) {}

OwnModel OwnModel::loosened(const std::vector<std::string>& types) {
  std::string text = read_file(std::filesystem::path(kShipped) / "base.yang");
  for (const std::string& type : types) loosen(text, type);
  return OwnModel(Module{text});
}

OwnModel::~OwnModel() {
  std::filesystem::remove_all(folder_);
}

}  // namespace tarnd::test
