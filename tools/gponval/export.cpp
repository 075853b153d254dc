#include <cstdint>
#include <iostream>
#include <memory>
#include <optional>
#include <string>

#include "netconf/state/database.h"
#include "netconf/state/snapshots.h"
#include "tools/gponval/commands.h"
#include "tools/gponval/output.h"
#include "tools/gponval/plugin_location.h"
#include "tools/gponval/whole_number.h"

namespace gponval {
namespace {

namespace state = tarnd::netconf::state;
namespace store = tarnd::store;

constexpr const char* kHelp =
    "Writes the configuration of a state.\n"
    "\n"
    "Writes the configuration that gponval serve stored in its --state, or as it was after an\n"
    "earlier commit, to standard output. It may be used while the server runs.\n";

constexpr const char* kExamples =
    "Examples:\n"
    "  gponval export card.state > card.xml\n"
    "  gponval export card.state --at 12 --json > before.json\n"
    "\n";

struct ExportArguments {
  std::string state;
  std::optional<std::int64_t> at;
  bool as_json = false;
};

ExitStatus write_configuration(const ExportArguments& arguments) {
  state::Connection connection = state::open_to_read(arguments.state);
  const state::Reading reading(connection);
  const state::Number number = arguments.at.value_or(state::newest(connection));
  state::check_number(connection, number);
  const store::Schema schema(find_model());
  store::Datastore datastore(schema);
  state::restore(connection, datastore, number);
  std::cout << datastore.print(arguments.as_json ? store::Format::kJson : store::Format::kXml);
  finish_output();
  return ExitStatus::kAccepted;
}

}  // namespace

Command add_export(CLI::App& gponval) {
  CLI::App* app = gponval.add_subcommand("export", kHelp);
  auto arguments = std::make_shared<ExportArguments>();
  app->footer(std::string(kExamples) + kExitStatusHelp);
  app->add_option("STATE", arguments->state, "The state of gponval serve")->required();
  app->add_option("--at", arguments->at, "After this commit, instead of the newest one")
      ->type_name("N")
      ->transform(whole_number(1));
  app->add_flag("--json", arguments->as_json, "As JSON instead of XML");
  return {app, [arguments] { return write_configuration(*arguments); }};
}

}  // namespace gponval
