// Any text as messages of one client to the small card; lines of five equal signs separate them,
// and the first line may be a word of --warnings. Each message has one reply, which is well-formed
// and has all attributes of the rpc; a reply that is not <ok/> changed nothing, unless the message
// asked to continue on an error; and the clear text
// of an encrypted leaf comes in no reply and no line of the log.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <tuple>
#include <utility>
#include <vector>

#include "fuzz/property.h"
#include "fuzz/served_card.h"
#include "fuzz/small_card.h"
#include "fuzz/target.h"
#include "netconf/framing.h"
#include "netconf/message.h"
#include "netconf/session.h"

namespace tarnd::fuzz {
namespace {

using netconf::Element;
using netconf::WarningPolicy;

constexpr std::string_view kSeparator = "\n=====\n";
constexpr std::size_t kMost = 1 << 20;
constexpr std::string_view kHello =
    "<hello xmlns='urn:ietf:params:xml:ns:netconf:base:1.0'><capabilities>"
    "<capability>urn:ietf:params:netconf:base:1.1</capability></capabilities></hello>]]>]]>";

// Only an encrypted password has a user name before it. If the word is written anywhere else, too,
// it is no secret.
constexpr std::string_view kSecret = "cl34rt3xt";
constexpr std::string_view kSecretInLeaf = "<username>u</username><password>$0$cl34rt3xt";

constexpr std::array kPolicies = {
    std::pair<std::string_view, WarningPolicy>{"accept\n", WarningPolicy::kAccept},
    std::pair<std::string_view, WarningPolicy>{"reject\n", WarningPolicy::kReject},
    std::pair<std::string_view, WarningPolicy>{"report\n", WarningPolicy::kReport}};

WarningPolicy take_policy(std::string_view& text) {
  for (const auto& [word, policy] : kPolicies) {
    if (!text.starts_with(word)) continue;
    text.remove_prefix(word.size());
    return policy;
  }
  return WarningPolicy::kAccept;
}

std::size_t count(std::string_view text, std::string_view word) {
  std::size_t found = 0;
  for (std::size_t at = text.find(word); at != std::string_view::npos; ++found) {
    at = text.find(word, at + word.size());
  }
  return found;
}

/// What a reply must repeat of an rpc.
using Attributes = std::vector<std::tuple<std::string, std::string, std::string>>;

Attributes attributes_of(const Element& element) {
  Attributes attributes;
  for (const netconf::Attribute& attribute : element.attributes) {
    attributes.emplace_back(attribute.name_space, attribute.name, attribute.value);
  }
  std::sort(attributes.begin(), attributes.end());
  return attributes;
}

// No value if the message is not an rpc; the session then ends.
std::optional<Element> read_rpc(const std::string& message) {
  try {
    Element element = netconf::read_message(message);
    if (element.is(netconf::kBaseNamespace, "rpc")) return element;
  } catch (const netconf::MalformedMessage&) {
  }
  return std::nullopt;
}

bool has_only(const Element& reply, std::string_view name) {
  return !reply.children.empty() &&
         std::all_of(reply.children.begin(), reply.children.end(),
                     [name](const Element& child) { return child.name == name; });
}

bool is_ok(const Element& reply) {
  return reply.children.size() == 1 && has_only(reply, "ok");
}

/// A client of the card. The session that it has after its last one ended is a new one.
class Client {
 public:
  explicit Client(WarningPolicy policy) : card_(small_card(), policy) { start(); }

  void ask(const std::string& message) {
    if (count(message, kSecret) != count(message, kSecretInLeaf)) has_secret_ = false;
    if (session_->has_ended()) start();
    const Element reply = reply_to(message);
    require_reply(message, reply);
    const std::string running = std::exchange(running_, card_.running());
    const std::string candidate = std::exchange(candidate_, card_.candidate());
    const bool may_change = is_ok(reply) || message.find("continue-on-error") != std::string::npos;
    require(may_change || (running_ == running && candidate_ == candidate),
            "a reply that is not ok changed nothing:\n" + message);
  }

 private:
  void start() {
    session_.reset();
    running_ = card_.running();
    candidate_ = card_.candidate();
    session_ = std::make_unique<netconf::Session>(card_.shared(), ++last_id_, "somebody", kMost);
    session_->receive(kHello);
    require(session_->answer_next() && session_->is_open(), "a session takes a hello");
    session_->output().clear();
  }

  Element reply_to(const std::string& message) {
    session_->receive(netconf::framed(message, netconf::Framing::kChunked));
    while (session_->answer_next()) {
      if (const auto make = session_->take_long_reply()) session_->finish(make());
    }
    const std::string output = std::exchange(session_->output(), {});
    if (has_secret_) {
      require(count(output, kSecret) == 0, "no reply has a clear text:\n" + output);
      require(count(card_.take_log(), kSecret) == 0, "the log has no clear text:\n" + message);
    }
    netconf::FrameReader frames(output.size());
    frames.use(netconf::Framing::kChunked);
    frames.append(output);
    const std::optional<std::string> reply = frames.next();
    require(reply.has_value() && !frames.is_within_message(),
            "a message has one reply:\n" + output);
    return read_reply(*reply);
  }

  static Element read_reply(const std::string& text) {
    try {
      return netconf::read_message(text);
    } catch (const netconf::MalformedMessage& error) {
      require(false, "a reply is well-formed: " + std::string(error.what()) + "\n" + text);
      throw;
    }
  }

  void require_reply(const std::string& message, const Element& reply) {
    require(reply.is(netconf::kBaseNamespace, "rpc-reply"), "a reply is an rpc-reply");
    require(is_ok(reply) || has_only(reply, "rpc-error") || has_only(reply, "data"),
            "a reply is ok, errors or data");
    const std::optional<Element> rpc = read_rpc(message);
    if (rpc.has_value()) {
      require(attributes_of(reply) == attributes_of(*rpc),
              "a reply has all attributes of its rpc:\n" + message);
    } else {
      require(session_->has_ended() && has_only(reply, "rpc-error"),
              "a message that is no rpc ends its session with an error:\n" + message);
    }
  }

  ServedCard card_;
  std::unique_ptr<netconf::Session> session_;
  netconf::SessionId last_id_ = 0;
  // Before the next message.
  std::string running_;
  std::string candidate_;
  bool has_secret_ = true;
};

void try_messages(std::string_view text) {
  Client client(take_policy(text));
  for (;;) {
    const std::size_t end = text.find(kSeparator);
    // An empty message has no frame.
    if (const std::string message(text.substr(0, end)); !message.empty()) client.ask(message);
    if (end == std::string_view::npos) return;
    text.remove_prefix(end + kSeparator.size());
  }
}

}  // namespace
}  // namespace tarnd::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  tarnd::fuzz::try_messages({reinterpret_cast<const char*>(data), size});
  return 0;
}
