#include "netconf/forked_replies.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string_view>
#include <system_error>
#include <utility>

#include "netconf/pipe.h"
#include "netconf/rpc_error.h"

namespace tarnd::netconf {
namespace {

// The others wait for their turn, so that no number of clients uses up memory and processors.
constexpr std::size_t kMostWorkers = 4;
// The server goes first. A higher value would starve a filter on a machine that has other work.
constexpr int kNiceness = 2;
constexpr std::size_t kReadSize = std::size_t{1} << 16;

constexpr const char* kTooLong = "the filter takes longer than this server allows";
constexpr const char* kNoResult =
    "the filter was not evaluated to the end, it may need more memory than this server allows";

// What a worker sends before the texts of its reply.
struct Header {
  std::uint64_t errors;
  std::uint64_t content;
  std::uint64_t failure;
};

std::string_view bytes_of(const Header& header) {
  return {reinterpret_cast<const char*>(&header), sizeof header};
}

void write_all(const Descriptor& to, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(to.get(), text.data(), text.size());
    if (written < 0 && errno != EINTR) _exit(EXIT_FAILURE);
    if (written > 0) text.remove_prefix(static_cast<std::size_t>(written));
  }
}

// A connection that the server closes must not stay open here.
void close_all_but(const Descriptor& kept) {
  const auto number = static_cast<unsigned>(kept.get());
  if (number > STDERR_FILENO + 1) close_range(STDERR_FILENO + 1, number - 1, 0);
  close_range(number + 1, ~0U, 0);
}

rlim_t address_space() {
  std::ifstream sizes("/proc/self/statm");
  rlim_t pages = 0;
  sizes >> pages;
  return pages * static_cast<rlim_t>(sysconf(_SC_PAGESIZE));
}

void limit(__rlimit_resource resource, rlim_t most) {
  const rlimit both{most, most};
  setrlimit(resource, &both);
}

void keep_to(const ReplyLimits& limits) {
  limit(RLIMIT_AS, address_space() + limits.memory);
  // Should the server not be there to end it.
  limit(RLIMIT_CPU, static_cast<rlim_t>(limits.time.count()) + 1);
  limit(RLIMIT_CORE, 0);
  setpriority(PRIO_PROCESS, 0, kNiceness);
}

// In the child. Nothing of the server is destroyed at its end: that would remove the socket.
[[noreturn]] void work(const MakeReply& make, const Descriptor& output, const ReplyLimits& limits,
                       pid_t server) {
  prctl(PR_SET_PDEATHSIG, SIGKILL);
  if (getppid() != server) _exit(EXIT_FAILURE);
  close_all_but(output);
  keep_to(limits);
  try {
    const Reply reply = make();
    write_all(output, bytes_of({reply.errors, reply.content.size(), reply.failure.size()}));
    write_all(output, reply.content);
    write_all(output, reply.failure);
  } catch (...) {
    _exit(EXIT_FAILURE);
  }
  _exit(EXIT_SUCCESS);
}

std::optional<Reply> reply_in(std::string_view received) {
  Header header{};
  if (received.size() < sizeof header) return std::nullopt;
  std::memcpy(&header, received.data(), sizeof header);
  received.remove_prefix(sizeof header);
  if (received.size() != header.content + header.failure) return std::nullopt;
  return Reply{std::string(received.substr(0, header.content)), header.errors,
               std::string(received.substr(header.content))};
}

ForkedReplies::Done given_up(SessionId session, const std::string& why) {
  const RpcError error = error_of("application", "resource-denied", why);
  return {session, {to_xml(error, {}), 1, {}}, why};
}

}  // namespace

ForkedReplies::~ForkedReplies() {
  for (const Worker& worker : workers_) end(worker);
  for (const pid_t process : ended_) {
    while (waitpid(process, nullptr, 0) < 0 && errno == EINTR) {
    }
  }
}

void ForkedReplies::begin(SessionId session, MakeReply make) {
  waiting_.push_back({session, std::move(make)});
}

void ForkedReplies::cancel(SessionId session) {
  std::erase_if(waiting_, [&](const Waiting& waiting) { return waiting.session == session; });
  std::erase_if(workers_, [&](const Worker& worker) {
    if (worker.session != session) return false;
    end(worker);
    return true;
  });
}

std::vector<ForkedReplies::Done> ForkedReplies::proceed(Clock::time_point now) {
  std::vector<Done> done;
  std::erase_if(workers_, [&](Worker& worker) {
    receive(worker);
    auto result = result_of(worker, now);
    if (!result.has_value()) return false;
    done.push_back(std::move(*result));
    end(worker);
    return true;
  });
  reap();
  while (!waiting_.empty() && workers_.size() < kMostWorkers) {
    const Waiting next = std::move(waiting_.front());
    waiting_.pop_front();
    try {
      start(next, now);
    } catch (const std::system_error& error) {
      done.push_back(
          given_up(next.session, std::string("no process for the filter: ") + error.what()));
    }
  }
  return done;
}

void ForkedReplies::start(const Waiting& waiting, Clock::time_point now) {
  Pipe pipe = new_pipe();
  fcntl(pipe.read.get(), F_SETFL, O_NONBLOCK);
  const pid_t server = getpid();
  const pid_t process = fork();
  if (process < 0) throw std::system_error(errno, std::generic_category(), "fork");
  if (process == 0) work(waiting.make, pipe.write, limits_, server);
  workers_.push_back({waiting.session, process, std::move(pipe.read), now + limits_.time});
}

void ForkedReplies::receive(Worker& worker) {
  std::array<char, kReadSize> buffer;
  const ssize_t got = read(worker.output.get(), buffer.data(), buffer.size());
  if (got > 0) worker.received.append(buffer.data(), static_cast<std::size_t>(got));
  worker.has_ended = got == 0;
}

std::optional<ForkedReplies::Done> ForkedReplies::result_of(const Worker& worker,
                                                            Clock::time_point now) {
  if (worker.has_ended) {
    auto reply = reply_in(worker.received);
    if (!reply.has_value()) return given_up(worker.session, kNoResult);
    return Done{worker.session, std::move(*reply), {}};
  }
  // A worker sends nothing before its reply is ready.
  if (now < worker.deadline || !worker.received.empty()) return std::nullopt;
  return given_up(worker.session, kTooLong);
}

void ForkedReplies::end(const Worker& worker) {
  kill(worker.process, SIGKILL);
  ended_.push_back(worker.process);
}

// Not at once after end(): a process may need a moment to be gone, and the server does not wait.
void ForkedReplies::reap() {
  std::erase_if(ended_, [](pid_t process) { return waitpid(process, nullptr, WNOHANG) != 0; });
}

void ForkedReplies::add_to(std::vector<pollfd>& polled) const {
  for (const Worker& worker : workers_) polled.push_back({worker.output.get(), POLLIN, 0});
}

ForkedReplies::Clock::time_point ForkedReplies::deadline() const {
  auto next = Clock::time_point::max();
  for (const Worker& worker : workers_) {
    if (worker.received.empty()) next = std::min(next, worker.deadline);
  }
  return next;
}

}  // namespace tarnd::netconf
