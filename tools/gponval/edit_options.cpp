#include "tools/gponval/edit_options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <cstddef>
#include <map>

namespace gponval {
namespace {

using tarnd::store::Operation;

struct EditOption {
  const char* name;
  std::optional<Operation> by_path;
  const char* takes;
  const char* help;
};

constexpr std::array kEditOptions = {
    EditOption{"--change", std::nullopt, "FILE",
               "An edit of it, as the content of a NETCONF edit-config: merged, unless\n"
               "nc:operation says merge, create, replace, delete or remove. This and the\n"
               "next ones may be repeated and mixed: the edits apply in the order given,\n"
               "in one transaction"},
    EditOption{"--set", Operation::kMerge, "PATH[=VALUE]",
               "Set one leaf, or add an entry, a presence container or a value of a\n"
               "leaf-list, with what is missing around it. Paths are such as\n"
               "'/config/service-port{16}/gpon/id=1/1/3', or have XPath's predicates:\n"
               "\"/config/service-port[id='16']\""},
    EditOption{"--create", Operation::kCreate, "PATH[=VALUE]",
               "The same for a node that must not exist"},
    EditOption{"--replace", Operation::kReplace, "PATH[=VALUE]",
               "The same; the node and everything in it are replaced"},
    EditOption{"--delete", Operation::kDelete, "PATH",
               "Delete a node with everything in it; it must exist"},
    EditOption{"--remove", Operation::kRemove, "PATH", "The same for a node that may be missing"},
};

}  // namespace

std::vector<CLI::Option*> add_edit_options(CLI::App& app, const std::string& group) {
  std::vector<CLI::Option*> options;
  for (const EditOption& edit : kEditOptions) {
    // What the library does with the values would lose the order of the options.
    const auto take_later = [](const CLI::results_t& /*values*/) { return true; };
    options.push_back(app.add_option(edit.name, take_later, edit.help)
                          ->type_name(edit.takes)
                          ->expected(1)
                          ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll)
                          ->allow_extra_args(false)
                          ->group(group));
  }
  return options;
}

std::vector<Edit> edits_given(const CLI::App& app) {
  std::vector<Edit> edits;
  std::map<const CLI::Option*, std::size_t> taken;
  for (const CLI::Option* option : app.parse_order()) {
    const auto* edit =
        std::find_if(kEditOptions.begin(), kEditOptions.end(),
                     [option](const EditOption& known) { return option->check_name(known.name); });
    if (edit == kEditOptions.end()) continue;
    edits.push_back({edit->name, edit->by_path, option->results().at(taken[option]++)});
  }
  return edits;
}

}  // namespace gponval
