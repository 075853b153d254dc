#include "standalone/confd/session_state.h"

#include <algorithm>

namespace tarnd {
namespace {

std::vector<SessionState*> live_sessions;

template <typename Condition>
SessionState* find_live(Condition condition) {
  const auto found = std::find_if(live_sessions.begin(), live_sessions.end(),
                                  [&](const SessionState* state) { return condition(*state); });
  return found != live_sessions.end() ? *found : nullptr;
}

}  // namespace

SessionState::SessionState(store::Transaction& session_transaction)
    : transaction(session_transaction),
      model(confd::load_model(session_transaction.datastore().schema())),
      maapi_socket(next_number()) {
  user.usid = next_number();
  context.thandle = next_number();
  context.uinfo = &user;
  context.vcb_opaque = this;
  context.validate_opaque = request.data();
  live_sessions.push_back(this);
}

SessionState::~SessionState() {
  std::erase(live_sessions, this);
}

int next_number() {
  static int last = 0;
  return ++last;
}

SessionState* find_session(int maapi_socket, int thandle) {
  return find_live([&](const SessionState& state) {
    return state.maapi_socket == maapi_socket && state.context.thandle == thandle;
  });
}

SessionState* find_session_by_socket(int maapi_socket) {
  return find_live([&](const SessionState& state) { return state.maapi_socket == maapi_socket; });
}

SessionState* find_session_by_handle(int thandle) {
  return find_live([&](const SessionState& state) { return state.context.thandle == thandle; });
}

SessionState* find_session_by_cdb_socket(int cdb_socket) {
  return find_live([&](const SessionState& state) {
    return std::find(state.cdb_sockets.begin(), state.cdb_sockets.end(), cdb_socket) !=
           state.cdb_sockets.end();
  });
}

SessionState* find_session_by_opaque(const void* vcb_opaque) {
  return find_live([&](const SessionState& state) { return &state == vcb_opaque; });
}

SessionState* find_session_by_user(int usid) {
  return find_live([&](const SessionState& state) { return state.user.usid == usid; });
}

SessionState* find_session_with_cursor(std::uintptr_t cursor) {
  return find_live([&](const SessionState& state) { return state.cursors.contains(cursor); });
}

SessionState* find_session_with_crypto_keys() {
  return find_live([](const SessionState& state) { return state.crypto_keys_installed; });
}

}  // namespace tarnd
