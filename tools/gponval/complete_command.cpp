#include <iostream>
#include <memory>

#include "tools/gponval/commands.h"
#include "tools/gponval/inputs.h"
#include "tools/gponval/output.h"
#include "tools/gponval/path_completion.h"
#include "tools/gponval/plugin_location.h"

namespace gponval {
namespace {

constexpr const char* kHelp = "Lists what a path can go on with, for the completion of shells.\n";

struct CompleteArguments {
  std::string path;
  bool with_values = false;
  InputOptions inputs;
};

// The configuration is read only if entries are asked for: a user waits at the keyboard.
std::vector<std::string> completions(const CompleteArguments& arguments) {
  const tarnd::store::Schema schema(find_model());
  if (!ends_in_keys(arguments.path)) {
    return completed_names(schema, arguments.path, arguments.with_values);
  }
  if (arguments.inputs.running.empty()) return {};
  tarnd::store::Datastore datastore(schema);
  load_running(datastore, arguments.inputs);
  return completed_entries(datastore, arguments.path);
}

ExitStatus complete(const CompleteArguments& arguments) {
  for (const std::string& text : completions(arguments)) std::cout << text << '\n';
  finish_output();
  return ExitStatus::kAccepted;
}

}  // namespace

Command add_complete(CLI::App& gponval) {
  CLI::App* app = gponval.add_subcommand("complete-path", kHelp);
  app->group("");  // it is for the completion files, not for users
  auto arguments = std::make_shared<CompleteArguments>();
  app->add_option("PATH", arguments->path, "The beginning of a path")->required();
  app->add_option("--running", arguments->inputs.running, "The file whose entries are listed");
  app->add_option("--input-format", arguments->inputs.input_format, "Its format");
  app->add_flag("--values", arguments->with_values, "A value follows a leaf");
  return {app, [arguments] { return complete(*arguments); }};
}

}  // namespace gponval
