#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "netconf/message.h"
#include "netconf/session.h"
#include "tests/support/model.h"

// Sessions of one card, without a socket. The plug-in returns the results that a test sets.
namespace tarnd::netconf {

inline std::map<std::string, int> results;  // by request

inline int begin() {
  return 0;
}

inline int name_point(char* name, int size) {
  std::snprintf(name, static_cast<std::size_t>(size), "gpon_validation_check");
  return 0;
}

inline int answer(confd_trans_ctx* tctx, confd_hkeypath_t* /*keypath*/, confd_value_t* /*newval*/) {
  const std::string request = tctx->validate_opaque;
  const auto result = results.find(request);
  if (result == results.end()) return CONFD_OK;
  confd_trans_seterr(tctx, "%s says <so> & more", request.c_str());
  return result->second;
}

inline constexpr const char* kHello11 =
    "<hello xmlns='urn:ietf:params:xml:ns:netconf:base:1.0'><capabilities>"
    "<capability>urn:ietf:params:netconf:base:1.1</capability></capabilities></hello>]]>]]>";
inline constexpr std::size_t kMost = 100'000;

inline std::string rpc(const std::string& operation,
                       const std::string& attributes = "message-id='1'") {
  return "<rpc xmlns='urn:ietf:params:xml:ns:netconf:base:1.0' " + attributes + ">" + operation +
         "</rpc>";
}

inline std::string edit(const std::string& content, const std::string& parameters = "") {
  return "<edit-config><target><candidate/></target>" + parameters + "<config>" +
         (content.empty() ? "" : test::config(content)) + "</config></edit-config>";
}

inline std::string get(const std::string& datastore) {
  return "<get-config><source><" + datastore +
         "/></source><filter><config xmlns='urn:tarnd:base'><service-port><id/></service-port>"
         "</config></filter></get-config>";
}

inline std::string port(const std::string& id, const std::string& attributes = "") {
  return "<service-port" + attributes + "><id>" + id + "</id></service-port>";
}

inline const std::string kDelete = " nc:operation='delete'";

// A client whose bytes reach the session at once.
class Client {
 public:
  Client(Card& card, SessionId id) : session_(card, id, "somebody", kMost) {
    hello_ = take().front();
    session_.receive(kHello11);
    while (session_.answer_next()) {
      if (const auto make = session_.take_long_reply()) session_.finish(make());
    }
    frames_.use(Framing::kChunked);
  }

  /// The reply to an operation; "none" if there was none.
  std::string ask(const std::string& operation) { return ask_message(rpc(operation)); }
  std::string ask_message(const std::string& message) {
    return ask_bytes(framed(message, Framing::kChunked));
  }
  std::string ask_bytes(const std::string& bytes) {
    session_.receive(bytes);
    while (session_.answer_next()) {
      if (const auto make = session_.take_long_reply()) session_.finish(make());
    }
    const std::vector<std::string> replies = take();
    return replies.empty() ? "none" : replies.back();
  }

  /// The ids of the service ports of a datastore.
  std::vector<std::string> ports(const std::string& datastore) {
    std::vector<std::string> ids;
    const Element reply = read_message(ask(get(datastore)));
    for (const Element& config : reply.children.at(0).children) {
      for (const Element& entry : config.children) ids.push_back(entry.children.at(0).text);
    }
    return ids;
  }

  [[nodiscard]] const std::string& hello() const { return hello_; }
  [[nodiscard]] bool has_ended() const { return session_.has_ended(); }

 private:
  std::vector<std::string> take() {
    std::vector<std::string> messages;
    frames_.append(session_.output());
    session_.output().clear();
    while (auto message = frames_.next()) messages.push_back(*message);
    return messages;
  }

  Session session_;
  FrameReader frames_{kMost};
  std::string hello_;
};

// A served card without a socket, and clients that ask it.
class ServedCardTest : public ::testing::Test {
 protected:
  explicit ServedCardTest(const store::Schema& schema = test::model()) : datastore_(schema) {
    results.clear();
  }

  Client& client(SessionId id) {
    auto& client = clients_[id];
    if (client == nullptr) client = std::make_unique<Client>(card_, id);
    return *client;
  }
  void close(SessionId id) { clients_.erase(id); }

  store::Datastore datastore_;
  Daemon daemon_{datastore_, {&begin, &name_point, &answer, &begin}};
  std::vector<std::string> log_;
  Card card_{datastore_, daemon_, WarningPolicy::kAccept,
             [this](LogLevel, const std::string& text) { log_.push_back(text); }};
  std::map<SessionId, std::unique_ptr<Client>> clients_;
};

MATCHER(IsOk, "is <ok/>") {
  return arg.find("<ok/>") != std::string::npos && arg.find("rpc-error") == std::string::npos;
}

MATCHER_P(IsError, tag, "") {
  return arg.find("<error-tag>" + std::string(tag) + "</error-tag>") != std::string::npos &&
         arg.find("<ok/>") == std::string::npos;
}

}  // namespace tarnd::netconf
