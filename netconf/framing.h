#pragma once

#include <cstddef>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace tarnd::netconf {

/// How the end of a message is marked in a stream (RFC 6242, section 4).
enum class Framing {
  kEndOfMessage,  ///< base:1.0, and every hello: "]]>]]>" after each message
  kChunked        ///< base:1.1: chunks with their length before them, "\n##\n" after the last
};

/// The stream cannot be cut into messages, or one is too long. The session has to end.
class FramingError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Cuts a stream of bytes that comes in pieces into messages.
class FrameReader {
 public:
  /// A message may have this many bytes at most.
  explicit FrameReader(std::size_t most) : most_(most) {}

  void append(std::string_view bytes);
  /// The next whole message, if it has come. Of a message in many chunks only some are read at
  /// once. Throws FramingError.
  std::optional<std::string> next();
  /// The last next() left chunks unread that have come.
  [[nodiscard]] bool has_more() const { return has_more_; }
  /// How the messages after the last one that was taken are framed.
  void use(Framing framing) { framing_ = framing; }
  [[nodiscard]] Framing framing() const { return framing_; }
  /// True when part of a message has come, and the rest of it has not.
  [[nodiscard]] bool is_within_message() const;

 private:
  std::optional<std::string> next_ended();
  std::optional<std::string> next_chunked();
  enum class Chunk { kTaken, kLast, kNotThereYet };
  Chunk take_chunk();
  [[nodiscard]] std::string_view rest() const { return std::string_view(buffer_).substr(begin_); }
  void consume(std::size_t bytes);

  const std::size_t most_;
  Framing framing_ = Framing::kEndOfMessage;
  std::string buffer_;
  std::size_t begin_ = 0;     // what is before it was taken
  std::size_t searched_ = 0;  // so much of the rest has no end of message
  std::string message_;       // the chunks of a message so far
  bool has_more_ = false;
};

/// The message as it is sent.
std::string framed(std::string_view message, Framing framing);

}  // namespace tarnd::netconf
