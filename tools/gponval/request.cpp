#include <algorithm>
#include <iostream>
#include <memory>
#include <string_view>

#include "standalone/nearest_name.h"
#include "standalone/report/answer_source.h"
#include "tools/gponval/commands.h"
#include "tools/gponval/confirm.h"
#include "tools/gponval/error_line.h"
#include "tools/gponval/host.h"
#include "tools/gponval/inputs.h"
#include "tools/gponval/output.h"

namespace gponval {
namespace {

constexpr const char* kHelp =
    "Runs one request and prints its answer.\n"
    "\n"
    "The name is passed to the plug-in as it is, so the beginning of a name, or an unknown\n"
    "name, can be tried, too. The keypath may name an instance that does not exist. Nothing\n"
    "is ever written.\n";

constexpr const char* kExamples =
    "Examples:\n"
    "  gponval request onu_bw_check '/config/interface/gpon{1 1 3}/onu' --running card.xml\n"
    "  gponval request sp_gem_check /config/service-port --running card.xml --change sp.xml\n"
    "  gponval request fec_confirmation_warning \\\n"
    "      '/config/interface/gpon{1 1 3}/downstream-fec' --value false --running card.xml\n"
    "  gponval request '' '/config/interface/gpon{1 1 3}/onu' --running card.xml\n"
    "\n";

struct RequestArguments {
  std::string name;
  std::string keypath;
  std::optional<std::string> value;
  InputOptions inputs;
  RunOptions run;
};

// The plug-in also knows a validator by the beginning of its name, and accepts an unknown name.
void warn_of_unknown_name(const std::string& name, const std::vector<tarnd::PointInModel>& points) {
  const auto begins_with_name = [&name](const tarnd::PointInModel& in_model) {
    return in_model.point->request.starts_with(name);
  };
  if (std::any_of(points.begin(), points.end(), begins_with_name)) return;
  print_error("no request of the model begins with '" + name + "'" +
              tarnd::did_you_mean(name, request_names(points)));
}

ExitStatus request(const RequestArguments& arguments) {
  check_standard_input(arguments.inputs, arguments.run);
  Host host(arguments.run, read_card(arguments.inputs));
  load_running(host.datastore(), arguments.inputs);
  tarnd::store::Transaction transaction(host.datastore());
  const auto edits = apply_changes(transaction, arguments.inputs);
  tarnd::CommitOptions options;
  options.confirm = confirmation(arguments.run);
  const tarnd::CommitReport report = host.daemon().request(
      transaction, arguments.name, arguments.keypath, arguments.value, options);
  const auto sources = tarnd::report::sources_of(transaction, edits, report.answers);
  print_report(std::cout, report, {"Request", true, false, {}, sources}, arguments.run);
  warn_of_unknown_name(arguments.name, host.daemon().points());
  return exit_status(report.result);
}

}  // namespace

Command add_request(CLI::App& gponval) {
  CLI::App* app = gponval.add_subcommand("request", kHelp);
  auto arguments = std::make_shared<RequestArguments>();
  app->footer(kExamples + std::string(kExitStatusHelp));
  app->add_option("NAME", arguments->name, "The request, such as sp_gem_check")
      ->type_name("")
      ->required();
  app->add_option("KEYPATH", arguments->keypath,
                  "The validated node, such as '/config/interface/gpon{1 1 3}/onu'")
      ->type_name("")
      ->required();
  app->add_option("--value", arguments->value,
                  "The new value of the leaf, written as in a file; without it the value\n"
                  "that the transaction leaves. Write --value=V for a V that begins with -")
      ->type_name("V");
  add_input_options(*app, arguments->inputs);
  add_plugin_option(*app, arguments->run);
  add_validation_options(*app, arguments->run);
  add_format_option(*app, arguments->run);
  return {app, [arguments] { return request(*arguments); }};
}

}  // namespace gponval
