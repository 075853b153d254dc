#pragma once

#include <CLI/CLI.hpp>
#include <functional>

#include "tools/gponval/exit_status.h"

namespace gponval {

/// A subcommand: its part of the command line, and the function to call after the line is parsed.
/// `run` returns the exit status and throws std::exception with one line for the user.
struct Command {
  CLI::App* app = nullptr;
  std::function<ExitStatus()> run;
};

Command add_commit(CLI::App& gponval);
Command add_complete(CLI::App& gponval);
Command add_diff(CLI::App& gponval);
Command add_export(CLI::App& gponval);
Command add_history(CLI::App& gponval);
Command add_load(CLI::App& gponval);
Command add_rollback(CLI::App& gponval);
Command add_state(CLI::App& gponval);
Command add_state_check(CLI::App& state);
Command add_state_create(CLI::App& state);
Command add_request(CLI::App& gponval);
Command add_points(CLI::App& gponval);
Command add_generate(CLI::App& gponval);
Command add_serve(CLI::App& gponval);
Command add_netconf(CLI::App& gponval);

}  // namespace gponval
