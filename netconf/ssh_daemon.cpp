#include "netconf/ssh_daemon.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <system_error>
#include <utility>

#include "netconf/pipe.h"

namespace tarnd::netconf {
namespace {

namespace fs = std::filesystem;

constexpr const char* kHostKey = "ssh_host_ed25519_key";
// sshd refuses to run as root without this empty folder; its own unit makes it, too.
constexpr const char* kPrivilegeSeparation = "/run/sshd";
constexpr std::string_view kListens = "Server listening on ";
constexpr std::string_view kCannotBind = "Bind to port ";
constexpr std::chrono::seconds kTimeToStart{60};
constexpr int kCannotRun = 127;

[[noreturn]] void fail(const char* what) {
  throw std::system_error(errno, std::generic_category(), what);
}

// A word of sshd's configuration.
std::string config_word(const std::string& text) {
  std::string word = "\"";
  for (const char letter : text) {
    if (letter == '"' || letter == '\\') word += '\\';
    word += letter;
  }
  return word + '"';
}

// In the name of a file with keys "%" begins a token, such as "%u" for the user.
std::string without_tokens(const std::string& name) {
  std::string result;
  for (const char letter : name) result += letter == '%' ? "%%" : std::string(1, letter);
  return result;
}

// A word of a shell's command.
std::string shell_word(const std::string& text) {
  std::string word = "'";
  for (const char letter : text) {
    if (letter == '\'') {
      word += "'\\''";
    } else {
      word += letter;
    }
  }
  return word + '\'';
}

// In the child. Its own signals, a silent standard input and output, and the end with its parent.
void become(const std::vector<std::string>& words, int output, pid_t parent) {
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  std::signal(SIGPIPE, SIG_DFL);
  unsetenv("NOTIFY_SOCKET");  // only the server reports to its service manager
  prctl(PR_SET_PDEATHSIG, SIGTERM);
  if (getppid() != parent) _exit(kCannotRun);
  const int null = open("/dev/null", O_RDWR | O_CLOEXEC);
  dup2(null, STDIN_FILENO);
  dup2(null, STDOUT_FILENO);
  dup2(output, STDERR_FILENO);
  std::vector<char*> arguments;
  arguments.reserve(words.size() + 1);
  for (const std::string& word : words) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);
  execvp(arguments.front(), arguments.data());
  dprintf(STDERR_FILENO, "%s cannot be run: %s\n", words.front().c_str(), strerrordesc_np(errno));
  _exit(kCannotRun);
}

pid_t start(const std::vector<std::string>& words, const Descriptor& output) {
  const pid_t parent = getpid();
  const pid_t child = fork();
  if (child < 0) fail("fork");
  if (child == 0) become(words, output.get(), parent);
  return child;
}

void wait_for_end(pid_t child) {
  while (waitpid(child, nullptr, 0) < 0 && errno == EINTR) {
  }
}

std::string read_all(const Descriptor& from) {
  std::string text;
  std::array<char, 4096> buffer;
  for (;;) {
    const ssize_t got = read(from.get(), buffer.data(), buffer.size());
    if (got > 0) text.append(buffer.data(), static_cast<std::size_t>(got));
    if (got == 0 || (got < 0 && errno != EINTR)) return text;
  }
}

std::string first_line(const std::string& text) {
  return text.substr(0, text.find_first_of("\r\n"));
}

void make_host_key(const fs::path& key) {
  // Two servers may start at once, and none may see half a key.
  fs::path own = key;
  own += "." + std::to_string(getpid());
  Pipe pipe = new_pipe();
  const pid_t child =
      start({"ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-C", "gponval", "-f", own.string()},
            pipe.write);
  pipe.write = Descriptor();
  const std::string said = read_all(pipe.read);
  wait_for_end(child);
  std::error_code error;
  fs::create_hard_link(own, key, error);
  fs::remove(own);
  fs::remove(own.string() + ".pub");
  if (error && !fs::exists(key)) {
    throw SshFailure("no host key can be made: " +
                     (said.empty() ? error.message() : first_line(said)));
  }
}

void make_privilege_separation_folder() {
  if (geteuid() != 0 || fs::exists(kPrivilegeSeparation)) return;
  if (mkdir(kPrivilegeSeparation, 0755) != 0 && errno != EEXIST) {
    throw SshFailure(std::string("sshd needs the folder ") + kPrivilegeSeparation +
                     ", which cannot be made: " + std::generic_category().message(errno));
  }
}

}  // namespace

std::vector<std::string> sshd_arguments(const SshOptions& options) {
  const SshAddress& address = options.address;
  const bool is_ipv6 = address.host.find(':') != std::string::npos;
  std::string users;
  for (const std::string& user : options.users) users += " " + user;
  std::string command = "exec";
  for (const std::string& word : options.command) command += " " + shell_word(word);

  std::vector<std::string> arguments = {options.program.string(), "-D", "-e", "-f", "/dev/null"};
  for (const std::string& line : {
           "ListenAddress " + (is_ipv6 ? "[" + address.host + "]" : address.host) + ":" +
               std::to_string(address.port),
           "HostKey " + config_word(options.host_key.string()),
           "AuthorizedKeysFile " + config_word(without_tokens(options.authorized_keys.string())),
           "AllowUsers" + users,
           // Any request of a session runs this, a shell, a command or the subsystem.
           "ForceCommand " + command,
           std::string("Subsystem netconf /bin/false"),
           std::string("AuthenticationMethods publickey"),
           std::string("PasswordAuthentication no"),
           std::string("KbdInteractiveAuthentication no"),
           std::string("UsePAM no"),
           // Who starts the server names the file; it may be in a folder of a group.
           std::string("StrictModes no"),
           std::string("DisableForwarding yes"),
           std::string("PermitTTY no"),
           std::string("PermitUserRC no"),
           std::string("PrintMotd no"),
           std::string("PrintLastLog no"),
           std::string("PidFile none"),
       }) {
    arguments.emplace_back("-o");
    arguments.push_back(line);
  }
  return arguments;
}

fs::path host_key_in(const fs::path& folder) {
  if (fs::create_directories(folder)) fs::permissions(folder, fs::perms::owner_all);
  fs::path key = fs::absolute(folder) / kHostKey;
  if (!fs::exists(key)) make_host_key(key);
  return key;
}

SshDaemon::SshDaemon(const SshOptions& options, Log log) : log_(std::move(log)) {
  if (access(options.program.c_str(), X_OK) != 0) {
    throw SshFailure("there is no OpenSSH server at " + options.program.string() +
                     " (Debian's package openssh-server)");
  }
  make_privilege_separation_folder();
  Pipe pipe = new_pipe();
  child_ = start(sshd_arguments(options), pipe.write);
  output_ = std::move(pipe.read);
  pipe.write = Descriptor();
  fcntl(output_.get(), F_SETFL, O_NONBLOCK);
  try {
    wait_until_it_listens();
  } catch (...) {
    kill(child_, SIGTERM);
    wait_for_end(child_);
    throw;
  }
}

SshDaemon::~SshDaemon() {
  if (has_ended()) return;
  kill(child_, SIGTERM);
  wait_for_end(child_);
}

void SshDaemon::wait_until_it_listens() {
  using Clock = std::chrono::steady_clock;
  std::string reason = "it says nothing";
  const auto deadline = Clock::now() + kTimeToStart;
  for (bool is_open = true; is_open && Clock::now() < deadline;) {
    pollfd polled{output_.get(), POLLIN, 0};
    poll(&polled, 1, 100);
    is_open = read_output();
    for (const std::string& line : take_lines()) {
      if (line.starts_with(kListens)) return;
      if (!reason.starts_with(kCannotBind)) reason = line;
    }
  }
  throw SshFailure("sshd does not start: " + reason);
}

// Returns false at the end.
bool SshDaemon::read_output() {
  std::array<char, 4096> buffer;
  for (;;) {
    const ssize_t got = read(output_.get(), buffer.data(), buffer.size());
    if (got == 0) return false;
    if (got < 0) return errno == EAGAIN || errno == EINTR;
    unread_.append(buffer.data(), static_cast<std::size_t>(got));
  }
}

std::vector<std::string> SshDaemon::take_lines() {
  std::vector<std::string> lines;
  for (std::size_t end = unread_.find('\n'); end != std::string::npos; end = unread_.find('\n')) {
    lines.push_back(first_line(unread_.substr(0, end)));
    unread_.erase(0, end + 1);
  }
  return lines;
}

void SshDaemon::log_output() {
  read_output();
  for (const std::string& line : take_lines()) log_(LogLevel::kInfo, "sshd: " + line);
}

bool SshDaemon::has_ended() {
  if (child_ < 0) return true;
  const pid_t ended = waitpid(child_, nullptr, WNOHANG);
  if (ended == 0 || (ended < 0 && errno == EINTR)) return false;
  child_ = -1;
  return true;
}

}  // namespace tarnd::netconf
