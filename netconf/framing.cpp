#include "netconf/framing.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace tarnd::netconf {
namespace {

constexpr std::string_view kEndOfMessage = "]]>]]>";
constexpr std::string_view kBeginOfChunk = "\n#";
constexpr std::string_view kEndOfChunks = "\n##\n";
// RFC 6242: a length has no leading zero and is 4294967295 at most, so it has ten digits at most.
constexpr std::size_t kMostDigits = 10;
constexpr std::uint64_t kMostOfChunk = 4294967295;
// What was taken is dropped when it is as much as this, and half of the buffer.
constexpr std::size_t kDrop = std::size_t{1} << 16;

// A client may send chunks of one byte, and others wait meanwhile.
constexpr int kChunksAtOnce = 64;

constexpr const char* kTooLong = "a message is longer than this server takes";
constexpr const char* kNoChunk = "a chunk begins with a line end, '#' and its length";

bool is_digit(char letter) {
  return letter >= '0' && letter <= '9';
}

}  // namespace

void FrameReader::append(std::string_view bytes) {
  buffer_ += bytes;
}

std::optional<std::string> FrameReader::next() {
  return framing_ == Framing::kEndOfMessage ? next_ended() : next_chunked();
}

bool FrameReader::is_within_message() const {
  return !message_.empty() || rest().find_first_not_of(" \t\r\n") != std::string_view::npos;
}

void FrameReader::consume(std::size_t bytes) {
  begin_ += bytes;
  searched_ = 0;
  if (begin_ < buffer_.size() && (begin_ < kDrop || begin_ < buffer_.size() / 2)) return;
  buffer_.erase(0, begin_);
  begin_ = 0;
}

std::optional<std::string> FrameReader::next_ended() {
  const std::size_t end = rest().find(kEndOfMessage, searched_);
  if (end == std::string_view::npos) {
    searched_ = rest().size() - std::min(rest().size(), kEndOfMessage.size() - 1);
    if (searched_ > most_) throw FramingError(kTooLong);
    return std::nullopt;
  }
  if (end > most_) throw FramingError(kTooLong);
  std::string message(rest().substr(0, end));
  consume(end + kEndOfMessage.size());
  return message;
}

std::optional<std::string> FrameReader::next_chunked() {
  has_more_ = false;
  for (int taken = 0; taken < kChunksAtOnce; ++taken) {
    const Chunk chunk = take_chunk();
    if (chunk == Chunk::kNotThereYet) return std::nullopt;
    if (chunk == Chunk::kLast) return std::exchange(message_, {});
  }
  has_more_ = true;
  return std::nullopt;
}

FrameReader::Chunk FrameReader::take_chunk() {
  const std::string_view text = rest();
  const std::size_t known = std::min(text.size(), kBeginOfChunk.size());
  if (text.substr(0, known) != kBeginOfChunk.substr(0, known)) throw FramingError(kNoChunk);
  if (text.size() <= kBeginOfChunk.size()) return Chunk::kNotThereYet;

  if (text[kBeginOfChunk.size()] == '#') {
    if (text.size() < kEndOfChunks.size()) return Chunk::kNotThereYet;
    if (!text.starts_with(kEndOfChunks)) throw FramingError(kNoChunk);
    if (message_.empty()) throw FramingError("a message has one chunk at least");
    consume(kEndOfChunks.size());
    return Chunk::kLast;
  }

  std::uint64_t length = 0;
  std::size_t at = kBeginOfChunk.size();
  for (; at < text.size() && is_digit(text[at]); ++at) {
    if (at - kBeginOfChunk.size() == kMostDigits) throw FramingError(kNoChunk);
    length = length * 10 + static_cast<std::uint64_t>(text[at] - '0');
  }
  const bool has_length = at > kBeginOfChunk.size() && text[kBeginOfChunk.size()] != '0';
  if (!has_length || length > kMostOfChunk) throw FramingError(kNoChunk);
  if (length > most_ || message_.size() + length > most_) throw FramingError(kTooLong);
  if (at == text.size()) return Chunk::kNotThereYet;
  if (text[at] != '\n') throw FramingError(kNoChunk);
  if (text.size() - at - 1 < length) return Chunk::kNotThereYet;
  message_ += text.substr(at + 1, length);
  consume(at + 1 + length);
  return Chunk::kTaken;
}

std::string framed(std::string_view message, Framing framing) {
  std::string text;
  text.reserve(message.size() + 32);
  if (framing == Framing::kEndOfMessage) {
    text.append(message).append(kEndOfMessage);
    return text;
  }
  // No message of this server comes near the most that one chunk can hold.
  text.append(kBeginOfChunk).append(std::to_string(message.size())).append("\n");
  text.append(message).append(kEndOfChunks);
  return text;
}

}  // namespace tarnd::netconf
