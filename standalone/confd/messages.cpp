// Messages to the users behind transactions.

#include <charconv>
#include <cstring>

#include "confd_maapi.h"
#include "standalone/confd/errors.h"
#include "standalone/session/session_state.h"

namespace tarnd::confd {
namespace {

SessionState* user_session(const char* to) {
  int usid = 0;
  const char* end = to + std::strlen(to);
  const auto [rest, error] = std::from_chars(to, end, usid);
  return error == std::errc() && rest == end ? find_session_by_user(usid) : nullptr;
}

}  // namespace
}  // namespace tarnd::confd

int maapi_prio_message(int sock, const char* to, const char* message) {
  using tarnd::confd::fail;
  if (!tarnd::confd::enter(tarnd::PlatformCall::maapi_prio_message)) return CONFD_ERR;
  if (tarnd::find_session_by_socket(sock) == nullptr) {
    return fail(CONFD_ERR_NOSESSION, "no transaction has this socket");
  }
  tarnd::SessionState* user = tarnd::confd::user_session(to);
  if (user == nullptr) {
    return fail(CONFD_ERR_NOEXISTS, "no user session has the number " + std::string(to));
  }
  user->messages.emplace_back(message);
  return CONFD_OK;
}
