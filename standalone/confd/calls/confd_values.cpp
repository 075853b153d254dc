// Values and keypaths: printing them, freeing their memory.

#include <algorithm>
#include <cstddef>
#include <string>

#include "confd_lib.h"
#include "standalone/confd/call.h"
#include "standalone/confd/errors.h"
#include "standalone/confd/print.h"
#include "standalone/confd/values.h"

namespace tarnd::confd {
namespace {

// Writes as much of the text as fits, and returns the length of all of it, as snprintf does.
int write_text(const std::string& text, char* buf, int size) {
  if (size > 0) {
    const std::size_t copied = std::min(text.size(), static_cast<std::size_t>(size) - 1);
    std::copy_n(text.data(), copied, buf);
    buf[copied] = '\0';
  }
  return static_cast<int>(text.size());
}

}  // namespace
}  // namespace tarnd::confd

using tarnd::PlatformCall;

int confd_pp_value(char* buf, int bufsiz, const confd_value_t* v) {
  tarnd::enter_platform_call(PlatformCall::confd_pp_value);
  return tarnd::confd::write_text(tarnd::confd::value_text(*v), buf, bufsiz);
}

int confd_pp_kpath(char* buf, int bufsiz, const confd_hkeypath_t* hkeypath) {
  tarnd::enter_platform_call(PlatformCall::confd_pp_kpath);
  return tarnd::confd::write_text(tarnd::confd::keypath_text(*hkeypath), buf, bufsiz);
}

int confd_val2str(struct confd_type* type, const confd_value_t* v, char* buf, int bufsiz) {
  using tarnd::confd::fail;
  if (!tarnd::confd::enter(PlatformCall::confd_val2str)) return CONFD_ERR;
  if (type == nullptr || v == nullptr) {
    return fail(CONFD_ERR_PROTOUSAGE, "a type and a value are needed");
  }
  const auto text = tarnd::confd::value_text(*type->leaf, *v);
  if (!text.has_value()) {
    return fail(CONFD_ERR_BADTYPE, "the value is not of the type of '" + type->leaf->name + "'");
  }
  return tarnd::confd::write_text(*text, buf, bufsiz);
}

void confd_free_value(confd_value_t* v) {
  tarnd::enter_platform_call(PlatformCall::confd_free_value);
  if (v != nullptr) tarnd::confd::release(*v);
}
