#include "gpon_config_modify.h"

#include "base.h"
#include "validation_guards.h"

namespace {

constexpr const char* kChangeNotAllowed = "Changing already committed %s is not allowed.";
constexpr const char* kProfile = "profile";
constexpr const char* kServicePort = "service port";

const char* label_of(const confd_hkeypath_t* keypath) {
  const confd_value_t& node = keypath->v[0][0];
  const bool is_service_port =
      node.type == C_XMLTAG && CONFD_GET_XMLTAG(&node) == base_service_port;
  return is_service_port ? kServicePort : kProfile;
}

}  // namespace

std::int32_t validate_config_modify(std::int32_t sock, confd_trans_ctx* tctx,
                                    confd_hkeypath_t* keypath, confd_value_t* /*newval*/) {
  const valid::ValidationTrace trace("validate_config_modify");

  std::uint8_t modified = 0;
  // If the iteration fails, no change is found and the commit is accepted.
  maapi_keypath_diff_iterate(sock, tctx->thandle, diffIter, 0, &modified, "%h", keypath);
  if (modified == 0) {
    return trace.end(CONFD_OK);
  }
  confd_trans_seterr(tctx, kChangeNotAllowed, label_of(keypath));
  return trace.end(CONFD_ERR);
}

maapi_iter_ret diffIter(confd_hkeypath_t* /*keypath*/, maapi_iter_op op, confd_value_t* /*oldv*/,
                        confd_value_t* /*newv*/, void* state) {
  auto* const modified = static_cast<std::uint8_t*>(state);
  if (op == MOP_MODIFIED) {
    *modified = 1;
  }
  // Nothing inside a created or deleted entry is a modification.
  return *modified != 0 ? ITER_STOP : ITER_CONTINUE;
}
