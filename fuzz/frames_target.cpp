// Any bytes as a stream of frames, in pieces of any size. The messages do not depend on the pieces;
// messages that were framed come out whole; none is longer than the limit; and a session answers
// any stream with whole frames.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/choices.h"
#include "fuzz/property.h"
#include "fuzz/served_card.h"
#include "fuzz/target.h"
#include "netconf/framing.h"
#include "netconf/message.h"
#include "netconf/session.h"

namespace tarnd::fuzz {
namespace {

using netconf::FrameReader;
using netconf::Framing;

constexpr std::size_t kMostLimits[] = {0, 1, 7, 100, 1000};
constexpr std::size_t kMostPieceSizes = 8;
constexpr std::string_view kEndOfMessage = "]]>]]>";

constexpr std::string_view kHello =
    "<hello xmlns='urn:ietf:params:xml:ns:netconf:base:1.0'><capabilities>"
    "<capability>urn:ietf:params:netconf:base:1.1</capability></capabilities></hello>]]>]]>";

/// How a stream arrives: pieces of these sizes, again and again.
using PieceSizes = std::vector<std::size_t>;

/// What a reader made of a stream.
struct Cut {
  std::vector<std::string> messages;
  bool has_failed = false;

  friend bool operator==(const Cut&, const Cut&) = default;
};

PieceSizes chosen_sizes(Choices& choices) {
  PieceSizes sizes(1 + choices.below(kMostPieceSizes));
  for (std::size_t& size : sizes) size = 1 + choices.below(64);
  return sizes;
}

template <typename Take>
void in_pieces(std::string_view stream, const PieceSizes& sizes, Take take) {
  for (std::size_t piece = 0; !stream.empty(); ++piece) {
    const std::string_view bytes = stream.substr(0, sizes[piece % sizes.size()]);
    take(bytes);
    stream.remove_prefix(bytes.size());
  }
}

Cut cut(std::string_view stream, const PieceSizes& sizes, Framing framing, std::size_t most) {
  Cut result;
  FrameReader reader(most);
  reader.use(framing);
  try {
    in_pieces(stream, sizes, [&](std::string_view bytes) {
      reader.append(bytes);
      do {
        while (auto message = reader.next()) result.messages.push_back(*message);
      } while (reader.has_more());
    });
  } catch (const netconf::FramingError&) {
    result.has_failed = true;
  }
  return result;
}

void try_stream(const std::string& stream, const PieceSizes& sizes, Framing framing,
                std::size_t most) {
  const Cut whole = cut(stream, {stream.size() + 1}, framing, most);
  require(cut(stream, sizes, framing, most) == whole, "messages do not depend on the pieces");
  for (const std::string& message : whole.messages) {
    require(message.size() <= most, "no message is longer than the limit");
    require(framing == Framing::kEndOfMessage || !message.empty(), "a chunk has a byte at least");
  }
}

// With base:1.0 a message must not hold the mark of its end, not even with the mark's own bytes.
bool can_be_framed(const std::string& message, Framing framing) {
  if (framing == Framing::kChunked) return !message.empty();
  return (message + std::string(kEndOfMessage)).find(kEndOfMessage) == message.size();
}

// Each chunk has the size of a piece.
std::string in_chunks(const std::string& message, const PieceSizes& sizes) {
  std::string frame;
  in_pieces(message, sizes, [&frame](std::string_view chunk) {
    frame.append("\n#").append(std::to_string(chunk.size())).append("\n").append(chunk);
  });
  return frame + "\n##\n";
}

void try_messages(const std::string& bytes, const PieceSizes& sizes, Framing framing) {
  Cut framed;
  std::string stream;
  in_pieces(bytes, sizes, [&](std::string_view piece) {
    const std::string message(piece);
    if (!can_be_framed(message, framing)) return;
    framed.messages.push_back(message);
    stream += netconf::framed(message, framing);
    if (framing == Framing::kEndOfMessage) return;
    framed.messages.push_back(message);
    stream += in_chunks(message, sizes);
  });
  require(cut(stream, sizes, framing, bytes.size()) == framed, "messages come out whole");
}

// The hello is framed with its end marked, the replies as the session does it by then.
void require_whole_frames(const std::string& output, Framing framing) {
  FrameReader reader(output.size());
  reader.append(output);
  bool is_hello = true;
  while (const auto message = reader.next()) {
    const netconf::Element root = netconf::read_message(*message);
    require(root.is(netconf::kBaseNamespace, is_hello ? "hello" : "rpc-reply"),
            "a session sends a hello and replies:\n" + *message);
    if (is_hello) reader.use(framing);
    is_hello = false;
  }
  require(!is_hello && !reader.is_within_message(), "a session sends whole frames:\n" + output);
}

void try_session(const std::string& stream, const PieceSizes& sizes, bool says_hello,
                 std::size_t most) {
  ServedCard card("<config xmlns='urn:tarnd:base'/>");
  netconf::Session session(card.shared(), 1, "somebody", most + kHello.size());
  if (says_hello) {
    session.receive(kHello);
    require(session.answer_next() && session.is_open(), "a session takes a hello");
  }
  in_pieces(stream, sizes, [&session](std::string_view bytes) {
    session.receive(bytes);
    while (session.answer_next()) {
      if (const auto make = session.take_long_reply()) session.finish(make());
    }
  });
  if (session.has_ended()) require(!session.answer_next(), "an ended session reads nothing");
  // A hello of the stream may have changed the framing only if there was none before.
  if (says_hello) require_whole_frames(session.output(), Framing::kChunked);
}

void try_bytes(Choices choices) {
  const Framing framing = choices.one_in(2) ? Framing::kChunked : Framing::kEndOfMessage;
  const bool says_hello = choices.one_in(2);
  const std::size_t most = choices.of(kMostLimits);
  const PieceSizes sizes = chosen_sizes(choices);
  const std::string stream(choices.rest());
  try_stream(stream, sizes, framing, most);
  try_messages(stream, sizes, framing);
  try_session(stream, sizes, says_hello, most);
}

}  // namespace
}  // namespace tarnd::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  tarnd::fuzz::try_bytes({data, size});
  return 0;
}
