#include <iostream>
#include <memory>
#include <string>

#include "tools/gponval/commands.h"
#include "tools/gponval/inputs.h"
#include "tools/gponval/output.h"
#include "tools/gponval/owned_state.h"
#include "tools/gponval/plugin_location.h"
#include "tools/gponval/remarks.h"
#include "tools/gponval/usage_error.h"

namespace gponval {
namespace {

namespace state = tarnd::netconf::state;

constexpr const char* kHelp =
    "Makes a state that begins with a configuration.\n"
    "\n"
    "Stores the configuration of --running as commit 1 of a new state, as gponval serve does;\n"
    "no validator is asked. A state that exists is left as it is.\n";

constexpr const char* kExamples =
    "Examples:\n"
    "  gponval state create card.state --running card.xml\n"
    "\n";

struct CreateArguments {
  std::string state;
  InputOptions inputs;
};

ExitStatus create(const CreateArguments& arguments) {
  ignore_limit_of_files();
  // Read first, so that a wrong name makes no empty state.
  const tarnd::store::Schema schema(find_model());
  tarnd::store::Datastore datastore(schema);
  load_running(datastore, arguments.inputs);
  state::Journal journal(arguments.state);
  if (!journal.is_new()) {
    throw UsageError("state '" + arguments.state +
                     "' has a configuration already; gponval commit --state changes it");
  }
  journal.begin(datastore, importer_of(arguments.inputs.running));
  std::cout << "State " << arguments.state << " begins with the configuration of "
            << name_in_message(arguments.inputs.running) << ".\n";
  finish_output();
  return ExitStatus::kAccepted;
}

}  // namespace

Command add_state_create(CLI::App& state) {
  CLI::App* app = state.add_subcommand("create", kHelp);
  auto arguments = std::make_shared<CreateArguments>();
  app->footer(kExamples + std::string(kExitStatusHelp));
  app->add_option("STATE", arguments->state, "The file to make")->required();
  add_running_option(*app, arguments->inputs);
  add_input_format_option(*app, arguments->inputs);
  return {app, [arguments] { return create(*arguments); }};
}

}  // namespace gponval
