#include "tools/gponval/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <map>
#include <string_view>

#include "standalone/nearest_name.h"

namespace gponval {
namespace {

constexpr const char* kInputGroup = "Configuration";
constexpr const char* kRunGroup = "Validation and output";

using Words = std::vector<std::string_view>;

std::string joined(const Words& words, std::string_view separator) {
  std::string text;
  for (const std::string_view word : words) {
    if (!text.empty()) text += separator;
    text += word;
  }
  return text;
}

// An option whose value is one of a few words.
template <typename Value>
CLI::Option* add_choice_of(CLI::App& app, const std::string& name, Value& value, const Words& words,
                           const std::string& help) {
  const auto check = [words](const std::string& given) -> std::string {
    if (std::find(words.begin(), words.end(), given) != words.end()) return "";
    return "'" + given + "' is none of " + joined(words, ", ") + tarnd::did_you_mean(given, words);
  };
  return app.add_option(name, value, help)
      ->type_name(joined(words, "|"))
      ->check(CLI::Validator(check, ""));
}

}  // namespace

CLI::Option* add_choice(CLI::App& app, const std::string& name, std::string& value,
                        const std::vector<std::string_view>& words, const std::string& help) {
  return add_choice_of(app, name, value, words, help);
}

void add_running_option(CLI::App& app, InputOptions& options) {
  app.add_option("--running", options.running,
                 "The committed configuration: JSON if its name ends in .json, else XML\n"
                 "unless --input-format says otherwise; - is standard input")
      ->type_name("FILE")
      ->required()
      ->group(kInputGroup);
}

void add_input_format_option(CLI::App& app, InputOptions& options) {
  add_choice(app, "--input-format", options.input_format, {"xml", "json"},
             "How configurations are read whose names end neither in .xml nor in\n"
             ".json, in any case, such as standard input (xml)")
      ->group(kInputGroup);
}

void add_card_option(CLI::App& app, InputOptions& options) {
  app.add_option("--card", options.card,
                 "What the card can do: lines of key = value, with the keys bw-check,\n"
                 "onus-per-link, pon-links, manageable-links, max-service-ports, xgspon.\n"
                 "Without it, a card with bw-check true and 128 ONUs per link that\n"
                 "defines nothing else")
      ->type_name("FILE")
      ->group(kInputGroup);
}

void add_configuration_options(CLI::App& app, InputOptions& options) {
  add_running_option(app, options);
  const std::vector<CLI::Option*> edits = add_edit_options(app, kInputGroup);
  CLI::Option* candidate = app.add_option("--candidate", options.candidate,
                                          "The whole new configuration, in place of edits")
                               ->type_name("FILE")
                               ->group(kInputGroup);
  for (CLI::Option* edit : edits) candidate->excludes(edit);
  add_input_format_option(app, options);
  app.callback([&app, &options] { options.edits = edits_given(app); });
}

void add_input_options(CLI::App& app, InputOptions& options) {
  add_configuration_options(app, options);
  add_card_option(app, options);
}

void add_plugin_option(CLI::App& app, RunOptions& options) {
  app.add_option("--plugin", options.plugin,
                 "The validation plug-in; without it, the one beside this command")
      ->type_name("FILE")
      ->group(kRunGroup);
}

void add_format_option(CLI::App& app, RunOptions& options) {
  add_choice(app, "--format", options.format, {"text", "json"}, "How the answer is printed (text)")
      ->group(kRunGroup);
}

void add_all_option(CLI::App& app, bool& all) {
  app.add_flag("--all", all, "Go on after an error and list every error and warning")
      ->group(kRunGroup);
}

void add_validation_options(CLI::App& app, RunOptions& options) {
  add_choice_of(app, "--confirm", options.confirm, {"yes", "no", "ask"},
                "The answer to warnings; ask is the default at a terminal, no elsewhere")
      ->group(kRunGroup);
  add_choice(app, "--trace", options.trace, {"off", "flow", "entry", "detail"},
             "Write the trace of the validation to standard error: the flow, each\n"
             "service port's entry too, or every detail (off)")
      ->group(kRunGroup);
  app.add_flag("--stats", options.stats,
               "Also print how many platform calls of each kind were made")
      ->group(kRunGroup);
}

tarnd::TraceLevel trace_level(const RunOptions& options) {
  static const std::map<std::string, tarnd::TraceLevel> levels = {
      {"off", tarnd::TraceLevel::kOff},
      {"flow", tarnd::TraceLevel::kFlow},
      {"entry", tarnd::TraceLevel::kEntry},
      {"detail", tarnd::TraceLevel::kDetail}};
  return levels.at(options.trace);
}

}  // namespace gponval
