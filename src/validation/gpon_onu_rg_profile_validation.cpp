#include "gpon_onu_rg_profile_validation.h"

#include <cstddef>

#include "base.h"
#include "confd_cdb.h"
#include "gpon_vald_trace_itf.h"
#include "user_answers.h"
#include "validation_guards.h"
#include "validation_texts.h"

namespace {

constexpr const char* kOneShotSwitch = "/config/gpon{1/1}/rg-one-shot-prov";
constexpr const char* kNotProvisioned =
    "The rg-profile will not be provisioned automatically for this onu due to rg-one-shot-prov "
    "feature enabled. You shall force rg-profile reprovision using the command 'rg-reprovision' "
    "available on the onu configuration tree.";

/// Of a flag of 32 bits. On a big-endian card it is not the byte at the flag's address, but the
/// last.
std::uint8_t& lowest_byte(void* flag) {
  constexpr bool kIsBigEndian = __BYTE_ORDER__ == __ORDER_BIG_ENDIAN__;
  constexpr std::size_t kOffset = kIsBigEndian ? sizeof(std::int32_t) - 1 : 0;
  return static_cast<std::uint8_t*>(flag)[kOffset];
}

bool is_rg_profile_reference(const confd_hkeypath_t* keypath) {
  return CONFD_GET_XMLTAG(&keypath->v[0][0]) == base_rg_profile;
}

/// Sets `changed` to another number than 0 if the ONU has the node and it changed. Returns 0, or -1
/// with a text.
int find_change(std::int32_t sock, confd_trans_ctx* tctx, confd_hkeypath_t* keypath,
                std::int32_t& changed) {
  if (is_rg_profile_reference(keypath)) {
    return checkRgProfileChgValue(keypath, tctx, changed);
  }
  maapi_keypath_diff_iterate(sock, tctx->thandle, diff_iter_rg, 0, &changed, "%h", keypath);
  return CONFD_OK;
}

}  // namespace

std::int32_t validate_rg_prof_one_shot(std::int32_t maapi_sock, confd_trans_ctx* tctx,
                                       confd_hkeypath_t* keypath, confd_value_t* /*newval*/) {
  const valid::ValidationTrace trace("validate_rg_prof_one_shot");
  std::int32_t changed = 0;
  VALID_TRACE(kTraceFlow, "rg-profile one-shot-prov validate.");
  if (maapi_exists(maapi_sock, tctx->thandle, kOneShotSwitch) != 1) {
    VALID_TRACE(kTraceFlow, "The rg-one-shot-prov is disabled.");
    return trace.end(CONFD_OK);
  }
  if (find_change(maapi_sock, tctx, keypath, changed) != CONFD_OK) {
    return trace.end(CONFD_ERR);
  }
  if (changed == 0) {
    return trace.end(CONFD_OK);
  }
  VALID_TRACE(kTraceFlow, "rg-profile was exchanged or override parameters were changed.");
  return trace.end(valid::ask_to_confirm(tctx, kNotProvisioned));
}

maapi_iter_ret diff_iter_rg(confd_hkeypath_t* kp, maapi_iter_op op, confd_value_t* oldv,
                            confd_value_t* newv, void* state) {
  if (valid::trace_enabled(kTraceFlow)) {
    VALID_TRACE_IF(kTraceDetail, "Validating keypath: %s (op=%d, oldv:%p, newv:%p)",
                   valid::keypath_text(kp).c_str(), static_cast<int>(op), static_cast<void*>(oldv),
                   static_cast<void*>(newv));
  }
  const bool is_change = op >= MOP_CREATED && op <= MOP_VALUE_SET;
  lowest_byte(state) = is_change ? 1 : 0;
  return is_change ? ITER_STOP : ITER_CONTINUE;
}

int checkRgProfileChgValue(confd_hkeypath_t* keypath, confd_trans_ctx* tctx, int& exists) {
  const std::string path = valid::keypath_text(keypath);
  valid::ConfigSession session(tctx, valid::ConfigSession::AfterFailedStart::kLeave);
  if (session.open()) {
    exists = cdb_exists(session.socket(), "%s", path.c_str());
    session.end();
    if (exists >= 0) {
      return CONFD_OK;
    }
  }
  return valid::reject(tctx, valid::kConfdUnreadable);
}
