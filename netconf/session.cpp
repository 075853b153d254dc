#include "netconf/session.h"

#include <algorithm>
#include <exception>
#include <new>
#include <optional>
#include <utility>
#include <vector>

#include "netconf/message.h"
#include "netconf/rpc_error.h"
#include "netconf/xml_text.h"

namespace tarnd::netconf {
namespace {

constexpr std::string_view kBase10 = "urn:ietf:params:netconf:base:1.0";
constexpr std::string_view kBase11 = "urn:ietf:params:netconf:base:1.1";
constexpr std::string_view kMessageId = "message-id";

std::string in_base_namespace(std::string_view element, std::string_view attributes,
                              std::string_view content) {
  std::string text;
  text.reserve(content.size() + attributes.size() + 128);
  text.append("<").append(element).append(" xmlns=\"").append(kBaseNamespace).append("\"");
  text.append(attributes).append(">").append(content);
  return text.append("</").append(element).append(">");
}

// A client gets back all attributes of its rpc.
std::string attributes_of(const Element& rpc) {
  std::string text;
  std::vector<std::string_view> declared{"xml"};
  for (const Attribute& attribute : rpc.attributes) {
    if (attribute.name_space.empty()) {
      text += " " + attribute.name + "=\"" + escaped_value(attribute.value) + "\"";
      continue;
    }
    if (std::find(declared.begin(), declared.end(), attribute.prefix) == declared.end()) {
      declared.push_back(attribute.prefix);
      text += " xmlns:" + attribute.prefix + "=\"" + escaped_value(attribute.name_space) + "\"";
    }
    text += " " + attribute.prefix + ":" + attribute.name + "=\"" + escaped_value(attribute.value) +
            "\"";
  }
  return text;
}

RpcError malformed_message(const std::string& why) {
  return error_of("rpc", "malformed-message", why);
}

RpcError missing_message_id() {
  RpcError error = missing_attribute(std::string(kMessageId), "rpc");
  error.type = "rpc";
  return error;
}

RpcError internal_error() {
  RpcError error;
  error.message = "the server could not finish the operation";
  return error;
}

RpcError no_memory() {
  return error_of("application", "resource-denied",
                  "the operation needs more memory than this server has for it");
}

Reply errors_in(const Card& card, const std::vector<RpcError>& errors) {
  const store::Schema& schema = card.datastore.schema();
  const PathPrefix prefix{schema.prefix(), schema.namespace_uri()};
  Reply reply;
  for (const RpcError& error : errors) reply.content += to_xml(error, prefix);
  reply.errors = errors.size();
  return reply;
}

Reply reply_to(Card& card, Caller& caller, const Element& rpc, const std::string& message) {
  try {
    return {run_operation(card, caller, rpc, message), 0, {}};
  } catch (const RpcFailure& failure) {
    return errors_in(card, failure.errors());
  } catch (const std::bad_alloc&) {
    return errors_in(card, {no_memory()});
  } catch (const std::exception& error) {
    Reply reply = errors_in(card, {internal_error()});
    reply.failure = error.what();
    return reply;
  }
}

bool offers(const Element& hello, std::string_view capability) {
  for (const Element& child : hello.children) {
    if (!child.is(kBaseNamespace, "capabilities")) continue;
    for (const Element& offered : child.children) {
      if (trimmed(offered.text) == capability) return true;
    }
  }
  return false;
}

}  // namespace

Session::Session(Card& card, SessionId id, std::string user, std::size_t most_of_message)
    : card_(card), caller_{id}, frames_(most_of_message) {
  card_.log(LogLevel::kInfo, "session " + std::to_string(id) + " begins, user " + user);
  card_.sessions[id].user = std::move(user);
  ++card_.counts.sessions;
  send(in_base_namespace(
      "hello", "", capabilities(card_) + "<session-id>" + std::to_string(id) + "</session-id>"));
}

Session::~Session() {
  const std::string why = why_it_ends();
  if (!caller_.closes) ++card_.counts.dropped;
  end_session(card_, caller_.id);
  card_.log(LogLevel::kInfo, "session " + std::to_string(caller_.id) + " ends: " + why);
}

std::string Session::why_it_ends() const {
  if (has_failed_) return why_failed_;
  if (caller_.closes) return "its client closed it";
  if (card_.sessions.at(caller_.id).is_killed) return "another session killed it";
  return why_connection_ends_;
}

bool Session::has_ended() const {
  return has_failed_ || caller_.closes || card_.sessions.at(caller_.id).is_killed;
}

void Session::send(const std::string& message) {
  output_ += framed(message, frames_.framing());
}

void Session::end(const std::string& why) {
  has_failed_ = true;
  why_failed_ = why;
  card_.log(LogLevel::kWarning, "session " + std::to_string(caller_.id) + ": " + why);
}

// base:1.0 has no error for a message that cannot be read.
void Session::end_with_reply(const std::string& why) {
  attributes_.clear();
  if (frames_.framing() == Framing::kChunked) send_reply(to_xml(malformed_message(why), {}));
  end(why);
}

bool Session::answer_next() {
  if (has_ended() || is_waiting_) return false;
  try {
    const std::optional<std::string> message = frames_.next();
    if (!message.has_value()) return frames_.has_more();
    const Element element = read_message(*message);
    if (is_open_) {
      take_rpc(element, *message);
    } else {
      take_hello(element);
      if (!is_open_) ++card_.counts.bad_hellos;
    }
    return true;
  } catch (const FramingError& error) {
    end_with_reply(error.what());
  } catch (const MalformedMessage& error) {
    if (is_open_) count(&MessageCounts::bad_rpcs);
    end_with_reply(error.what());
  }
  if (!is_open_) ++card_.counts.bad_hellos;
  return false;
}

void Session::count(std::uint64_t MessageCounts::*what, std::uint64_t more) {
  card_.sessions.at(caller_.id).counts.*what += more;
  card_.counts.messages.*what += more;
}

void Session::take_hello(const Element& hello) {
  if (!hello.is(kBaseNamespace, "hello")) return end("the first message is no hello");
  const bool has_id =
      std::any_of(hello.children.begin(), hello.children.end(),
                  [](const Element& child) { return child.is(kBaseNamespace, "session-id"); });
  if (has_id) return end("the client's hello has a session-id");
  const bool chunked = offers(hello, kBase11);
  if (!chunked && !offers(hello, kBase10)) return end("the client's hello has no base capability");
  if (chunked) frames_.use(Framing::kChunked);
  is_open_ = true;
}

void Session::take_rpc(const Element& rpc, const std::string& message) {
  if (!rpc.is(kBaseNamespace, "rpc")) {
    throw MalformedMessage("the message is no rpc, but '" + rpc.name + "'");
  }
  count(&MessageCounts::rpcs);
  attributes_ = attributes_of(rpc);
  if (rpc.attribute(kMessageId) == nullptr) {
    return finish(errors_in(card_, {missing_message_id()}));
  }
  if (!may_take_long(rpc)) return finish(reply_to(card_, caller_, rpc, message));
  is_waiting_ = true;
  long_reply_ = [&card = card_, caller = caller_, rpc, message]() mutable {
    return reply_to(card, caller, rpc, message);
  };
}

void Session::finish(const Reply& reply) {
  is_waiting_ = false;
  if (!reply.failure.empty()) {
    card_.log(LogLevel::kError, "session " + std::to_string(caller_.id) + ": " + reply.failure);
  }
  count(&MessageCounts::errors, reply.errors);
  send_reply(reply.content);
}

void Session::send_reply(std::string_view content) {
  send(in_base_namespace("rpc-reply", attributes_, content));
}

}  // namespace tarnd::netconf
