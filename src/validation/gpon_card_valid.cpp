#include "gpon_card_valid.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "base.h"
#include "card/fm_card.h"
#include "gpon_bw_limit.h"
#include "gpon_capabilities.h"
#include "gpon_config_modify.h"
#include "gpon_itf_grp_validation.h"
#include "gpon_itf_valid.h"
#include "gpon_line_profile_confirm.h"
#include "gpon_link_mode_validation.h"
#include "gpon_onu_gateway_ip.h"
#include "gpon_onu_gem_check.h"
#include "gpon_onu_password_valid.h"
#include "gpon_onu_rg_profile_validation.h"
#include "gpon_onu_snmp_rt_confirm.h"
#include "gpon_ponlink_fec_confirm.h"
#include "gpon_rg_profile_validation.h"
#include "gpon_sip_agent_validation.h"
#include "gpon_tr069_profile_validation.h"
#include "gpon_vald_trace_itf.h"
#include "gpon_vlan_limit.h"
#include "gpon_vlan_match.h"
#include "gpon_voip_media_profile_validation.h"
#include "session/qzconfd_session.h"
#include "valid_service_port.h"
#include "validation_guards.h"
#include "validation_texts.h"

namespace {

constexpr const char* kValidationPoint = "gpon_validation_check";
constexpr const char* kFmInitFailed =
    "Cannot initialize tarnd confd validation lib. Error in fm_init\n";
constexpr const char* kFmLocalSlotFailed =
    "Cannot initialize tarnd confd validation lib. Error in fm_local_slot\n";

/// A validator. It reads the transaction through the MAAPI socket and the context, checks the node
/// at the keypath, and sets the user's text in the context unless it returns CONFD_OK.
using Validator = std::int32_t (*)(std::int32_t sock, confd_trans_ctx* tctx,
                                   confd_hkeypath_t* keypath, confd_value_t* newval);

struct Request {
  Validator validator;
  const char* name;
};

// A request may be the beginning of a name; the first entry that matches is taken, so the order
// matters.
constexpr Request kRequests[] = {
    {validate_max_bandwidth_ponlink, "onu_bw_check"},
    {validate_max_bandwidth_global, "ponlink_bw_check"},
    {validate_config_modify, "config_modified_check"},
    {validate_onu_gateway_ip, "onu_gateway_ip_check"},
    {validate_vlan_match, "vlan_match_check"},
    {validate_vlan_limit, "vlan_limit_check"},
    {validate_onu_pwd_sn_unique, "onu_pwd_sn_unique_check"},
    {validate_onu_gem_check, "onu_gem_check"},
    {ponlink_fec_confirmation, "fec_confirmation_warning"},
    {line_profile_confirmation, "line_confirmation_warning"},
    {rg_profile_confirmation, "rg_profile_confirmation_warning"},
    {tr069_profile_confirmation, "tr069_profile_confirmation_warning"},
    {tr069_profile_password_length_check_func, "tr069_profile_password_length_check"},
    {rg_profile_ssid_unique_check_func, "rg_profile_ssid_unique_check"},
    {validate_sp_gem_check, "sp_gem_check"},
    {service_port_global_validation, "service_port_global_validation"},
    {service_port_delete_all_warning, "service_port_delete_all_warning_check"},
    {pon_mode_validation, "pon_mode_validation"},
    {onu_snmp_rt_confirmation, "onu_snmp_rt_warn"},
    {sip_agent_profile_confirmation, "sip_agent_profile_confirmation_warning"},
    {validate_itf_grp, "itf_grp_validation"},
    {validate_itf_gpon, "interface_gpon_validation"},
    {validate_itf_xgspon, "interface_xgs_validation"},
    {voip_media_profile_confirmation, "voip_media_profile_confirmation_warning"},
    {validate_one_shot_prov, "one_shot_prov_check"},
    {validate_rg_prof_one_shot, "rg_prof_one_shot_check"},
};

bool read_do_bw_check(const fm_slot_t& slot) {
  bool enabled = true;
  fm_scalar_card_tarnd_do_bw_check(&slot, &enabled);
  return enabled;
}

std::uint32_t count_of(fm_board_count_t board_count) {
  return board_count == nullptr ? 0 : board_count(0);
}

void read_capabilities(const fm_slot_t& slot) {
  set_do_bw_check(read_do_bw_check(slot));
  set_num_onus_per_ponlink(
      count_of(fm_oper_card_tarnd_get_max_num_onu_per_ponlink_from_board(&slot)));

  std::uint32_t ponlinks = count_of(fm_oper_card_tarnd_get_max_num_ponlink_from_board(&slot));
  set_num_ponlinks(ponlinks);
  // A card that does not report how many of its links it manages, manages all.
  fm_scalar_card_tarnd_manageable_pon_links(&slot, &ponlinks);
  set_num_manageable_ponlinks(ponlinks);
}

Validator find_validator(const char* request) {
  const std::size_t length = std::strlen(request);
  for (const Request& entry : kRequests) {
    if (std::strncmp(request, entry.name, length) == 0) {
      return entry.validator;
    }
  }
  return nullptr;
}

// One-shot provisioning

constexpr const char* kOnus = "/config/interface/gpon[chassis-id=1 and slot-id=1]/onu";
constexpr const char* kRgProfile = "rg-profile";
constexpr int kDefaultChunkSize = 0;

constexpr const char* kNotApplied =
    "The rg-one-shot-prov configuration will not be applied automatically to all ONUs using "
    "rg-profile. You shall force rg-one-shot-prov provision using the command 'rg-reprovision' "
    "available on the onu configuration tree.";

bool is_rg_profile_in_use(int sock, const confd_trans_ctx* tctx) {
  valid::Query onus(sock, tctx, kOnus, kDefaultChunkSize, kRgProfile);
  while (const confd_query_result* chunk = onus.next_chunk()) {
    for (int i = 0; i < chunk->nresults; ++i) {
      VALID_TRACE(kTraceFlow, "result %d:\n", chunk->offset + i);
      for (int selected = 0; selected < chunk->nelements; ++selected) {
        const confd_tag_value_t* const tv = &chunk->results[i].tv[selected];
        if (CONFD_GET_TAG_VALUE(tv)->type != C_NOEXISTS) {
          return true;
        }
        VALID_TRACE_IF(kTraceFlow, " %s: %s\n", confd_hash2str(CONFD_GET_TAG_TAG(tv)),
                       valid::value_text(CONFD_GET_TAG_VALUE(tv)).c_str());
      }
    }
  }
  if (onus.failed()) {
    VALID_TRACE(kTraceFlow, "query failed for onu. err=%s", confd_lasterr());
    return true;  // better one warning too many
  }
  return false;
}

}  // namespace

int lib_init() {
  if (fm_init() != 0) {
    std::fputs(kFmInitFailed, stderr);
    return -1;
  }
  fm_slot_t slot{};
  if (fm_local_slot(&slot) != 0) {
    std::fputs(kFmLocalSlotFailed, stderr);
    return -1;
  }
  read_capabilities(slot);
  return 0;
}

int get_validation_point(char* name, int size) {
  std::snprintf(name, static_cast<std::size_t>(std::max(size, 0)), "%s", kValidationPoint);
  return 0;
}

int validate(confd_trans_ctx* tctx, confd_hkeypath_t* keypath, confd_value_t* newval) {
  const std::int32_t sock = qzconfd_maapi_socket_get(tctx->vcb_opaque);
  const Validator validator = find_validator(tctx->validate_opaque);
  if (validator == nullptr) {
    return CONFD_OK;
  }
  try {
    return validator(sock, tctx, keypath, newval);
  } catch (...) {
    return CONFD_ERR;  // the daemon must not see an exception
  }
}

int lib_finish() {
  return 0;
}

std::int32_t validate_one_shot_prov(std::int32_t maapi_sock, confd_trans_ctx* tctx,
                                    confd_hkeypath_t* keypath, confd_value_t* /*newval*/) {
  const valid::ValidationTrace trace("validate_one_shot_prov");
  VALID_TRACE_IF(kTraceFlow, "Validating keypath: %s", valid::keypath_text(keypath).c_str());

  std::uint8_t changed = 0;
  maapi_keypath_diff_iterate(maapi_sock, tctx->thandle, diff_iter, 0, &changed, "%h", keypath);
  if (changed == 0) {
    return trace.end(CONFD_OK);
  }
  VALID_TRACE(kTraceFlow, "rg-one-shot-prov has changed!");
  if (!is_rg_profile_in_use(maapi_sock, tctx)) {
    return trace.end(CONFD_OK);
  }
  confd_trans_seterr(tctx, kNotApplied);
  return trace.end(CONFD_VALIDATION_WARN);
}

maapi_iter_ret diff_iter(confd_hkeypath_t* kp, maapi_iter_op op, confd_value_t* oldv,
                         confd_value_t* newv, void* state) {
  VALID_TRACE_IF(kTraceFlow, "Validating keypath: %s (op=%d, oldv:%p, newv:%p)",
                 valid::keypath_text(kp).c_str(), static_cast<int>(op), static_cast<void*>(oldv),
                 static_cast<void*>(newv));
  if (op == MOP_MODIFIED) {
    return ITER_RECURSE;
  }
  if (op != MOP_CREATED && op != MOP_DELETED) {
    return ITER_CONTINUE;
  }
  const confd_value_t* const last = &kp->v[0][0];
  if (last->type != C_XMLTAG) {
    return ITER_RECURSE;  // a list entry
  }
  if (CONFD_GET_XMLTAG(last) != base_rg_one_shot_prov) {
    return ITER_CONTINUE;
  }
  *static_cast<std::uint8_t*>(state) = 1;
  return ITER_STOP;
}
