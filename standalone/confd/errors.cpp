#include "standalone/confd/errors.h"

namespace tarnd::confd {

int fail(int code, const std::string& text) {
  confd_errno = code;
  last_error() = text;
  return CONFD_ERR;
}

int fail_kind(const store::SchemaNode& node, const char* wanted) {
  return fail(CONFD_ERR_BADPATH, "'" + node.path() + "' is no " + wanted);
}

int fail_missing(const store::SchemaNode& node) {
  return fail(CONFD_ERR_NOEXISTS, "'" + node.path() + "' does not exist");
}

int fail_type(PlatformCall call) {
  return fail(CONFD_ERR_BADTYPE, "the value is not of the type of " + std::string(to_string(call)));
}

std::string& last_error() {
  static std::string text;
  return text;
}

}  // namespace tarnd::confd
