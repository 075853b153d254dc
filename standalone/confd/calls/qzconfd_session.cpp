// The configuration-session service: the MAAPI socket of a transaction, and its read sessions on
// the committed configuration.

#include "session/qzconfd_session.h"

#include "standalone/confd/session_state.h"
#include "standalone/platform_calls.h"

namespace {

constexpr int kNoSocket = -1;

}  // namespace

int qzconfd_maapi_socket_get(void* handle) {
  if (!tarnd::enter_platform_call(tarnd::PlatformCall::qzconfd_maapi_socket_get)) return kNoSocket;
  const tarnd::SessionState* session = tarnd::find_session_by_opaque(handle);
  return session != nullptr ? session->maapi_socket : kNoSocket;
}

int qzconfd_config_session_start(void* handle) {
  if (!tarnd::enter_platform_call(tarnd::PlatformCall::qzconfd_config_session_start)) {
    return kNoSocket;
  }
  tarnd::SessionState* session = tarnd::find_session_by_opaque(handle);
  if (session == nullptr) return kNoSocket;
  return session->cdb_sockets.emplace_back(tarnd::next_number());
}

void qzconfd_config_session_end(void* handle) {
  tarnd::enter_platform_call(tarnd::PlatformCall::qzconfd_config_session_end);
  tarnd::SessionState* session = tarnd::find_session_by_opaque(handle);
  if (session != nullptr && !session->cdb_sockets.empty()) session->cdb_sockets.pop_back();
}
