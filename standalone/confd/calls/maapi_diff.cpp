// The changes of the transaction, node by node.

#include <cstdarg>
#include <span>

#include "confd_maapi.h"
#include "standalone/confd/call.h"
#include "standalone/confd/diff_walk.h"
#include "standalone/confd/errors.h"

namespace tarnd::confd {
namespace {

int diff_iterate(int sock, int thandle, DiffIterator iterator, void* state, const char* fmt,
                 std::va_list args) {
  const SessionState* session =
      enter_session(PlatformCall::maapi_keypath_diff_iterate, sock, thandle);
  if (session == nullptr) return CONFD_ERR;
  const auto path = read_path(session->model, fmt, args);
  if (!path.has_value()) return CONFD_ERR;
  const store::Change* changes = session->transaction.changes();
  if (changes == nullptr) return CONFD_OK;
  const auto below_root = std::span(path->steps()).subspan(1);
  if (walk_changes(session->model, *changes, below_root, iterator, state)) return CONFD_OK;
  return fail(CONFD_ERR_PROTOUSAGE, "the callback's answer is unknown");
}

}  // namespace
}  // namespace tarnd::confd

int maapi_keypath_diff_iterate(int sock, int thandle,
                               enum maapi_iter_ret (*iter)(confd_hkeypath_t* kp,
                                                           enum maapi_iter_op op,
                                                           confd_value_t* oldv, confd_value_t* newv,
                                                           void* state),
                               int, void* initstate, const char* fmtpath, ...) {
  va_list args;
  va_start(args, fmtpath);
  const int result = tarnd::confd::diff_iterate(sock, thandle, iter, initstate, fmtpath, args);
  va_end(args);
  return result;
}
