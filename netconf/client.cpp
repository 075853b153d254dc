#include "netconf/client.h"

#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstdint>
#include <string_view>
#include <system_error>

#include "netconf/unix_socket.h"
#include "netconf/xml_text.h"

namespace tarnd::netconf {
namespace {

constexpr std::size_t kMostOfReply = std::size_t{1} << 28;
constexpr std::size_t kReadSize = std::size_t{1} << 16;

std::string in_base(const std::string& element, const std::string& attributes,
                    const std::string& content) {
  return "<" + element + " xmlns=\"" + std::string(kBaseNamespace) + "\"" + attributes + ">" +
         content + "</" + element + ">";
}

SessionId session_in(const Element& hello) {
  const auto found =
      std::find_if(hello.children.begin(), hello.children.end(),
                   [](const Element& child) { return child.is(kBaseNamespace, "session-id"); });
  SessionId id = 0;
  if (found == hello.children.end()) return id;
  const std::string_view text = trimmed(found->text);
  std::from_chars(text.data(), text.data() + text.size(), id);
  return id;
}

}  // namespace

// With base:1.0 alone every message ends in the same way.
Client::Client(const std::filesystem::path& socket)
    : connection_(connect_to(socket)), frames_(kMostOfReply) {
  session_ = session_in(receive());
  if (session_ == 0) throw SessionLost("the first message is no hello of a server");
  send(in_base("hello", "",
               "<capabilities><capability>urn:ietf:params:netconf:base:1.0</capability>"
               "</capabilities>"));
}

Element Client::ask(const std::string& operation) {
  send(in_base("rpc", " message-id=\"" + std::to_string(++asked_) + "\"", operation));
  Element reply = receive();
  if (!reply.is(kBaseNamespace, "rpc-reply")) throw SessionLost("a message is no reply");
  return reply;
}

void Client::send(const std::string& message) {
  const std::string whole = framed(message, Framing::kEndOfMessage);
  std::string_view rest = whole;
  while (!rest.empty()) {
    const ssize_t gone = ::send(connection_.get(), rest.data(), rest.size(), MSG_NOSIGNAL);
    if (gone >= 0) {
      rest.remove_prefix(static_cast<std::size_t>(gone));
    } else if (errno != EINTR) {
      throw SessionLost(std::generic_category().message(errno));
    }
  }
}

void Client::receive_some() {
  std::array<char, kReadSize> buffer;
  const ssize_t got = recv(connection_.get(), buffer.data(), buffer.size(), 0);
  if (got == 0) throw SessionLost("it ended the session");
  if (got > 0) {
    frames_.append({buffer.data(), static_cast<std::size_t>(got)});
  } else if (errno != EINTR) {
    throw SessionLost(std::generic_category().message(errno));
  }
}

Element Client::receive() {
  try {
    while (true) {
      if (const auto message = frames_.next(); message.has_value()) return read_message(*message);
      receive_some();
    }
  } catch (const FramingError& error) {
    throw SessionLost(error.what());
  } catch (const MalformedMessage& error) {
    throw SessionLost(error.what());
  }
}

}  // namespace tarnd::netconf
