#pragma once

#include <CLI/CLI.hpp>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "netconf/card.h"
#include "netconf/state/journal.h"
#include "tools/gponval/inputs.h"

namespace gponval {

/// Where a server keeps what it commits.
struct StateArguments {
  std::optional<std::string> file;
  bool imports = false;
  bool if_new = false;
  std::optional<std::string> keep;
};

/// --running, --state, --import and --keep.
void add_state_options(CLI::App& app, StateArguments& arguments, InputOptions& inputs);

/// The state that a server uses.
struct ServedState {
  std::unique_ptr<tarnd::netconf::state::Journal> journal;  ///< null: everything is in memory
  bool is_new = false;
};

/// Opens the state, and makes the datastore what it has; a new one begins with the running
/// configuration. Without a state only the running configuration is read. Throws UsageError or
/// state::Failure.
ServedState open_state(const StateArguments& arguments, const InputOptions& inputs,
                       tarnd::store::Datastore& datastore);

/// What follows once the card is there: a confirmed commit that waits, and the import.
void resume(tarnd::netconf::Card& card, const ServedState& served, const StateArguments& arguments,
            const InputOptions& inputs);

/// Other commands find the server that has the state by this. Throws state::Failure.
void keep_address(const ServedState& served, const std::filesystem::path& socket);

/// A line for the user.
std::string where_state_is(const StateArguments& arguments);

}  // namespace gponval
