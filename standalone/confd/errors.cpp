#include "standalone/confd/errors.h"

int confd_errno = 0;

namespace tarnd::confd {
namespace {

std::string last_error;

}  // namespace

int fail(int code, const std::string& text) {
  confd_errno = code;
  last_error = text;
  return CONFD_ERR;
}

bool enter(PlatformCall call) {
  if (enter_platform_call(call)) return true;
  fail(CONFD_ERR_UNAVAILABLE, std::string(to_string(call)) + " is not answered");
  return false;
}

}  // namespace tarnd::confd

char* confd_lasterr(void) {
  tarnd::enter_platform_call(tarnd::PlatformCall::confd_lasterr);
  return tarnd::confd::last_error.data();
}
