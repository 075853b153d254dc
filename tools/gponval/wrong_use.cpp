#include "tools/gponval/wrong_use.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "standalone/nearest_name.h"

namespace gponval {
namespace {

bool is_option(std::string_view argument) {
  return argument.size() > 1 && argument.front() == '-' && argument != "--";
}

std::vector<std::string> option_names(const CLI::App& command) {
  std::vector<std::string> names;
  for (const CLI::Option* option : command.get_options()) {
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
  }
  return names;
}

std::vector<std::string> command_names(const CLI::App& gponval) {
  std::vector<std::string> names;
  for (const CLI::App* command : gponval.get_subcommands([](const CLI::App*) { return true; })) {
    const bool is_hidden = command->get_group().empty();
    if (!is_hidden) names.push_back(command->get_name());
  }
  return names;
}

std::string with_suggestion(const std::string& what, const std::string& name,
                            const std::vector<std::string>& known) {
  return what + " '" + name + "'" +
         tarnd::did_you_mean(name, std::vector<std::string_view>(known.begin(), known.end()));
}

// The first argument that was not understood; an unknown option goes before a word that may be its
// value. Empty if there is none.
std::string unknown_argument(const CLI::App& gponval, const CLI::App* command) {
  const bool before_command = command == nullptr || !gponval.remaining().empty();
  const CLI::App& taker = before_command ? gponval : *command;
  const std::vector<std::string> left = taker.remaining();
  if (left.empty()) return "";
  const auto option = std::find_if(left.begin(), left.end(), is_option);
  if (before_command && option != left.begin()) {
    return with_suggestion("unknown command", left.front(), command_names(gponval));
  }
  if (option == left.end()) {
    return with_suggestion("unexpected argument", left.front(), option_names(taker));
  }
  const std::string what = before_command ? "before the command: unknown option" : "unknown option";
  return with_suggestion(what, option->substr(0, option->find('=')), option_names(taker));
}

// An option with too many values or none; the library's text only counts them.
std::string wrong_number_of_values(const CLI::App& command, const CLI::ParseError& error) {
  std::string text = error.what();
  const std::string name = text.substr(0, text.find(':'));
  const CLI::Option* option = command.get_option_no_throw(name);
  if (option == nullptr) return text;
  if (option->count() > 1) return name + " is given more than once";
  return name + " needs a value (" + option->get_type_name() + ")";
}

std::string wrong_argument(const CLI::App& gponval, const CLI::App* command,
                           const CLI::ParseError& error) {
  std::string argument = unknown_argument(gponval, command);
  if (!argument.empty()) return argument;
  const bool is_number = dynamic_cast<const CLI::ArgumentMismatch*>(&error) != nullptr;
  if (is_number && command != nullptr) return wrong_number_of_values(*command, error);
  return error.what();
}

}  // namespace

std::string wrong_use(const CLI::App& gponval, const CLI::ParseError& error) {
  const CLI::App* command = nullptr;
  std::string name = "gponval";
  for (auto inside = gponval.get_subcommands(); !inside.empty();
       inside = command->get_subcommands()) {
    command = inside.front();
    name += " " + command->get_name();
  }
  return wrong_argument(gponval, command, error) + " (see " + name + " --help)";
}

}  // namespace gponval
