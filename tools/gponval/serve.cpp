#include <pwd.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstring>
#include <iostream>
#include <map>
#include <memory>
#include <optional>
#include <utility>

#include "netconf/server.h"
#include "netconf/ssh_address.h"
#include "netconf/ssh_daemon.h"
#include "netconf/state/failure.h"
#include "netconf/unix_socket.h"
#include "netconf/yang_modules.h"
#include "tools/gponval/commands.h"
#include "tools/gponval/error_line.h"
#include "tools/gponval/host.h"
#include "tools/gponval/inputs.h"
#include "tools/gponval/output.h"
#include "tools/gponval/owned_state.h"
#include "tools/gponval/plugin_location.h"
#include "tools/gponval/serve_ssh.h"
#include "tools/gponval/serve_state.h"
#include "tools/gponval/server_log.h"
#include "tools/gponval/service_manager.h"
#include "tools/gponval/socket_name.h"
#include "tools/gponval/usage_error.h"
#include "tools/gponval/whole_number.h"

namespace gponval {
namespace {

namespace netconf = tarnd::netconf;

constexpr const char* kHelp =
    "Offers the line card to NETCONF clients until it is stopped.\n"
    "\n"
    "Serves the card's configuration over NETCONF at a UNIX socket: clients edit the\n"
    "candidate, and their commits go through the plug-in's validators, whose verdicts are\n"
    "the errors of the reply. With --state a commit is stored before it is answered, and\n"
    "the next start goes on with it; without it the configuration is kept in memory. The\n"
    "file that --running names is only read.\n";

constexpr const char* kExamples =
    "Examples:\n"
    "  gponval serve --running card.xml --socket card.socket\n"
    "  gponval serve --running card.xml --state card.state --socket card.socket\n"
    "  gponval serve --state card.state --socket card.socket --warnings reject\n"
    "  gponval serve --running card.xml --ssh 8300 --authorized-keys key.pub\n"
    "  gponval netconf --socket card.socket < session.xml\n"
    "\n";

// NETCONF's own modules, of Debian's package libyuma-base.
constexpr const char* kProtocolModules = "/usr/share/yuma/modules/ietf";

constexpr const char* kServerGroup = "Server";
constexpr std::size_t kMebibyte = std::size_t{1} << 20;

struct ServeArguments {
  InputOptions inputs;
  RunOptions run;
  std::optional<std::string> socket;
  std::string warnings = "accept";
  std::vector<std::string> allow;
  StateArguments state;
  SshArguments ssh;
  LogArguments log;
  std::size_t most_of_message = 64;  // MiB
  std::size_t most_sessions = 64;
  unsigned hello_within = 10;  // seconds
  unsigned filter_time = 10;   // seconds
};

netconf::WarningPolicy warning_policy(const std::string& word) {
  static const std::map<std::string, netconf::WarningPolicy> policies = {
      {"accept", netconf::WarningPolicy::kAccept},
      {"reject", netconf::WarningPolicy::kReject},
      {"report", netconf::WarningPolicy::kReport}};
  return policies.at(word);
}

uid_t user_named(const std::string& name) {
  // There is one thread.
  // cppcheck-suppress getpwnamCalled
  const passwd* user = getpwnam(name.c_str());
  if (user == nullptr) throw UsageError("--allow: there is no user '" + name + "'");
  return user->pw_uid;
}

netconf::ServerOptions server_options(const ServeArguments& arguments) {
  netconf::ServerOptions options;
  options.socket = socket_name(arguments.socket);
  for (const std::string& name : arguments.allow) options.users.push_back(user_named(name));
  options.most_of_message = arguments.most_of_message * kMebibyte;
  options.most_sessions = arguments.most_sessions;
  options.hello_within = std::chrono::seconds(arguments.hello_within);
  options.filters.time = std::chrono::seconds(arguments.filter_time);
  return options;
}

// Can be read when one of the signals came that a server reacts to.
tarnd::Descriptor watch_signals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGCHLD}) sigaddset(&signals, signal);
  sigprocmask(SIG_BLOCK, &signals, nullptr);
  tarnd::Descriptor watched(signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK));
  if (watched.get() < 0) throw UsageError(std::string("signalfd: ") + std::strerror(errno));
  return watched;
}

using Ssh = std::optional<netconf::SshDaemon>;

// Returns false for one that ends the server.
bool take_signal(const tarnd::Descriptor& signals, const ServerLog& log, Ssh& ssh) {
  signalfd_siginfo signal{};
  if (read(signals.get(), &signal, sizeof signal) != sizeof signal) return true;
  if (signal.ssi_signo == SIGHUP) {
    log.reopen();
    return true;
  }
  if (signal.ssi_signo != SIGCHLD) return false;
  if (ssh.has_value() && ssh->has_ended()) {
    ssh->log_output();
    throw UsageError("sshd ended, so this server does, too");
  }
  return true;
}

void print_start(const std::filesystem::path& socket, const SshArguments& ssh,
                 const StateArguments& state) {
  std::cout << "Serving NETCONF at " << socket.string()
            << ". Connect with:\n  gponval netconf --socket " << socket.string() << "\n";
  if (ssh.address.has_value()) {
    const auto address = netconf::ssh_address(*ssh.address);
    std::cout << "  ssh -s -p " << address->port << " " << netconf::host_to_connect_to(*address)
              << " netconf\n";
  }
  std::cout << where_state_is(state);
  finish_output();
}

// Without the folder the server does without what needs it.
std::unique_ptr<netconf::YangModules> read_modules(const netconf::Log& log) {
  try {
    return std::make_unique<netconf::YangModules>(kProtocolModules, find_model());
  } catch (const tarnd::InputError& error) {
    log(netconf::LogLevel::kWarning,
        std::string(error.what()) +
            "; no get-schema, ietf-netconf-monitoring and ietf-yang-library");
    return nullptr;
  }
}

// What the disk did not take may work after a new start.
ExitStatus run(netconf::Server& server, const std::vector<netconf::Watch>& watches) {
  try {
    server.run(watches);
    return ExitStatus::kAccepted;
  } catch (const netconf::state::Failure& failure) {
    print_error(failure.what());
    return ExitStatus::kCannotStore;
  }
}

ExitStatus serve(const ServeArguments& arguments) {
  ignore_limit_of_files();
  const netconf::ServerOptions options = server_options(arguments);
  std::optional<netconf::SshOptions> ssh_server;
  if (arguments.ssh.address.has_value()) {
    ssh_server = ssh_options(arguments.ssh, options.socket, arguments.allow);
  }
  Host host(arguments.run, read_card(arguments.inputs));
  const ServedState state = open_state(arguments.state, arguments.inputs, host.datastore());
  const tarnd::Descriptor signals = watch_signals();
  const ServerLog server_log(arguments.log);
  const netconf::Log log = [&server_log](netconf::LogLevel level, const std::string& text) {
    server_log.write(level, text);
  };
  netconf::Card card(host.datastore(), host.daemon(), warning_policy(arguments.warnings), log);
  const auto modules = read_modules(log);
  card.modules = modules.get();
  resume(card, state, arguments.state, arguments.inputs);
  netconf::Server server(card, options);
  keep_address(state, options.socket);
  Ssh ssh;
  if (ssh_server.has_value()) ssh.emplace(*ssh_server, log);
  print_start(options.socket, arguments.ssh, arguments.state);
  report_ready();

  std::vector<netconf::Watch> watches = {
      {signals.get(), [&] { return take_signal(signals, server_log, ssh); }}};
  if (ssh.has_value()) {
    watches.push_back({ssh->output(), [&ssh] {
                         ssh->log_output();
                         return true;
                       }});
  }
  return run(server, watches);
}

void add_limits(CLI::App& app, ServeArguments& arguments) {
  app.add_option("--max-message", arguments.most_of_message,
                 "The longest message that a client may send, in MiB (64)")
      ->type_name("N")
      ->transform(whole_number(1, 1024))
      ->group(kServerGroup);
  app.add_option("--max-sessions", arguments.most_sessions,
                 "How many sessions may be open at once (64)")
      ->type_name("N")
      ->transform(whole_number(1, 512))
      ->group(kServerGroup);
  app.add_option("--hello-timeout", arguments.hello_within,
                 "How many seconds a client has for its hello (10)")
      ->type_name("N")
      ->transform(whole_number(1, 3600))
      ->group(kServerGroup);
  app.add_option("--filter-time", arguments.filter_time,
                 "How many seconds the filter of a get or get-config may take (10)")
      ->type_name("N")
      ->transform(whole_number(1, 3600))
      ->group(kServerGroup);
}

}  // namespace

Command add_serve(CLI::App& gponval) {
  CLI::App* app = gponval.add_subcommand("serve", kHelp);
  auto arguments = std::make_shared<ServeArguments>();
  app->footer(kExamples + std::string(kExitStatusHelp));
  add_state_options(*app, arguments->state, arguments->inputs);
  add_input_format_option(*app, arguments->inputs);
  add_card_option(*app, arguments->inputs);
  add_plugin_option(*app, arguments->run);
  app->add_option("--socket", arguments->socket,
                  "Where to listen; without it gponval.socket in the folder\n"
                  "XDG_RUNTIME_DIR")
      ->type_name("FILE")
      ->group(kServerGroup);
  add_choice(*app, "--warnings", arguments->warnings, {"accept", "reject", "report"},
             "What a commit does when validators warn: confirm the warnings and log\n"
             "them; fail with errors that say what needs to be confirmed; commit\n"
             "nothing and reply with the warnings (accept)")
      ->group(kServerGroup);
  app->add_option("--allow", arguments->allow,
                  "Users who may connect besides the one that runs this command,\n"
                  "separated by commas")
      ->type_name("USER")
      ->delimiter(',')
      ->allow_extra_args(false)
      ->group(kServerGroup);
  add_ssh_options(*app, arguments->ssh, kServerGroup);
  add_log_options(*app, arguments->log, kServerGroup);
  add_limits(*app, *arguments);
  return {app, [arguments] { return serve(*arguments); }};
}

}  // namespace gponval
