// Errors: that of the last call, and the validation's text for its user.

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <string>

#include "confd_lib.h"
#include "standalone/confd/errors.h"
#include "standalone/confd/session_state.h"

namespace tarnd::confd {
namespace {

std::string print(const char* fmt, std::va_list args) {
  std::va_list again;
  va_copy(again, args);
  const int size = std::vsnprintf(nullptr, 0, fmt, again);
  va_end(again);
  if (size < 0) return {};
  std::string text(static_cast<std::size_t>(size), '\0');
  std::vsnprintf(text.data(), text.size() + 1, fmt, args);
  return text;
}

}  // namespace
}  // namespace tarnd::confd

using tarnd::PlatformCall;

int confd_errno = 0;

char* confd_lasterr(void) {
  tarnd::enter_platform_call(PlatformCall::confd_lasterr);
  return tarnd::confd::last_error().data();
}

void confd_trans_seterr(struct confd_trans_ctx* tctx, const char* fmt, ...) {
  tarnd::enter_platform_call(PlatformCall::confd_trans_seterr);
  if (tctx == nullptr) return;
  tarnd::SessionState* session = tarnd::find_session_by_handle(tctx->thandle);
  if (session == nullptr) return;
  va_list args;
  va_start(args, fmt);
  session->error_text = tarnd::confd::print(fmt, args);
  va_end(args);
}
