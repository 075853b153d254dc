#pragma once

#include <sys/types.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include "netconf/card.h"
#include "netconf/ssh_address.h"
#include "standalone/descriptor.h"

namespace tarnd::netconf {

/// sshd or ssh-keygen cannot do what is asked of them.
class SshFailure : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct SshOptions {
  std::filesystem::path program;  ///< sshd
  SshAddress address;
  std::filesystem::path authorized_keys;
  std::filesystem::path host_key;
  std::vector<std::string> users;    ///< who may log in
  std::vector<std::string> command;  ///< what runs for each of them, whatever a client asks for
};

/// The options of sshd. It reads no other configuration.
std::vector<std::string> sshd_arguments(const SshOptions& options);

/// The host key in this folder, which is made if there is none. Throws SshFailure or
/// std::filesystem::filesystem_error.
std::filesystem::path host_key_in(const std::filesystem::path& folder);

/// OpenSSH's sshd as a child of this process, and no longer than this process.
class SshDaemon {
 public:
  /// Starts it and waits until it listens. Throws SshFailure with the reason that it gives.
  SshDaemon(const SshOptions& options, Log log);
  SshDaemon(const SshDaemon&) = delete;
  SshDaemon& operator=(const SshDaemon&) = delete;
  ~SshDaemon();

  /// Can be read when sshd has something for the log.
  [[nodiscard]] int output() const { return output_.get(); }
  /// Logs what it wrote.
  void log_output();
  /// It ended by itself.
  [[nodiscard]] bool has_ended();

 private:
  void wait_until_it_listens();
  bool read_output();
  [[nodiscard]] std::vector<std::string> take_lines();

  Log log_;
  Descriptor output_;
  std::string unread_;  // the begin of a line
  pid_t child_ = -1;
};

}  // namespace tarnd::netconf
