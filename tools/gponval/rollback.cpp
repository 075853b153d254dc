#include <iostream>
#include <memory>
#include <string>
#include <utility>

#include "tools/gponval/commands.h"
#include "tools/gponval/confirm.h"
#include "tools/gponval/inputs.h"
#include "tools/gponval/output.h"
#include "tools/gponval/owned_state.h"
#include "tools/gponval/remarks.h"
#include "tools/gponval/served_rollback.h"
#include "tools/gponval/usage_error.h"
#include "tools/gponval/whole_number.h"

namespace gponval {
namespace {

namespace state = tarnd::netconf::state;

constexpr const char* kHelp =
    "Commits the way back to an earlier commit of a state.\n"
    "\n"
    "Commits what makes the configuration of a state as it was after commit N, and prints the\n"
    "verdict: the validators see the way back as they see any other commit. The history stays,\n"
    "with one more commit in it. While a server has the state, the server does it, with its own\n"
    "card and plug-in, and lists every error and warning.\n";

constexpr const char* kExamples =
    "Examples:\n"
    "  gponval rollback card.state 12\n"
    "  gponval rollback card.state 12 --confirm yes --comment 'the customer has moved'\n"
    "\n";

struct RollbackArguments {
  std::string state;
  state::Number number = 0;
  InputOptions inputs;
  RunOptions run;
  bool all = false;
  Remarks remarks;
};

// The server has a card and a plug-in of its own.
void check_is_for_server(const RollbackArguments& arguments, const std::string& server) {
  const bool is_for_here = arguments.inputs.card.has_value() || arguments.run.plugin.has_value() ||
                           arguments.run.stats || arguments.run.trace != "off";
  if (!is_for_here) return;
  throw UsageError("state '" + arguments.state + "': the server at '" + server +
                   "' has it and validates: no --card, --plugin, --trace and --stats");
}

RollbackReport roll_back_here(std::unique_ptr<state::Journal> journal,
                              const RollbackArguments& arguments) {
  Host host(arguments.run, read_card(arguments.inputs));
  OwnedState owned(std::move(journal), host);
  owned.go_back_to(arguments.number);
  const bool nothing_changed = owned.changes_nothing();
  return {owned.commit(state::Kind::kRollback, author_with(arguments.remarks),
                       {arguments.all, {}, confirmation(arguments.run)}),
          nothing_changed};
}

ExitStatus roll_back(const RollbackArguments& arguments) {
  check_standard_input(arguments.inputs, arguments.run);
  FoundState found = find_state(arguments.state);
  RollbackReport done;
  if (found.journal != nullptr) {
    done = roll_back_here(std::move(found.journal), arguments);
  } else {
    check_is_for_server(arguments, found.server.string());
    done = roll_back_through(found.server, {arguments.state, arguments.number, arguments.remarks},
                             confirmation(arguments.run));
  }
  ReportKind kind{"Commit", false, done.nothing_changed, {}, {}};
  kind.sources.resize(done.report.answers.size());
  print_report(std::cout, done.report, kind, arguments.run);
  return exit_status(done.report.result);
}

}  // namespace

Command add_rollback(CLI::App& gponval) {
  CLI::App* app = gponval.add_subcommand("rollback", kHelp);
  auto arguments = std::make_shared<RollbackArguments>();
  app->footer(kExamples + std::string(kExitStatusHelp));
  app->add_option("STATE", arguments->state, "The state")->required();
  app->add_option("N", arguments->number, "The number of the commit to go back to")
      ->required()
      ->transform(whole_number(1));
  add_card_option(*app, arguments->inputs);
  add_remark_options(*app, arguments->remarks);
  add_plugin_option(*app, arguments->run);
  add_all_option(*app, arguments->all);
  add_validation_options(*app, arguments->run);
  add_format_option(*app, arguments->run);
  return {app, [arguments] { return roll_back(*arguments); }};
}

}  // namespace gponval
