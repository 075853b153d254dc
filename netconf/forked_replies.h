#pragma once

#include <poll.h>
#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <deque>
#include <list>
#include <optional>
#include <string>
#include <vector>

#include "netconf/card.h"
#include "netconf/reply.h"
#include "standalone/descriptor.h"

namespace tarnd::netconf {

/// What the process that makes a reply may use.
struct ReplyLimits {
  std::chrono::seconds time{10};
  std::size_t memory = std::size_t{256} << 20;  ///< besides what it shares with the server
};

/// Replies that may take long. A child process makes each of them, from the configuration as it is
/// when the process begins, and meanwhile the server goes on. A process that reaches a limit is
/// ended, and the reply is the error resource-denied.
class ForkedReplies {
 public:
  using Clock = std::chrono::steady_clock;

  struct Done {
    SessionId session;
    Reply reply;
    std::string given_up;  ///< for the log: why there is only an error
  };

  explicit ForkedReplies(const ReplyLimits& limits) : limits_(limits) {}
  ForkedReplies(const ForkedReplies&) = delete;
  ForkedReplies& operator=(const ForkedReplies&) = delete;
  /// Ends all processes.
  ~ForkedReplies();

  /// Makes the session's reply as soon as few enough others are being made.
  void begin(SessionId session, MakeReply make);
  /// The session needs no reply any more.
  void cancel(SessionId session);

  /// Goes on with all replies as far as possible without waiting, and returns the finished ones.
  std::vector<Done> proceed(Clock::time_point now);
  /// What to wait for before the next proceed().
  void add_to(std::vector<pollfd>& polled) const;
  [[nodiscard]] Clock::time_point deadline() const;

 private:
  struct Waiting {
    SessionId session;
    MakeReply make;
  };
  struct Worker {
    SessionId session;
    pid_t process;
    Descriptor output;
    Clock::time_point deadline;
    std::string received = {};
    bool has_ended = false;
  };

  void start(const Waiting& waiting, Clock::time_point now);
  static void receive(Worker& worker);
  static std::optional<Done> result_of(const Worker& worker, Clock::time_point now);
  void end(const Worker& worker);
  void reap();

  const ReplyLimits limits_;
  std::deque<Waiting> waiting_;
  std::list<Worker> workers_;
  std::vector<pid_t> ended_;  // processes whose end is still to be noticed
};

}  // namespace tarnd::netconf
