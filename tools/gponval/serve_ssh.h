#pragma once

#include <CLI/CLI.hpp>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "netconf/ssh_daemon.h"

namespace gponval {

/// What the user says of the SSH server that gponval serve runs.
struct SshArguments {
  std::optional<std::string> address;  ///< without it there is no such server
  std::optional<std::string> authorized_keys;
  std::string program = "/usr/sbin/sshd";
};

void add_ssh_options(CLI::App& app, SshArguments& arguments, const char* group);

/// The options for the server's sshd, whose clients reach the card at the socket: this user and the
/// users named. Makes the host key if there is none. Throws UsageError or SshFailure.
tarnd::netconf::SshOptions ssh_options(const SshArguments& arguments,
                                       const std::filesystem::path& socket,
                                       const std::vector<std::string>& users);

}  // namespace gponval
