#include "tools/gponval/serve_state.h"

#include <charconv>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

#include "netconf/confirmed_commit.h"
#include "netconf/state/server_address.h"
#include "tools/gponval/owned_state.h"
#include "tools/gponval/remarks.h"
#include "tools/gponval/usage_error.h"

namespace gponval {
namespace {

namespace netconf = tarnd::netconf;
namespace state = tarnd::netconf::state;

constexpr const char* kWrongKeep =
    "a number of commits is needed, such as 1000, or of days, such as 30d";

// "1000" or "30d".
std::optional<state::Keep> keep_in(std::string_view text) {
  const bool is_days = !text.empty() && text.back() == 'd';
  if (is_days) text.remove_suffix(1);
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || number == 0) return std::nullopt;
  if (is_days) return state::Keep{std::nullopt, std::chrono::hours{24} * number};
  return state::Keep{number, std::nullopt};
}

state::Keep keep_in(const StateArguments& arguments) {
  return arguments.keep.has_value() ? *keep_in(*arguments.keep) : state::Keep{};
}

// Before anything is made: a wrong name must not become a new card.
void check(const StateArguments& arguments, const InputOptions& inputs) {
  std::error_code unknown;
  if (!inputs.running.empty() || std::filesystem::exists(*arguments.file, unknown)) return;
  throw UsageError(
      "--state: '" + *arguments.file +
      "' does not exist; --running names the configuration that a new one begins with");
}

void check_begins(const state::Journal& journal, const StateArguments& arguments,
                  const InputOptions& inputs) {
  if (journal.is_new() && inputs.running.empty()) {
    throw UsageError("--state: nothing was stored in '" + *arguments.file +
                     "' yet; --running names the configuration that it begins with");
  }
  const bool is_asked_for = arguments.imports || arguments.if_new;
  if (journal.is_new() || inputs.running.empty() || is_asked_for) return;
  throw UsageError("--running: '" + *arguments.file +
                   "' has a configuration already; with --import it is replaced");
}

}  // namespace

void add_state_options(CLI::App& app, StateArguments& arguments, InputOptions& inputs) {
  constexpr const char* kStateGroup = "Configuration";
  CLI::Option* running = app.add_option("--running", inputs.running,
                                        "The configuration to begin with; needed without a state")
                             ->type_name("FILE")
                             ->group(kStateGroup);
  CLI::Option* state =
      app.add_option("--state", arguments.file,
                     "Where the configuration and all commits are kept: a file that\n"
                     "is made if it does not exist, and then begins with --running")
          ->type_name("FILE")
          ->group(kStateGroup);
  app.add_option("--keep", arguments.keep,
                 "How much of the history is kept: at least so many of the newest\n"
                 "commits, or with a 'd' those of so many days (all of it)")
      ->type_name("N|Nd")
      ->check([](const std::string& text) { return keep_in(text).has_value() ? "" : kWrongKeep; })
      ->needs(state)
      ->group(kStateGroup);
  CLI::Option* import = app.add_flag("--import", arguments.imports,
                                     "Replace what an existing state has by --running, as a\n"
                                     "commit that no validator is asked about")
                            ->needs(running)
                            ->needs(state)
                            ->group(kStateGroup);
  app.add_flag("--if-new", arguments.if_new,
               "Use --running only if the state is new; an existing one keeps what it\n"
               "has, and the file is not read")
      ->needs(running)
      ->needs(state)
      ->excludes(import)
      ->group(kStateGroup);
}

ServedState open_state(const StateArguments& arguments, const InputOptions& inputs,
                       tarnd::store::Datastore& datastore) {
  if (!arguments.file.has_value()) {
    if (inputs.running.empty()) throw UsageError("--running or --state is required");
    load_running(datastore, inputs);
    return {};
  }
  check(arguments, inputs);
  auto journal = std::make_unique<state::Journal>(*arguments.file, keep_in(arguments));
  check_begins(*journal, arguments, inputs);
  if (journal->is_new()) {
    load_running(datastore, inputs);
    journal->begin(datastore, importer_of(inputs.running));
    return {std::move(journal), true};
  }
  restore_newest(*journal, datastore);
  return {std::move(journal), false};
}

void resume(netconf::Card& card, const ServedState& served, const StateArguments& arguments,
            const InputOptions& inputs) {
  card.journal = served.journal.get();
  if (card.journal == nullptr) return;
  netconf::resume_pending(card);
  if (!arguments.imports || served.is_new) return;
  if (card.pending.has_value()) {
    throw UsageError("--import: a commit has to be confirmed or cancelled first");
  }
  state::Commit import;
  import.kind = state::Kind::kImport;
  import.author = importer_of(inputs.running);
  replace_by_running(card.candidate, inputs);
  import.changes = card.candidate.item_changes();
  card.journal->record(import, std::nullopt);
  card.candidate.commit();
  card.journal->sync();
}

void keep_address(const ServedState& served, const std::filesystem::path& socket) {
  if (served.journal == nullptr) return;
  state::keep_server(served.journal->connection(), std::filesystem::absolute(socket).string());
}

std::string where_state_is(const StateArguments& arguments) {
  if (!arguments.file.has_value()) return "The configuration is in memory only (see --state).\n";
  return "The configuration and its history are kept in " + *arguments.file + ".\n";
}

}  // namespace gponval
