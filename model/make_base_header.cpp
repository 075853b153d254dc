// Writes the header with the numbers of the model's names:
//     make_base_header MODEL_FOLDER KNOWN_NUMBERS HEADER

#include <libyang/libyang.h>

#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "model/base_header.h"
#include "model/name_numbers.h"

namespace {

constexpr const char* kModule = "base";

using Context = std::unique_ptr<ly_ctx, void (*)(ly_ctx*)>;

Context make_context(const std::string& model_folder) {
  ly_ctx* context = nullptr;
  if (ly_ctx_new(model_folder.c_str(), LY_CTX_DISABLE_SEARCHDIR_CWD, &context) != LY_SUCCESS) {
    throw std::runtime_error(model_folder + ": cannot be used as the folder of the model");
  }
  return {context, ly_ctx_destroy};
}

const lys_module* load_model(ly_ctx* context) {
  const lys_module* module = ly_ctx_load_module(context, kModule, nullptr, nullptr);
  if (module == nullptr) {
    // The first error is the cause, the others only say where it was noticed.
    const ly_err_item* cause = ly_err_first(context);
    throw std::runtime_error("the model cannot be loaded: " +
                             std::string(cause == nullptr ? "unknown reason" : cause->msg));
  }
  return module;
}

LY_ERR collect_name(lysc_node* node, void* names, ly_bool* /*skip_children*/) {
  // Choices and cases are in no path and no value, so they have no number.
  if ((node->nodetype & (LYS_CHOICE | LYS_CASE)) == 0) {
    static_cast<std::vector<std::string>*>(names)->emplace_back(node->name);
  }
  return LY_SUCCESS;
}

std::vector<std::string> names_of(const lys_module* module) {
  std::vector<std::string> names;
  if (lysc_module_dfs_full(module, collect_name, &names) != LY_SUCCESS) {
    throw std::runtime_error("the nodes of the model cannot be listed");
  }
  return names;
}

void write_file(const std::filesystem::path& path, std::string_view text) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file << text << std::flush;
  if (!file) throw std::runtime_error(path.string() + ": cannot be written");
}

void make_header(const std::string& model_folder, const std::filesystem::path& known_numbers,
                 const std::filesystem::path& header) {
  // libyang prints nothing: the exception's one line has the reason of a failure.
  ly_log_options(LY_LOSTORE);
  const tarnd::NameNumbers numbers(known_numbers);
  const Context context = make_context(model_folder);
  const lys_module* module = load_model(context.get());
  if (numbers.namespace_uri() != module->ns) {
    throw std::runtime_error("the model's namespace is " + std::string(module->ns) +
                             ", a number is known for " + numbers.namespace_uri());
  }
  write_file(header, tarnd::base_header(numbers, module->prefix, names_of(module)));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) {
    std::cerr << "usage: make_base_header MODEL_FOLDER KNOWN_NUMBERS HEADER\n";
    return 2;
  }
  try {
    make_header(argv[1], argv[2], argv[3]);
  } catch (const std::exception& error) {
    std::cerr << "make_base_header: " << error.what() << "\n";
    return 1;
  }
  return 0;
}
