#include <iostream>
#include <memory>

#include "standalone/report/changes.h"
#include "tools/gponval/commands.h"
#include "tools/gponval/inputs.h"
#include "tools/gponval/output.h"
#include "tools/gponval/plugin_location.h"
#include "tools/gponval/terminal.h"
#include "tools/gponval/usage_error.h"

namespace gponval {
namespace {

constexpr const char* kHelp =
    "Prints how two configurations differ.\n"
    "\n"
    "Prints what a candidate, or edits, change in a configuration, in the order of the model.\n"
    "No validator is called.\n";

constexpr const char* kFooter =
    "Examples:\n"
    "  gponval diff --running card.xml --candidate new.xml\n"
    "  gponval diff --running card.xml --change change.xml --format json\n"
    "\n"
    "Exit status:\n"
    "  0  alike\n"
    "  1  different\n"
    "  2  wrong use, or input that cannot be read; one line on standard error says why\n";

struct DiffArguments {
  InputOptions inputs;
  RunOptions run;
};

ExitStatus diff(const DiffArguments& arguments) {
  if (!arguments.inputs.candidate.has_value() && arguments.inputs.edits.empty()) {
    throw UsageError("--candidate or an edit such as --change is required");
  }
  check_standard_input(arguments.inputs, arguments.run);
  const tarnd::store::Schema schema(find_model());
  tarnd::store::Datastore datastore(schema);
  load_running(datastore, arguments.inputs);
  tarnd::store::Transaction transaction(datastore);
  apply_changes(transaction, arguments.inputs);
  if (arguments.run.format == "json") {
    std::cout << "{\n  \"changes\": ";
    tarnd::report::print_changes_json(std::cout, transaction.changes());
    std::cout << "\n}\n";
  } else {
    tarnd::report::print_changes_text(std::cout, transaction.changes(), has_colours(std::cout));
  }
  finish_output();
  return transaction.changes() == nullptr ? ExitStatus::kAlike : ExitStatus::kDifferent;
}

}  // namespace

Command add_diff(CLI::App& gponval) {
  CLI::App* app = gponval.add_subcommand("diff", kHelp);
  auto arguments = std::make_shared<DiffArguments>();
  app->footer(kFooter);
  add_configuration_options(*app, arguments->inputs);
  add_format_option(*app, arguments->run);
  return {app, [arguments] { return diff(*arguments); }};
}

}  // namespace gponval
