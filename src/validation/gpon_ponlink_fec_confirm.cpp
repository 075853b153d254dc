#include "gpon_ponlink_fec_confirm.h"

#include <array>
#include <cstdio>
#include <cstdlib>

#include "base.h"
#include "confd_cdb.h"
#include "gpon_vald_trace_itf.h"
#include "middleware/qzmw.h"
#include "session/qzconfd_session.h"
#include "validation_guards.h"

const char* FEC_WARN_MSG =
    "The change in FEC configuration will result in temporary data loss for all users of this PON "
    "link.";

namespace {

constexpr const char* kValidatorName = "ponlink_fec_confirmation";
constexpr const char* kConfdUnreadable = "Failed accessing confd data.";
constexpr std::size_t kTextSize = 8192;
constexpr int kFaultKind = 1;

// A request on another leaf is a fault of the data model; the daemon does not go on with it.
[[noreturn]] void end_on_invalid_tag(int line) {
  qzmw_print_backtrace();
  qzmw_gen_fault(kFaultKind, kValidatorName, __FILE__, line, "XMLTAG is invalid");
  std::exit(EXIT_FAILURE);
}

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
      return "xgspon";
    case base_gpon:
      return "gpon";
    default:
      return nullptr;
  }
}

std::int32_t reject_unreadable(confd_trans_ctx* tctx) {
  confd_trans_seterr(tctx, "%s", kConfdUnreadable);
  return CONFD_ERR;
}

std::int32_t ask_to_confirm(confd_trans_ctx* tctx) {
  std::array<char, kTextSize> text;
  std::snprintf(text.data(), text.size(), "%s", FEC_WARN_MSG);
  confd_trans_seterr(tctx, "%s", text.data());
  return CONFD_VALIDATION_WARN;
}

}  // namespace

std::int32_t ponlink_fec_confirmation(std::int32_t /*sock*/, confd_trans_ctx* tctx,
                                      confd_hkeypath_t* keypath, confd_value_t* newval) {
  const valid::ValidationTrace trace(kValidatorName);
  if (fec_leaf_name(CONFD_GET_XMLTAG(&(keypath->v[0][0]))) == nullptr) {
    end_on_invalid_tag(__LINE__);
  }
  std::string interface_path;
  std::string fec_path;
  if (!get_interface_path(keypath, interface_path) ||
      !get_fec_path(keypath, interface_path, fec_path)) {
    return trace.end(reject_unreadable(tctx));
  }

  const valid::ConfigSession session(tctx, valid::ConfigSession::AfterFailedStart::kLeave);
  if (!session.open()) {
    const std::int32_t answer = reject_unreadable(tctx);
    qzconfd_config_session_end(tctx->vcb_opaque);  // what failed to open is ended all the same
    return trace.end(answer);
  }
  // A new interface carries no traffic yet. One that cannot be looked up counts as new.
  if (cdb_exists(session.socket(), "%s", interface_path.c_str()) != 1) {
    VALID_TRACE_IF(kTraceDetail, "%s doesn't exist. FEC didn't change.", fec_path.c_str());
    return trace.end(CONFD_OK);
  }
  int committed = 0;
  const int result = cdb_get_bool(session.socket(), &committed, "%s", fec_path.c_str());
  if (result < 0) {
    VALID_TRACE(kTraceFlow, "cdb_sock=%d ret = %d", session.socket(), result);
    return trace.end(reject_unreadable(tctx));
  }
  if (CONFD_GET_BOOL(newval) != committed) {
    const std::int32_t answer = ask_to_confirm(tctx);
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
  path = std::string("/config/interface/") + list + "{1 " + std::to_string(slot) + " " +
         std::to_string(port) + "}";
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
