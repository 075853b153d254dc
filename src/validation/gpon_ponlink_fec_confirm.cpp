#include "gpon_ponlink_fec_confirm.h"

#include "base.h"
#include "confd_cdb.h"
#include "gpon_vald_trace_itf.h"
#include "model_fault.h"
#include "pon_link.h"
#include "session/qzconfd_session.h"
#include "user_answers.h"
#include "validation_guards.h"
#include "validation_texts.h"

const char* FEC_WARN_MSG =
    "The change in FEC configuration will result in temporary data loss for all users of this PON "
    "link.";

namespace {

constexpr const char* kValidatorName = "ponlink_fec_confirmation";
constexpr std::uint32_t kChassis = 1;  // regardless of the keypath

const char* fec_leaf_name(std::uint32_t tag) {
  switch (tag) {
    case base_downstream_fec:
      return "downstream-fec";
    case base_upstream_fec:
      return "upstream-fec";
    default:
      return nullptr;
  }
}

const char* interface_list_name(std::uint32_t tag) {
  switch (tag) {
    case base_xgspon:
      return valid::kXgsponList;
    case base_gpon:
      return valid::kGponList;
    default:
      return nullptr;
  }
}

}  // namespace

std::int32_t ponlink_fec_confirmation(std::int32_t /*sock*/, confd_trans_ctx* tctx,
                                      confd_hkeypath_t* keypath, confd_value_t* newval) {
  const valid::ValidationTrace trace(kValidatorName);
  if (fec_leaf_name(CONFD_GET_XMLTAG(&(keypath->v[0][0]))) == nullptr) {
    valid::end_on_model_fault({__FILE__, kValidatorName, __LINE__}, valid::kInvalidTag);
  }
  std::string interface_path;
  std::string fec_path;
  if (!get_interface_path(keypath, interface_path) ||
      !get_fec_path(keypath, interface_path, fec_path)) {
    return trace.end(valid::reject(tctx, valid::kConfdUnreadable));
  }

  const valid::ConfigSession session(tctx, valid::ConfigSession::AfterFailedStart::kLeave);
  if (!session.open()) {
    const std::int32_t answer = valid::reject(tctx, valid::kConfdUnreadable);
    qzconfd_config_session_end(tctx->vcb_opaque);  // ends a session that failed to open, too
    return trace.end(answer);
  }
  // A new interface carries no traffic yet. If the look-up fails, the interface counts as new.
  if (cdb_exists(session.socket(), "%s", interface_path.c_str()) != 1) {
    VALID_TRACE_IF(kTraceDetail, "%s doesn't exist. FEC didn't change.", fec_path.c_str());
    return trace.end(CONFD_OK);
  }
  int committed = 0;
  const int result = cdb_get_bool(session.socket(), &committed, "%s", fec_path.c_str());
  if (result < 0) {
    VALID_TRACE(kTraceFlow, "cdb_sock=%d ret = %d", session.socket(), result);
    return trace.end(valid::reject(tctx, valid::kConfdUnreadable));
  }
  if (CONFD_GET_BOOL(newval) != committed) {
    const std::int32_t answer =
        valid::ask_to_confirm(tctx, valid::formatted("%s", FEC_WARN_MSG).c_str());
    VALID_TRACE_IF(kTraceDetail, "%s FEC did change.", fec_path.c_str());
    return trace.end(answer);
  }
  VALID_TRACE_IF(kTraceDetail, "%s FEC didn't change.", fec_path.c_str());
  return trace.end(CONFD_OK);
}

bool get_interface_path(const confd_hkeypath_t* keypath, std::string& path) {
  const std::uint32_t slot = CONFD_GET_UINT32(&keypath->v[1][1]);
  const std::uint32_t port = CONFD_GET_UINT32(&keypath->v[1][2]);
  const char* const list = interface_list_name(CONFD_GET_XMLTAG(&keypath->v[2][0]));
  if (list == nullptr) {
    return false;
  }
  path =
      std::string("/config/interface/") + list + "{" + valid::link_keys(kChassis, slot, port) + "}";
  return true;
}

bool get_fec_path(const confd_hkeypath_t* keypath, const std::string& base, std::string& path) {
  const char* const leaf = fec_leaf_name(CONFD_GET_XMLTAG(&keypath->v[0][0]));
  if (leaf == nullptr) {
    return false;
  }
  path = base + "/" + leaf;
  return true;
}
