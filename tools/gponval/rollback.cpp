#include <iostream>
#include <memory>
#include <string>

#include "tools/gponval/commands.h"
#include "tools/gponval/confirm.h"
#include "tools/gponval/inputs.h"
#include "tools/gponval/output.h"
#include "tools/gponval/owned_state.h"
#include "tools/gponval/remarks.h"

namespace gponval {
namespace {

namespace state = tarnd::netconf::state;

constexpr const char* kHelp =
    "Commits the way back to an earlier commit of a state.\n"
    "\n"
    "Commits what makes the configuration of a state as it was after commit N, and prints the\n"
    "verdict: the validators see the way back as they see any other commit. The history stays,\n"
    "with one more commit in it.\n";

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

ExitStatus roll_back(const RollbackArguments& arguments) {
  check_standard_input(arguments.inputs, arguments.run);
  auto journal = own_state(arguments.state);
  Host host(arguments.run, read_card(arguments.inputs));
  OwnedState owned(std::move(journal), host);
  owned.go_back_to(arguments.number);
  ReportKind kind{"Commit", false, owned.changes_nothing(), {}, {}};
  const tarnd::CommitReport report =
      owned.commit(state::Kind::kRollback, author_with(arguments.remarks),
                   {arguments.all, {}, confirmation(arguments.run)});
  kind.sources.resize(report.answers.size());
  print_report(std::cout, report, kind, arguments.run);
  return exit_status(report.result);
}

}  // namespace

Command add_rollback(CLI::App& gponval) {
  CLI::App* app = gponval.add_subcommand("rollback", kHelp);
  auto arguments = std::make_shared<RollbackArguments>();
  app->footer(kExamples + std::string(kExitStatusHelp));
  app->add_option("STATE", arguments->state, "The state")->required();
  app->add_option("N", arguments->number, "The number of the commit to go back to")
      ->required()
      ->check(CLI::PositiveNumber);
  add_card_option(*app, arguments->inputs);
  add_remark_options(*app, arguments->remarks);
  add_plugin_option(*app, arguments->run);
  add_all_option(*app, arguments->all);
  add_validation_options(*app, arguments->run);
  add_format_option(*app, arguments->run);
  return {app, [arguments] { return roll_back(*arguments); }};
}

}  // namespace gponval
