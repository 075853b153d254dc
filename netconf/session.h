#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "netconf/card.h"
#include "netconf/framing.h"
#include "netconf/operations.h"
#include "netconf/reply.h"

namespace tarnd::netconf {

/// One client's side of the protocol: bytes come in, bytes go out, whatever carries them.
class Session {
 public:
  /// Registers with the card. A message may have `most_of_message` bytes.
  Session(Card& card, SessionId id, std::string user, std::size_t most_of_message);
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;
  ~Session();

  [[nodiscard]] SessionId id() const { return caller_.id; }

  /// Why the connection ends, for the log, if the session itself has no reason.
  void set_end(std::string why) { why_connection_ends_ = std::move(why); }

  /// Takes what the client sent.
  void receive(std::string_view bytes) { frames_.append(bytes); }
  /// Answers the next message, if all of it has come, or reads some of a long one. Returns false if
  /// there was nothing to do, or if the session still waits for the reply to the last one.
  bool answer_next();

  /// A message was taken whose reply may take long. Whoever runs the session makes the reply, where
  /// nobody waits for it, and finishes the session's answer with it. Until then no other message
  /// is answered.
  [[nodiscard]] bool is_waiting() const { return is_waiting_; }
  /// Makes that reply. Empty if the session does not wait, or when it was taken already.
  MakeReply take_long_reply() { return std::exchange(long_reply_, nullptr); }
  void finish(const Reply& reply);

  /// What is to be sent to the client; the caller takes from its front what was sent.
  std::string& output() { return output_; }
  [[nodiscard]] const std::string& output() const { return output_; }

  /// The client has said hello.
  [[nodiscard]] bool is_open() const { return is_open_; }
  /// Nothing more is read: the session was closed or killed, or its client broke the protocol.
  [[nodiscard]] bool has_ended() const;

 private:
  void take_hello(const Element& hello);
  void take_rpc(const Element& rpc, const std::string& message);
  void count(std::uint64_t MessageCounts::*what, std::uint64_t more = 1);
  void send_reply(std::string_view content);
  void send(const std::string& message);
  void end_with_reply(const std::string& why);
  void end(const std::string& why);
  [[nodiscard]] std::string why_it_ends() const;

  Card& card_;
  Caller caller_;
  FrameReader frames_;
  std::string output_;
  std::string attributes_;  // of the rpc that is being answered
  MakeReply long_reply_;
  bool is_waiting_ = false;
  bool is_open_ = false;
  bool has_failed_ = false;
  std::string why_failed_;
  std::string why_connection_ends_ = "its connection ends";
};

}  // namespace tarnd::netconf
