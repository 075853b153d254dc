#include <unistd.h>

#include <csignal>
#include <memory>

#include "netconf/relay.h"
#include "tools/gponval/commands.h"
#include "tools/gponval/socket_name.h"

namespace gponval {
namespace {

constexpr const char* kHelp =
    "Connects standard input and output to a card that gponval serve offers.\n"
    "\n"
    "For the Subsystem line of an SSH server, and for programs that speak NETCONF\n"
    "through a pipe. Ends when the server ends the session.\n";

constexpr const char* kExamples =
    "Examples:\n"
    "  gponval netconf --socket card.socket < session.xml\n"
    "\n"
    "  in sshd_config:\n"
    "  Subsystem netconf /usr/bin/gponval netconf --socket /run/gponval.socket\n"
    "\n";

}  // namespace

Command add_netconf(CLI::App& gponval) {
  CLI::App* app = gponval.add_subcommand("netconf", kHelp);
  auto socket = std::make_shared<std::optional<std::string>>();
  app->footer(kExamples + std::string(kExitStatusHelp));
  app->add_option("--socket", *socket,
                  "The socket that gponval serve listens at; without it gponval.socket in\n"
                  "the folder XDG_RUNTIME_DIR")
      ->type_name("FILE");
  const auto run = [socket] {
    // A reader that is gone is an error of write().
    std::signal(SIGPIPE, SIG_IGN);
    tarnd::netconf::relay(socket_name(*socket), STDIN_FILENO, STDOUT_FILENO);
    return ExitStatus::kAccepted;
  };
  return {app, run};
}

}  // namespace gponval
