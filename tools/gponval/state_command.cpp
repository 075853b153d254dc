#include <algorithm>
#include <string>
#include <vector>

#include "tools/gponval/commands.h"

namespace gponval {
namespace {

constexpr const char* kHelp = "Makes a state, or checks one.\n";

}  // namespace

Command add_state(CLI::App& gponval) {
  CLI::App* app = gponval.add_subcommand("state", kHelp);
  app->footer(kExitStatusHelp);
  app->require_subcommand(1);
  const std::vector<Command> commands = {add_state_create(*app), add_state_check(*app)};
  return {app, [commands] {
            const auto named =
                std::find_if(commands.begin(), commands.end(),
                             [](const Command& command) { return command.app->parsed(); });
            return named->run();
          }};
}

}  // namespace gponval
