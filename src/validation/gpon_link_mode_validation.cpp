#include "gpon_link_mode_validation.h"

#include <string>

#include "gpon_vald_trace_itf.h"
#include "pon_link.h"
#include "user_answers.h"
#include "validation_texts.h"

namespace {

enum OperationMode : std::int32_t { kGpon = 0, kXgspon = 1, kCombo = 2 };

std::string mode_name(std::int32_t mode) {
  switch (mode) {
    case kXgspon:
      return "xgspon";
    case kCombo:
      return "combo";
    case kGpon:
      return "gpon";
    default:
      return "";
  }
}

std::string pon_name(const confd_hkeypath_t* keypath) {
  const std::uint32_t chassis = CONFD_GET_UINT32(&keypath->v[1][0]);
  const std::uint32_t slot = CONFD_GET_UINT32(&keypath->v[1][1]);
  const std::uint32_t port = CONFD_GET_UINT32(&keypath->v[1][2]);
  return valid::link_keys(chassis, slot, port);
}

std::string refusal(const std::string& pon, const std::string& mode) {
  return "It's not possible to change the operation mode of PON " + pon + " to " + mode +
         ". Please remove all ONUs associated with it before.\n";
}

std::string notice(const std::string& pon, const std::string& mode) {
  return "WARNING: " + mode + " mode configured for all ONUs belonging to PON " + pon +
         ". Only ONUs operating in this mode will work properly.\n";
}

}  // namespace

std::int32_t pon_mode_validation(std::int32_t sock, confd_trans_ctx* tctx,
                                 confd_hkeypath_t* keypath, confd_value_t* newMode) {
  VALID_TRACE_IF(kTraceDetail, "Keypath: %s", valid::keypath_text(keypath).c_str());

  const std::string pon = pon_name(keypath);
  const std::string mode = mode_name(CONFD_GET_ENUM_VALUE(newMode));

  const std::string onu_list = "/config/interface/xgspon{" + pon + "}/onu";
  const int onus = maapi_num_instances(sock, tctx->thandle, "%s", onu_list.c_str());
  VALID_TRACE(kTraceDetail, "There are %d ONUS associated with Pon Link %s", onus, pon.c_str());
  // If the number cannot be read, it is negative, and the change is rejected, too.
  if (onus != 0) {
    return valid::reject(tctx, refusal(pon, mode).c_str());
  }
  const std::string session = std::to_string(tctx->uinfo->usid);
  maapi_prio_message(sock, session.c_str(), notice(pon, mode).c_str());
  return CONFD_OK;
}
