#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <list>
#include <optional>
#include <string>
#include <vector>

#include "netconf/card.h"
#include "netconf/forked_replies.h"
#include "netconf/session.h"
#include "standalone/descriptor.h"

namespace tarnd::netconf {

struct ServerOptions {
  std::filesystem::path socket;
  std::vector<uid_t> users;  ///< who may connect, besides the user of this process
  std::size_t most_of_message = std::size_t{64} << 20;
  std::size_t most_sessions = 64;
  std::chrono::seconds hello_within{10};
  ReplyLimits filters;  ///< of a get or get-config whose filter may take long
};

/// A descriptor that the server waits for besides its clients.
struct Watch {
  int descriptor;
  std::function<bool()> take;  ///< called when it can be read; false ends the server
};

/// Serves a card to the clients of one socket, all from one thread: a client that is silent, slow
/// or sends without end delays nobody else by more than one of its operations.
class Server {
 public:
  /// Listens. Throws std::system_error.
  Server(Card& card, ServerOptions options);
  Server(const Server&) = delete;
  Server& operator=(const Server&) = delete;
  /// Ends all sessions and removes the socket.
  ~Server();

  /// Serves until a watch ends it.
  void run(const std::vector<Watch>& watches);

 private:
  using Clock = std::chrono::steady_clock;

  struct Connection {
    Connection(Descriptor socket_, Card& card, SessionId id, const std::string& user,
               const ServerOptions& options);

    Descriptor socket;
    Session session;
    Clock::time_point deadline;  ///< for the hello, and for an ended session to take its replies
    bool is_ending = false;
    bool has_more = false;  ///< a message may be waiting that has come already
    bool input_ended = false;
    bool is_lost = false;
  };

  void accept_one();
  [[nodiscard]] static bool can_answer(const Connection& connection);
  void serve(Connection& connection, short events);
  static void receive(Connection& connection);
  static void send(Connection& connection);
  void finish_replies();
  void drop_ended();
  /// Why the connection ends now; no value if it goes on.
  [[nodiscard]] std::optional<std::string> end_of(const Connection& connection,
                                                  Clock::time_point now) const;
  [[nodiscard]] int milliseconds_to_wait() const;

  Card& card_;
  const ServerOptions options_;
  Descriptor listener_;
  std::list<Connection> connections_;
  ForkedReplies long_replies_;
  SessionId last_id_ = 0;
};

}  // namespace tarnd::netconf
