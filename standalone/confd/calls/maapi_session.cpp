// The session of a transaction: messages to its user, keys for encrypted leaves.

#include <charconv>
#include <cstring>
#include <string>

#include "confd_maapi.h"
#include "standalone/confd/call.h"
#include "standalone/confd/errors.h"

namespace tarnd::confd {
namespace {

SessionState* find_user_session(const char* to) {
  int usid = 0;
  const char* end = to + std::strlen(to);
  const auto [rest, error] = std::from_chars(to, end, usid);
  return error == std::errc() && rest == end ? find_session_by_user(usid) : nullptr;
}

}  // namespace
}  // namespace tarnd::confd

using tarnd::PlatformCall;

int maapi_prio_message(int sock, const char* to, const char* message) {
  using namespace tarnd::confd;
  if (enter_session(PlatformCall::maapi_prio_message, sock) == nullptr) return CONFD_ERR;
  tarnd::SessionState* user_session = find_user_session(to);
  if (user_session == nullptr) {
    return fail(CONFD_ERR_NOEXISTS, "no user session has the number " + std::string(to));
  }
  user_session->messages.emplace_back(message);
  return CONFD_OK;
}

int maapi_install_crypto_keys(int sock) {
  tarnd::SessionState* session =
      tarnd::confd::enter_session(PlatformCall::maapi_install_crypto_keys, sock);
  if (session == nullptr) return CONFD_ERR;
  session->crypto_keys_installed = true;
  return CONFD_OK;
}
