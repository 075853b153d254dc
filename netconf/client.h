#pragma once

#include <cstddef>
#include <filesystem>
#include <stdexcept>
#include <string>

#include "netconf/card.h"
#include "netconf/framing.h"
#include "netconf/message.h"
#include "standalone/descriptor.h"

namespace tarnd::netconf {

/// The server ended the session, or did not answer as a server does.
class SessionLost : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// A session with the server at a UNIX socket.
class Client {
 public:
  /// Connects, and exchanges hellos. Throws std::system_error if nobody listens there or this user
  /// may not connect, and SessionLost.
  explicit Client(const std::filesystem::path& socket);

  /// The number that the server has given to the session.
  [[nodiscard]] SessionId session() const { return session_; }

  /// Asks for an operation, and waits for the rpc-reply. Throws SessionLost.
  Element ask(const std::string& operation);

 private:
  void send(const std::string& message);
  Element receive();
  void receive_some();

  Descriptor connection_;
  FrameReader frames_;
  SessionId session_ = 0;
  std::size_t asked_ = 0;
};

}  // namespace tarnd::netconf
