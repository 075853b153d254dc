#include "tools/gponval/options.h"

#include <map>

namespace gponval {
namespace {

constexpr const char* kInputGroup = "Configuration";
constexpr const char* kRunGroup = "Validation and output";

}  // namespace

const char* const kExitStatusHelp =
    "Exit status:\n"
    "  0  accepted\n"
    "  1  rejected\n"
    "  2  wrong use, or input that cannot be read; one line on standard error says why\n"
    "  3  the warnings were not confirmed\n";

void add_input_options(CLI::App& app, InputOptions& options) {
  app.add_option("--running", options.running,
                 "The committed configuration: XML, or JSON by the ending .json; - reads\n"
                 "XML from standard input")
      ->type_name("FILE")
      ->required()
      ->group(kInputGroup);
  CLI::Option* changes =
      app.add_option("--change", options.changes,
                     "An edit of it, as the content of a NETCONF edit-config: merged, unless\n"
                     "nc:operation says merge, create, replace, delete or remove; may be\n"
                     "repeated, the edits then apply in order in one transaction")
          ->type_name("FILE")
          ->allow_extra_args(false)
          ->group(kInputGroup);
  app.add_option("--candidate", options.candidate, "The whole new configuration, in place of edits")
      ->type_name("FILE")
      ->excludes(changes)
      ->group(kInputGroup);
  app.add_option("--card", options.card,
                 "What the card can do: lines of key = value, with the keys bw-check,\n"
                 "onus-per-link, pon-links, manageable-links, max-service-ports, xgspon.\n"
                 "Without it, a card with bw-check true and 128 ONUs per link that\n"
                 "defines nothing else")
      ->type_name("FILE")
      ->group(kInputGroup);
}

void add_plugin_option(CLI::App& app, RunOptions& options) {
  app.add_option("--plugin", options.plugin,
                 "The validation plug-in; without it, the one beside this command")
      ->type_name("FILE")
      ->group(kRunGroup);
}

void add_format_option(CLI::App& app, RunOptions& options) {
  app.add_option("--format", options.format, "How the answer is printed (text)")
      ->type_name("text|json")
      ->check(CLI::IsMember({"text", "json"}).description(""))
      ->group(kRunGroup);
}

void add_validation_options(CLI::App& app, RunOptions& options) {
  app.add_option("--confirm", options.confirm,
                 "The answer to warnings; ask is the default at a terminal, no elsewhere")
      ->type_name("yes|no|ask")
      ->check(CLI::IsMember({"yes", "no", "ask"}).description(""))
      ->group(kRunGroup);
  app.add_option("--trace", options.trace,
                 "Write the trace of the validation to standard error: the flow, each\n"
                 "service port's entry too, or every detail (off)")
      ->type_name("off|flow|entry|detail")
      ->check(CLI::IsMember({"off", "flow", "entry", "detail"}).description(""))
      ->group(kRunGroup);
  app.add_flag("--stats", options.stats, "Also tell how many platform calls of each kind were made")
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
