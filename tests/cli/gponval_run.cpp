#include "tests/cli/gponval_run.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace gponval::test {
namespace {

constexpr const char* kCard =
    "<gpon><slot>1/1</slot><onu-auth-method>serial-number</onu-auth-method></gpon>"
    "<interface>"
    "<gpon><chassis-id>1</chassis-id><slot-id>1</slot-id><port-id>3</port-id>"
    "<onu><id>1</id><profile-references><line-profile>home</line-profile></profile-references>"
    "</onu>"
    "<onu><id>2</id><profile-references><line-profile>home</line-profile></profile-references>"
    "</onu></gpon>"
    "<gpon><chassis-id>1</chassis-id><slot-id>1</slot-id><port-id>4</port-id>"
    "<onu><id>1</id><profile-references><line-profile>home</line-profile></profile-references>"
    "</onu></gpon>"
    "<xgspon><chassis-id>1</chassis-id><slot-id>1</slot-id><port-id>5</port-id></xgspon>"
    "</interface>"
    "<profile><gpon>"
    "<bandwidth-profile><name>one-meg</name><traffic><type-1><fixed>1000</fixed></type-1></traffic>"
    "</bandwidth-profile>"
    "<line-profile><name>home</name><tcont><id>1</id><bandwidth-profile>one-meg</bandwidth-profile>"
    "</tcont><gem><gem-id>1</gem-id></gem><gem><gem-id>2</gem-id></gem></line-profile>"
    "</gpon></profile>";

[[noreturn]] void start(const std::filesystem::path& folder,
                        const std::vector<std::string>& arguments) {
  std::vector<char*> argv;
  argv.reserve(arguments.size() + 1);
  for (const std::string& argument : arguments) argv.push_back(const_cast<char*>(argument.c_str()));
  argv.push_back(nullptr);
  if (chdir(folder.c_str()) == 0) execv(argv.front(), argv.data());
  _exit(127);
}

int status_of(pid_t child) {
  int status = 0;
  while (waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) throw std::runtime_error("waitpid");
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

// Reads what is available; returns false at the end, which for a terminal without its other side is
// an error.
bool take(int descriptor, std::string& text) {
  std::array<char, 4096> buffer{};
  const ssize_t size = read(descriptor, buffer.data(), buffer.size());
  if (size > 0) text.append(buffer.data(), static_cast<std::size_t>(size));
  return size > 0;
}

class Pipe {
 public:
  Pipe() {
    if (pipe2(ends_.data(), O_CLOEXEC) != 0) throw std::runtime_error("pipe2");
  }
  Pipe(const Pipe&) = delete;
  Pipe& operator=(const Pipe&) = delete;
  ~Pipe() {
    close_end(0);
    close_end(1);
  }
  [[nodiscard]] int out() const { return ends_[0]; }
  [[nodiscard]] int in() const { return ends_[1]; }
  void close_end(std::size_t end) {
    if (ends_.at(end) >= 0) close(ends_.at(end));
    ends_.at(end) = -1;
  }

 private:
  std::array<int, 2> ends_{-1, -1};
};

void collect(int out, int err, Outcome& run) {
  std::array<pollfd, 2> open{{{out, POLLIN, 0}, {err, POLLIN, 0}}};
  while (open[0].fd >= 0 || open[1].fd >= 0) {
    poll(open.data(), open.size(), -1);
    if (open[0].revents != 0 && !take(out, run.out)) open[0].fd = -1;
    if (open[1].revents != 0 && !take(err, run.err)) open[1].fd = -1;
  }
}

}  // namespace

std::string gponval_command() {
  return GPONVAL_COMMAND;
}

Outcome run_program(const std::filesystem::path& folder, const std::vector<std::string>& arguments,
                    const std::string& input) {
  // Standard input is a file without a name, since a pipe would have to be filled meanwhile.
  std::string name = ::testing::TempDir() + "input-XXXXXX";
  const int standard_input = mkostemp(name.data(), O_CLOEXEC);
  unlink(name.c_str());
  if (write(standard_input, input.data(), input.size()) != static_cast<ssize_t>(input.size())) {
    throw std::runtime_error("write");
  }
  lseek(standard_input, 0, SEEK_SET);
  Pipe out;
  Pipe err;
  const pid_t child = fork();
  if (child == 0) {
    dup2(standard_input, STDIN_FILENO);
    dup2(out.in(), STDOUT_FILENO);
    dup2(err.in(), STDERR_FILENO);
    start(folder, arguments);
  }
  close(standard_input);
  out.close_end(1);
  err.close_end(1);
  Outcome run;
  collect(out.out(), err.out(), run);
  run.status = status_of(child);
  return run;
}

Outcome run_gponval(const std::filesystem::path& folder, const std::vector<std::string>& arguments,
                    const std::string& input) {
  std::vector<std::string> line = {gponval_command()};
  line.insert(line.end(), arguments.begin(), arguments.end());
  return run_program(folder, line, input);
}

Outcome run_at_terminal(const std::filesystem::path& folder,
                        const std::vector<std::string>& arguments, const std::string& typed) {
  std::vector<std::string> line = {gponval_command()};
  line.insert(line.end(), arguments.begin(), arguments.end());
  int terminal = -1;
  const pid_t child = forkpty(&terminal, nullptr, nullptr, nullptr);
  if (child == 0) {
    setenv("TERM", "xterm", 1);
    start(folder, line);
  }
  if (write(terminal, typed.data(), typed.size()) != static_cast<ssize_t>(typed.size())) {
    throw std::runtime_error("write");
  }
  Outcome run;
  while (take(terminal, run.out)) {
  }
  close(terminal);
  run.status = status_of(child);
  return run;
}

CommandTest::CommandTest() {
  std::string name = ::testing::TempDir() + "gponval-XXXXXX";
  if (mkdtemp(name.data()) == nullptr) throw std::runtime_error("mkdtemp");
  folder_ = name;
  config("card.xml", kCard + service_port(1, 1, 10) + service_port(2, 2, 10));
}

CommandTest::~CommandTest() {
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

std::string CommandTest::file(const std::string& name, const std::string& text) const {
  std::ofstream(folder_ / name, std::ios::binary) << text;
  return name;
}

std::string CommandTest::config(const std::string& name, const std::string& content) const {
  return file(name, in_config(content));
}

std::string CommandTest::text_of(const std::string& name) const {
  std::ostringstream text;
  text << std::ifstream(folder_ / name, std::ios::binary).rdbuf();
  return text.str();
}

std::vector<std::string> CommandTest::files() const {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(folder_)) {
    names.push_back(entry.path().filename().string());
  }
  std::sort(names.begin(), names.end());
  return names;
}

Outcome CommandTest::commit(const std::string& change,
                            const std::vector<std::string>& arguments) const {
  std::vector<std::string> line = {"commit", "--running", "card.xml", "--change",
                                   config("change.xml", change)};
  line.insert(line.end(), arguments.begin(), arguments.end());
  return gponval(line);
}

std::string in_config(const std::string& content) {
  return R"(<config xmlns="urn:tarnd:base" xmlns:nc="urn:ietf:params:xml:ns:netconf:base:1.0">)" +
         content + "</config>\n";
}

std::string service_port(int id, int gem, int vlan) {
  return "<service-port><id>" + std::to_string(id) +
         "</id><gpon><id>1/1/3</id><onu><id>1</id><gem><gem-id>" + std::to_string(gem) +
         "</gem-id></gem></onu></gpon><match><vlan><vlan-id>" + std::to_string(vlan) +
         "</vlan-id></vlan></match></service-port>";
}

std::string fec_change() {
  return "<interface><gpon><chassis-id>1</chassis-id><slot-id>1</slot-id><port-id>3</port-id>"
         "<downstream-fec>false</downstream-fec></gpon></interface>";
}

}  // namespace gponval::test
