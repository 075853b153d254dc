#include <algorithm>
#include <cctype>
#include <exception>
#include <iostream>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tools/gponval/commands.h"
#include "tools/gponval/output.h"

namespace {

constexpr int kWrongUse = 2;

constexpr const char* kHelp =
    "Commits configuration changes of an optical line-terminal card through the validation\n"
    "plug-in of its management daemon, away from the card, and prints the verdict.\n";

constexpr const char* kFooter =
    "A FILE holds the model's top-level config, in XML or, by the ending .json, in JSON; - is\n"
    "standard input. See gponval COMMAND --help for the options of a command.\n"
    "\n"
    "Examples:\n"
    "  gponval commit --running card.xml --change change.xml\n"
    "  gponval request onu_gem_check '/config/interface/gpon{1 1 3}/onu' --running card.xml\n"
    "  gponval points\n"
    "  gponval generate --links 2 --onus 8 --service-ports 16 > card.xml\n"
    "\n"
    "Exit status:\n"
    "  0  accepted\n"
    "  1  rejected\n"
    "  2  wrong use, or input that cannot be read; one line on standard error says why\n"
    "  3  the warnings were not confirmed\n";

// Whatever a file or an argument put into the text, the user gets one line.
std::string one_line(std::string text) {
  for (char& letter : text) {
    if (std::iscntrl(static_cast<unsigned char>(letter)) != 0) letter = ' ';
  }
  return text;
}

// Of a subcommand the list tells the first line; the rest is for its own help.
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

// The library takes "--value=" for "--value" and what follows; here it is an empty value.
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

int report(const std::string& what) {
  std::cerr << "gponval: " << one_line(what) << '\n';
  return kWrongUse;
}

int report_usage(const CLI::App& app, const CLI::ParseError& error) {
  std::string command = "gponval";
  for (const CLI::App* sub : app.get_subcommands()) command += " " + sub->get_name();
  return report(std::string(error.what()) + " (see " + command + " --help)");
}

int run(int argc, char** argv) {
  CLI::App app(kHelp, "gponval");
  app.footer(kFooter);
  app.formatter(std::make_shared<CommandListFormatter>());
  app.require_subcommand(0, 1);
  const std::vector<gponval::Command> commands = {
      gponval::add_commit(app), gponval::add_request(app), gponval::add_points(app),
      gponval::add_generate(app)};
  try {
    std::vector<std::string> arguments = arguments_of(argc, argv);
    std::reverse(arguments.begin(), arguments.end());  // the library takes them from the end
    app.parse(std::move(arguments));
  } catch (const CLI::CallForHelp& help) {
    app.exit(help);
    gponval::finish_output();
    return 0;
  } catch (const CLI::ParseError& error) {
    return report_usage(app, error);
  }
  for (const gponval::Command& command : commands) {
    if (command.app->parsed()) return command.run();
  }
  return report("a command is required (see gponval --help)");
}

}  // namespace

int main(int argc, char** argv) {
  std::ios::sync_with_stdio(false);
  try {
    return run(argc, argv);
  } catch (const std::exception& error) {
    return report(error.what());
  }
}
