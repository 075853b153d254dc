#include <algorithm>
#include <exception>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "standalone/kept_memory.h"
#include "tools/gponval/commands.h"
#include "tools/gponval/error_line.h"
#include "tools/gponval/output.h"
#include "tools/gponval/wrong_use.h"

namespace {

using gponval::ExitStatus;

constexpr const char* kHelp =
    "Commits configuration changes of an optical line-terminal card through the validation\n"
    "plug-in of its management daemon, away from the card, and prints the verdict.\n";

constexpr const char* kFooter =
    "A FILE holds the model's top-level config; - is standard input. It is read as JSON if its\n"
    "name ends in .json, as XML if it ends in .xml, both in any case, and otherwise as\n"
    "--input-format says, or as XML. See gponval COMMAND --help for the options of a command.\n"
    "\n"
    "Examples:\n"
    "  gponval commit --running card.xml --change change.xml\n"
    "  gponval diff --running card.xml --candidate new.xml\n"
    "  gponval request onu_gem_check '/config/interface/gpon{1 1 3}/onu' --running card.xml\n"
    "  gponval points\n"
    "  gponval load --running card.xml\n"
    "  gponval serve --running card.xml --socket card.socket\n"
    "  gponval generate --links 2 --onus 8 --service-ports 16 > card.xml\n"
    "\n";

// In the list of subcommands, only the first line of each description; the rest is for its own
// help.
class CommandListFormatter : public CLI::Formatter {
 public:
  std::string make_subcommand(const CLI::App* command) const override {
    const std::string description = command->get_description();
    std::ostringstream line;
    CLI::detail::format_help(line, command->get_name(),
                             description.substr(0, description.find('\n')), column_width_);
    return line.str();
  }
};

// For the library "--value=" takes the next argument as its value; for us its value is empty.
std::vector<std::string> arguments_of(int argc, char** argv) {
  std::vector<std::string> arguments;
  bool options_ended = false;
  for (int i = 1; i < argc; ++i) {
    std::string argument = argv[i];
    options_ended = options_ended || argument == "--";
    const bool empty_value =
        !options_ended && argument.rfind("--", 0) == 0 && argument.find('=') == argument.size() - 1;
    if (empty_value) argument.pop_back();
    arguments.push_back(std::move(argument));
    if (empty_value) arguments.emplace_back();
  }
  return arguments;
}

ExitStatus report(const std::string& what) {
  gponval::print_error(what);
  return ExitStatus::kWrongUse;
}

ExitStatus run(int argc, char** argv) {
  CLI::App app(kHelp, "gponval");
  app.footer(std::string(kFooter) + gponval::kExitStatusHelp);
  app.set_version_flag("--version", "gponval " GPONVAL_VERSION, "Print the version and exit");
  app.formatter(std::make_shared<CommandListFormatter>());
  app.require_subcommand(0, 1);
  const std::vector<gponval::Command> commands = {
      gponval::add_commit(app),  gponval::add_diff(app),     gponval::add_request(app),
      gponval::add_points(app),  gponval::add_generate(app), gponval::add_serve(app),
      gponval::add_netconf(app), gponval::add_load(app),     gponval::add_history(app),
      gponval::add_export(app),  gponval::add_rollback(app), gponval::add_state(app),
      gponval::add_complete(app)};
  try {
    std::vector<std::string> arguments = arguments_of(argc, argv);
    std::reverse(arguments.begin(), arguments.end());  // the library wants them in reverse order
    app.parse(std::move(arguments));
  } catch (const CLI::Success& help_or_version) {
    app.exit(help_or_version);
    gponval::finish_output();
    return ExitStatus::kAccepted;
  } catch (const CLI::ParseError& error) {
    return report(gponval::wrong_use(app, error));
  }
  for (const gponval::Command& command : commands) {
    if (command.app->parsed()) return command.run();
  }
  return report("a command is required (see gponval --help)");
}

}  // namespace

int main(int argc, char** argv) {
  std::ios::sync_with_stdio(false);
  tarnd::keep_freed_memory();
  try {
    return static_cast<int>(run(argc, argv));
  } catch (const std::exception& error) {
    return static_cast<int>(report(error.what()));
  }
}
