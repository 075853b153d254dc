#include <algorithm>
#include <iostream>
#include <memory>
#include <sstream>
#include <string_view>
#include <utility>

#include "standalone/nearest_name.h"
#include "standalone/report/changes.h"
#include "tools/gponval/commands.h"
#include "tools/gponval/confirm.h"
#include "tools/gponval/host.h"
#include "tools/gponval/inputs.h"
#include "tools/gponval/output.h"
#include "tools/gponval/owned_state.h"
#include "tools/gponval/remarks.h"
#include "tools/gponval/save_file.h"
#include "tools/gponval/terminal.h"
#include "tools/gponval/usage_error.h"

namespace gponval {
namespace {

namespace state = tarnd::netconf::state;

constexpr const char* kHelp =
    "Commits a change and prints the verdict.\n"
    "\n"
    "Commits a change of the configuration the way the line card's daemon does: calls the\n"
    "plug-in's validators for what the change touches and prints their verdict. The first\n"
    "error ends the commit. Warnings are collected and confirmed together at the end.\n"
    "Nothing is written unless --save or --state is given.\n";

constexpr const char* kExamples =
    "Examples:\n"
    "  gponval commit --running card.xml --change add-service-port.xml\n"
    "  gponval commit --running card.xml --set '/config/service-port{16}/upstream-rate=5000'\n"
    "  gponval commit --running card.xml --candidate new.xml --all --format json\n"
    "  gponval commit --running card.xml --change fec.xml --confirm yes --save card.xml\n"
    "  gponval commit --state card.state --change fec.xml --label 'ticket 17'\n"
    "  gponval commit --running card.xml --change - --only sp_gem_check < change.xml\n"
    "\n";

constexpr std::string_view kStandardOutput = "-";

struct CommitArguments {
  InputOptions inputs;
  RunOptions run;
  std::vector<std::string> only;
  bool all = false;
  bool changes = false;
  std::optional<std::string> save;
  std::optional<std::string> state;
  Remarks remarks;
};

void check_names(const std::vector<std::string>& only,
                 const std::vector<tarnd::PointInModel>& points) {
  const std::vector<std::string_view> known = request_names(points);
  for (const std::string& name : only) {
    if (std::find(known.begin(), known.end(), name) != known.end()) continue;
    throw UsageError("--only: the model has no request '" + name + "'" +
                     tarnd::did_you_mean(name, known) + " (see gponval points)");
  }
}

std::string new_configuration(const Host& host, const CommitArguments& arguments) {
  const auto format = format_named_by(*arguments.save);
  return host.datastore().print(format.value_or(running_format(arguments.inputs)));
}

void write_output(const std::string& text) {
  std::cout << text;
  finish_output();
}

// As text they come first, so that a question about warnings can be answered with them in view. As
// JSON they are returned for the report.
std::string print_changes(std::ostream& out, const tarnd::store::Transaction& transaction,
                          const RunOptions& options) {
  const tarnd::store::Change* changes = transaction.changes();
  if (options.format == "json") {
    std::ostringstream list;
    tarnd::report::print_changes_json(list, changes);
    return list.str();
  }
  tarnd::report::print_changes_text(out, changes, has_colours(out));
  if (changes != nullptr) out << std::endl;
  return {};
}

tarnd::CommitOptions options_of(const CommitArguments& arguments) {
  return {arguments.all, arguments.only, confirmation(arguments.run)};
}

// What was edited, and is committed next.
struct Edited {
  tarnd::store::Transaction& transaction;
  std::vector<tarnd::report::AppliedEdit> edits;
  ReportKind kind;
};

Edited edited(std::ostream& out, tarnd::store::Transaction& transaction,
              const CommitArguments& arguments) {
  Edited edited{
      transaction, apply_changes(transaction, arguments.inputs), {"Commit", false, false, {}, {}}};
  edited.kind.nothing_changed = transaction.changes() == nullptr;
  if (arguments.changes) {
    edited.kind.changes_json = print_changes(out, transaction, arguments.run);
  }
  return edited;
}

ExitStatus print(std::ostream& out, const tarnd::CommitReport& report, Edited edited,
                 const CommitArguments& arguments) {
  edited.kind.sources.resize(report.answers.size());
  if (report.result != tarnd::CommitResult::kAccepted) {
    edited.kind.sources =
        tarnd::report::sources_of(edited.transaction, edited.edits, report.answers);
  }
  print_report(out, report, edited.kind, arguments.run);
  return exit_status(report.result);
}

ExitStatus commit_to_state(const CommitArguments& arguments) {
  auto journal = own_state(*arguments.state);
  Host host(arguments.run, read_card(arguments.inputs));
  OwnedState owned(std::move(journal), host);
  Edited made = edited(std::cout, owned.transaction(), arguments);
  made.kind.nothing_changed = owned.changes_nothing();
  const tarnd::CommitReport report =
      owned.commit(state::Kind::kCommit, author_with(arguments.remarks), options_of(arguments));
  return print(std::cout, report, made, arguments);
}

ExitStatus commit_to_file(const CommitArguments& arguments) {
  const bool to_output = arguments.save == kStandardOutput;
  std::optional<SaveFile> file;
  if (arguments.save.has_value() && !to_output) {
    file.emplace(*arguments.save, arguments.inputs.running);
  }
  Host host(arguments.run, read_card(arguments.inputs));
  check_names(arguments.only, host.daemon().points());

  if (file.has_value()) {
    file->set_running(load_and_keep_running(host.datastore(), arguments.inputs));
  } else {
    load_running(host.datastore(), arguments.inputs);
  }
  std::ostream& out = to_output ? std::cerr : std::cout;
  tarnd::store::Transaction transaction(host.datastore());
  const Edited made = edited(out, transaction, arguments);
  const tarnd::CommitReport report = host.daemon().commit(transaction, options_of(arguments));
  if (report.result == tarnd::CommitResult::kAccepted) {
    if (to_output) write_output(new_configuration(host, arguments));
    if (file.has_value()) file->replace(new_configuration(host, arguments));
  }
  return print(out, report, made, arguments);
}

// An empty name was given, too.
void check_is_given(const CLI::App& app) {
  if (app.count("--running") + app.count("--state") > 0) return;
  throw UsageError("--running or --state is required (see gponval commit --help)");
}

ExitStatus commit(const CommitArguments& arguments) {
  check_standard_input(arguments.inputs, arguments.run);
  if (arguments.state.has_value()) return commit_to_state(arguments);
  return commit_to_file(arguments);
}

// What goes with --running, and what with --state.
void add_state_options(CLI::App& app, CommitArguments& arguments) {
  CLI::Option* running = app.get_option("--running")->required(false);
  CLI::Option* state =
      app.add_option("--state", arguments.state,
                     "Commit to this state of gponval serve or gponval state create, while no\n"
                     "server runs on it, in place of --running and --save")
          ->type_name("FILE")
          ->group("Configuration");
  for (const char* other : {"--only", "--save"}) state->excludes(app.get_option(other));
  state->excludes(running);
  add_remark_options(app, arguments.remarks);
  for (const char* remark : {"--label", "--comment"}) app.get_option(remark)->needs(state);
}

}  // namespace

Command add_commit(CLI::App& gponval) {
  CLI::App* app = gponval.add_subcommand("commit", kHelp);
  auto arguments = std::make_shared<CommitArguments>();
  app->footer(kExamples + std::string(kExitStatusHelp));
  add_input_options(*app, arguments->inputs);
  add_plugin_option(*app, arguments->run);
  app->add_option("--only", arguments->only,
                  "Call the validators of these requests only, separated by commas (see\n"
                  "gponval points)")
      ->type_name("REQUEST")
      ->delimiter(',')
      ->allow_extra_args(false)
      ->group("Validation and output");
  add_all_option(*app, arguments->all);
  app->add_flag("--changes", arguments->changes,
                "Also print what the commit changes in the configuration")
      ->group("Validation and output");
  add_validation_options(*app, arguments->run);
  add_format_option(*app, arguments->run);
  app->add_option("--save", arguments->save,
                  "Write the new configuration here when the commit was accepted, as JSON\n"
                  "or XML by the ending of the name, else as --running is. May be the file\n"
                  "that --running names, which nobody may have changed meanwhile. - is\n"
                  "standard output; the report then goes to standard error")
      ->type_name("FILE")
      ->group("Validation and output");
  add_state_options(*app, *arguments);
  return {app, [app, arguments] {
            check_is_given(*app);
            return commit(*arguments);
          }};
}

}  // namespace gponval
