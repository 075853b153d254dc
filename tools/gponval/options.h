#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "standalone/middleware/trace.h"
#include "tools/gponval/edit_options.h"

namespace gponval {

/// What a command reads. A name is a file or "-", standard input.
struct InputOptions {
  std::string running;
  std::vector<Edit> edits;
  std::optional<std::string> candidate;
  std::optional<std::string> card;
  std::string input_format = "xml";  ///< of a name that does not say it
};

/// How the plug-in is run, and what is printed.
struct RunOptions {
  std::optional<std::string> plugin;
  std::string format = "text";
  std::optional<std::string> confirm;
  std::string trace = "off";
  bool stats = false;
};

void add_running_option(CLI::App& app, InputOptions& options);
void add_input_format_option(CLI::App& app, InputOptions& options);
void add_card_option(CLI::App& app, InputOptions& options);
/// The configuration and its edits; the edits are known after the command line was parsed.
void add_configuration_options(CLI::App& app, InputOptions& options);
/// The same and the card.
void add_input_options(CLI::App& app, InputOptions& options);
void add_plugin_option(CLI::App& app, RunOptions& options);
void add_format_option(CLI::App& app, RunOptions& options);
/// --all.
void add_all_option(CLI::App& app, bool& all);
/// --confirm, --trace and --stats.
void add_validation_options(CLI::App& app, RunOptions& options);

/// An option that takes one of a few words.
CLI::Option* add_choice(CLI::App& app, const std::string& name, std::string& value,
                        const std::vector<std::string_view>& words, const std::string& help);

tarnd::TraceLevel trace_level(const RunOptions& options);

}  // namespace gponval
