#include "netconf/server.h"

#include <poll.h>
#include <pwd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <string>
#include <system_error>
#include <utility>

#include "netconf/confirmed_commit.h"
#include "netconf/recording.h"
#include "netconf/unix_socket.h"

namespace tarnd::netconf {
namespace {

// So much is read at once from one client before the others have their turn.
constexpr std::size_t kReadSize = std::size_t{1} << 14;
// A client that has so much to take gets no more answers before it has taken some of it.
constexpr std::size_t kMostWaiting = std::size_t{1} << 20;
// An ended session may take its last replies for so long.
constexpr std::chrono::seconds kTimeToTakeReplies{10};

// A confirmed commit may have years; poll() counts milliseconds in an int.
constexpr std::chrono::milliseconds kLongestWait = std::chrono::hours{24};

// Why a connection ends.
constexpr const char* kLost = "its connection is lost";
constexpr const char* kClosed = "its client left";
constexpr const char* kNoHello = "its client said no hello in time";
constexpr const char* kServerEnds = "the server ends";

std::string name_of(uid_t user) {
  // There is one thread.
  // cppcheck-suppress getpwuidCalled
  const passwd* entry = getpwuid(user);
  return entry != nullptr ? entry->pw_name : std::to_string(user);
}

bool is_blocked(int error) {
  return error == EAGAIN || error == EWOULDBLOCK || error == EINTR;
}

}  // namespace

Server::Connection::Connection(Descriptor socket_, Card& card, SessionId id,
                               const std::string& user, const ServerOptions& options)
    : socket(std::move(socket_)),
      session(card, id, user, options.most_of_message),
      deadline(Clock::now() + options.hello_within) {}

Server::Server(Card& card, ServerOptions options)
    : card_(card),
      options_(std::move(options)),
      listener_(listen_at(options_.socket, !options_.users.empty())),
      long_replies_(options_.filters) {}

Server::~Server() {
  for (Connection& connection : connections_) connection.session.set_end(kServerEnds);
  connections_.clear();
  std::error_code ignored;
  std::filesystem::remove(options_.socket, ignored);
}

void Server::run(const std::vector<Watch>& watches) {
  std::vector<pollfd> polled;
  for (;;) {
    polled = {{listener_.get(), POLLIN, 0}};
    for (const Watch& watch : watches) polled.push_back({watch.descriptor, POLLIN, 0});
    for (Connection& connection : connections_) {
      const bool takes_answers = connection.session.output().size() < kMostWaiting;
      const bool reads = !connection.input_ended && !connection.has_more && takes_answers &&
                         !connection.session.has_ended();
      const bool writes = !connection.session.output().empty();
      polled.push_back({connection.socket.get(),
                        static_cast<short>((reads ? POLLIN : 0) | (writes ? POLLOUT : 0)), 0});
    }
    long_replies_.add_to(polled);
    if (poll(polled.data(), polled.size(), milliseconds_to_wait()) < 0) {
      if (errno == EINTR) continue;
      throw std::system_error(errno, std::generic_category(), "poll");
    }
    auto next = polled.cbegin() + 1;
    for (const Watch& watch : watches) {
      if ((next++)->revents != 0 && !watch.take()) return;
    }
    end_late_commit(card_, Clock::now());
    for (Connection& connection : connections_) serve(connection, (next++)->revents);
    finish_replies();
    // Commits of several clients share the time that the disk takes.
    sync_commits(card_);
    for (Connection& connection : connections_) send(connection);
    drop_ended();
    tend_commits(card_);
    if (polled[0].revents != 0) accept_one();
  }
}

int Server::milliseconds_to_wait() const {
  auto next = long_replies_.deadline();
  for (const Connection& connection : connections_) {
    if (can_answer(connection)) return 0;
    if (!connection.session.is_open() || connection.is_ending) {
      next = std::min(next, connection.deadline);
    }
  }
  if (card_.pending.has_value()) next = std::min(next, card_.pending->deadline);
  if (next == Clock::time_point::max()) return -1;
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(next - Clock::now());
  return static_cast<int>(std::clamp(left, std::chrono::milliseconds{0}, kLongestWait).count());
}

void Server::accept_one() {
  Descriptor socket(accept4(listener_.get(), nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC));
  if (socket.get() < 0) {
    if (!is_blocked(errno) && errno != ECONNABORTED) {
      card_.log(LogLevel::kError, "accept: " + std::generic_category().message(errno));
    }
    return;
  }
  const uid_t user = peer_of(socket);
  const auto& users = options_.users;
  if (user != geteuid() && std::find(users.begin(), users.end(), user) == users.end()) {
    card_.log(LogLevel::kWarning, "refused user " + name_of(user));
    return;
  }
  if (connections_.size() >= options_.most_sessions) {
    card_.log(LogLevel::kWarning, "refused user " + name_of(user) + ": " +
                                      std::to_string(connections_.size()) + " sessions are open");
    return;
  }
  connections_.emplace_back(std::move(socket), card_, ++last_id_, name_of(user), options_);
}

bool Server::can_answer(const Connection& connection) {
  const Session& session = connection.session;
  return connection.has_more && !session.is_waiting() && session.output().size() < kMostWaiting;
}

void Server::serve(Connection& connection, short events) {
  Session& session = connection.session;
  if ((events & (POLLIN | POLLHUP | POLLERR)) != 0 && !connection.has_more) receive(connection);
  // Its client has closed both ways, and takes no reply.
  if ((events & (POLLHUP | POLLERR)) != 0 && session.is_waiting()) connection.is_lost = true;
  if (can_answer(connection)) connection.has_more = session.answer_next();
  if (MakeReply make = session.take_long_reply()) {
    long_replies_.begin(session.id(), std::move(make));
  }
  if (session.has_ended() && !connection.is_ending) {
    connection.is_ending = true;
    connection.deadline = Clock::now() + kTimeToTakeReplies;
  }
}

void Server::receive(Connection& connection) {
  if (connection.input_ended || connection.session.has_ended()) return;
  std::array<char, kReadSize> buffer;
  const ssize_t got = recv(connection.socket.get(), buffer.data(), buffer.size(), 0);
  if (got > 0) {
    connection.session.receive({buffer.data(), static_cast<std::size_t>(got)});
    connection.has_more = true;
  } else if (got == 0 || !is_blocked(errno)) {
    connection.input_ended = true;
  }
}

void Server::send(Connection& connection) {
  std::string& output = connection.session.output();
  if (output.empty()) return;
  const ssize_t sent =
      ::send(connection.socket.get(), output.data(), output.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
  if (sent >= 0) {
    output.erase(0, static_cast<std::size_t>(sent));
  } else if (!is_blocked(errno)) {
    connection.is_lost = true;
  }
}

std::optional<std::string> Server::end_of(const Connection& connection,
                                          Clock::time_point now) const {
  const Session& session = connection.session;
  if (connection.is_lost || card_.sessions.at(session.id()).is_killed) return kLost;
  const bool is_late = now >= connection.deadline;
  const bool has_sent_all = session.output().empty();
  if (session.has_ended() && (has_sent_all || is_late)) return kLost;
  if (session.has_ended()) return std::nullopt;
  if (connection.input_ended && has_sent_all && !connection.has_more) return kClosed;
  if (!connection.input_ended && !session.is_open() && is_late) return kNoHello;
  return std::nullopt;
}

void Server::finish_replies() {
  for (const auto& [id, reply, given_up] : long_replies_.proceed(Clock::now())) {
    if (!given_up.empty()) {
      card_.log(LogLevel::kWarning, "session " + std::to_string(id) + ": " + given_up);
    }
    const auto asked = std::find_if(
        connections_.begin(), connections_.end(),
        [wanted = id](const Connection& connection) { return connection.session.id() == wanted; });
    asked->session.finish(reply);
  }
}

void Server::drop_ended() {
  const auto now = Clock::now();
  std::erase_if(connections_, [&](Connection& connection) {
    const auto why = end_of(connection, now);
    if (why.has_value()) {
      connection.session.set_end(*why);
      long_replies_.cancel(connection.session.id());
    }
    return why.has_value();
  });
}

}  // namespace tarnd::netconf
