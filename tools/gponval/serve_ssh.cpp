#include "tools/gponval/serve_ssh.h"

#include <pwd.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <system_error>

#include "tools/gponval/plugin_location.h"
#include "tools/gponval/usage_error.h"

namespace gponval {
namespace {

namespace fs = std::filesystem;
namespace netconf = tarnd::netconf;

std::optional<fs::path> folder_in(const char* variable) {
  const char* folder = std::getenv(variable);
  if (folder == nullptr || *folder == '\0') return std::nullopt;
  return fs::path(folder);
}

// Where a user's programs keep what must outlive them: a service manager's folder for this one, or
// that of the user.
fs::path state_folder() {
  if (const auto folder = folder_in("STATE_DIRECTORY")) return *folder;
  if (const auto folder = folder_in("XDG_STATE_HOME")) return *folder / "gponval";
  if (const auto folder = folder_in("HOME")) return *folder / ".local/state/gponval";
  throw UsageError(
      "--ssh: neither XDG_STATE_HOME nor HOME is set, so there is no folder for the host key");
}

void check_readable(const std::string& name) {
  std::ifstream file(name);
  std::error_code unknown;
  const bool is_folder = fs::is_directory(name, unknown);
  if (file && !is_folder) return;
  throw UsageError("--authorized-keys: cannot read '" + name +
                   "': " + std::strerror(is_folder ? EISDIR : errno));
}

std::string this_user() {
  // There is one thread.
  // cppcheck-suppress getpwuidCalled
  const passwd* user = getpwuid(geteuid());
  if (user == nullptr) throw UsageError("--ssh: this user has no name to log in with");
  return user->pw_name;
}

}  // namespace

void add_ssh_options(CLI::App& app, SshArguments& arguments, const char* group) {
  CLI::Option* ssh =
      app.add_option("--ssh", arguments.address,
                     "Also listen for SSH clients, with an OpenSSH server of its own;\n"
                     "without an address only this machine can connect")
          ->type_name("[ADDRESS:]PORT")
          ->group(group);
  CLI::Option* keys = app.add_option("--authorized-keys", arguments.authorized_keys,
                                     "Who may log in: public keys, as in sshd's file of that name")
                          ->type_name("FILE")
                          ->needs(ssh)
                          ->group(group);
  ssh->needs(keys);
  app.add_option("--sshd", arguments.program, "The OpenSSH server (/usr/sbin/sshd)")
      ->type_name("FILE")
      ->needs(ssh)
      ->group(group);
}

netconf::SshOptions ssh_options(const SshArguments& arguments, const fs::path& socket,
                                const std::vector<std::string>& users) {
  netconf::SshOptions options;
  const auto address = netconf::ssh_address(*arguments.address);
  if (!address.has_value()) {
    throw UsageError("--ssh: '" + *arguments.address +
                     "' is no [ADDRESS:]PORT, such as 8300, 192.0.2.1:8300 or [::1]:8300");
  }
  check_readable(*arguments.authorized_keys);
  options.address = *address;
  // sshd must be named by its whole path, and does not run in this folder.
  options.program = fs::absolute(arguments.program);
  options.authorized_keys = fs::absolute(*arguments.authorized_keys);
  options.users = users;
  options.users.push_back(this_user());
  options.command = {command_file(), "netconf", "--socket", fs::absolute(socket)};
  options.host_key = netconf::host_key_in(state_folder());
  return options;
}

}  // namespace gponval
