#include "netconf/relay.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <string>
#include <system_error>

#include "netconf/unix_socket.h"

namespace tarnd::netconf {
namespace {

constexpr std::size_t kReadSize = std::size_t{1} << 16;

// One of the two ways. Standard input and output may be shared with other programs, so they stay
// as they are, blocking: they are used when poll says so, and written in pieces that fit then.
class Way {
 public:
  Way(int from, int to, std::size_t most_at_once) : from_(from), to_(to), most_(most_at_once) {}

  [[nodiscard]] bool reads() const { return !has_ended_ && waiting_.empty(); }
  [[nodiscard]] bool writes() const { return !waiting_.empty(); }
  [[nodiscard]] bool is_done() const { return has_ended_ && waiting_.empty(); }
  [[nodiscard]] pollfd read_poll() const { return {reads() ? from_ : -1, POLLIN, 0}; }
  [[nodiscard]] pollfd write_poll() const { return {writes() ? to_ : -1, POLLOUT, 0}; }

  void take() {
    std::array<char, kReadSize> buffer;
    const ssize_t got = read(from_, buffer.data(), buffer.size());
    if (got > 0) {
      waiting_.assign(buffer.data(), static_cast<std::size_t>(got));
    } else if (got == 0 || errno != EINTR) {
      has_ended_ = true;
    }
  }

  void give() {
    const ssize_t gone = write(to_, waiting_.data(), std::min(waiting_.size(), most_));
    if (gone >= 0) {
      waiting_.erase(0, static_cast<std::size_t>(gone));
    } else if (errno != EINTR && errno != EAGAIN) {
      // Nobody takes it any more.
      waiting_.clear();
      has_ended_ = true;
    }
  }

 private:
  int from_;
  int to_;
  std::size_t most_;
  std::string waiting_;
  bool has_ended_ = false;
};

}  // namespace

void relay(const std::filesystem::path& socket, int input, int output) {
  const Descriptor server = connect_to(socket);
  Way up(input, server.get(), PIPE_BUF);
  Way down(server.get(), output, PIPE_BUF);
  bool told_end = false;
  while (!down.is_done()) {
    std::array polled{up.read_poll(), up.write_poll(), down.read_poll(), down.write_poll()};
    if (poll(polled.data(), polled.size(), -1) < 0) {
      if (errno == EINTR) continue;
      throw std::system_error(errno, std::generic_category(), "poll");
    }
    if (polled[0].revents != 0) up.take();
    if (polled[1].revents != 0) up.give();
    if (polled[2].revents != 0) down.take();
    if (polled[3].revents != 0) down.give();
    if (up.is_done() && !told_end) {
      // The server answers what came before the end.
      shutdown(server.get(), SHUT_WR);
      told_end = true;
    }
  }
}

}  // namespace tarnd::netconf
