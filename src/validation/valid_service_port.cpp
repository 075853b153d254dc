#include "valid_service_port.h"

#include <algorithm>
#include <array>
#include <optional>

#include "base.h"
#include "cl_elapsed_time.h"
#include "confd_cdb.h"
#include "gpon_vald_trace_itf.h"
#include "service_port_batches.h"
#include "service_port_gem.h"
#include "user_answers.h"
#include "validation_guards.h"
#include "validation_texts.h"

const char* SP_DEL_ALL_WARN_MSG =
    "All Service Ports are being removed causing traffic stop for all ONUs. Are you sure you want "
    "to proceed?";

namespace {

constexpr std::array<const char*, 2> kLinkLists{"/config/interface/gpon/",
                                                "/config/interface/xgspon/"};

// A card that reports an absurd limit does not get the memory for it.
constexpr std::uint32_t kMostReserved = 65536;

constexpr const char* kOnu = "/config/interface/%s{%s}/onu{%d}";
constexpr const char* kOnuLineProfile =
    "/config/interface/%s{%s}/onu{%d}/profile-references/line-profile";

constexpr const char* kOnuNotConfigured =
    "Service-port [%u] ONU [%d] was not configured on interface %s [%s]";

std::int32_t vlan_or_none(const confd_value_t& value) {
  return value.type == C_INT32 ? CONFD_GET_INT32(&value) : valid::kNoVlan;
}

// The word for a change in the trace; null if the operation is no change.
const char* change_name(maapi_iter_op op) {
  switch (op) {
    case MOP_CREATED:
      return "created";
    case MOP_MODIFIED:
    case MOP_VALUE_SET:
      return "modified";
    case MOP_DELETED:
      return "deleted";
    default:
      return nullptr;
  }
}

bool is(limid_type_t type, limid_type_t expected) {
  return limid_type_compare(type, expected) != 0;
}

}  // namespace

// Reading service ports

int service_port_get_leafs(confd_value_t* values, std::uint32_t& sp, std::string& interface_name,
                           std::uint32_t& onu, std::uint32_t& gem, std::int32_t& match_vlan,
                           std::int32_t& action_vlan) {
  fm_port_type link{};
  if (get_ponlink_type(values, &link) != 0) {
    VALID_TRACE(kTraceFlow, "Error: Ponlink of GPON or XGSPON do not exist in confd.");
    return -1;
  }
  const valid::BranchPositions& branch =
      link == FM_PORT_TYPE_GPON ? valid::kGponPositions : valid::kXgsponPositions;
  // These names appear in the texts of the assertions below.
  const int SP_CONFD_VAL_OFFSET_ONU = branch.onu;
  const int SP_CONFD_VAL_OFFSET_GEM = branch.gem;
  confd_value_t* const name = &values[branch.interface_name];
  if (name->type != C_BUF || values[SP_CONFD_VAL_OFFSET_ONU].type != C_UINT32 ||
      values[SP_CONFD_VAL_OFFSET_GEM].type != C_UINT32 ||
      values[SP_CONFD_VAL_OFFSET_SP].type != C_UINT32) {
    return -1;
  }
  valid::set_blank_separated(interface_name, CONFD_GET_CBUFPTR(name));
  valid::free_interface_name(name);
  sp = CONFD_GET_UINT32(&values[SP_CONFD_VAL_OFFSET_SP]);
  onu = CONFD_GET_UINT32(&values[SP_CONFD_VAL_OFFSET_ONU]);
  gem = CONFD_GET_UINT32(&values[SP_CONFD_VAL_OFFSET_GEM]);
  match_vlan = vlan_or_none(values[SP_CONFD_VAL_OFFSET_MATCH_VLAN]);
  action_vlan = vlan_or_none(values[SP_CONFD_VAL_OFFSET_ACTION_VLAN]);
  VALID_TRACE_IF(kTraceDetail,
                 "SP %u (%s=%s, onu=%d, gem=%d) get leafs: match-vlan=%d, action-vlan=%d", sp,
                 branch.link, interface_name.c_str(), static_cast<int>(onu), static_cast<int>(gem),
                 match_vlan, action_vlan);
  return 0;
}

int sp_get_id(std::int32_t /*sock*/, confd_trans_ctx* /*tctx*/, const confd_hkeypath_t* keypath,
              std::uint32_t& sp) {
  VALID_TRACE_IF(kTraceFlow, "Retrieving information from service port from confd. Keypath: %s",
                 valid::keypath_text(keypath).c_str());
  if (keypath->len < 3 || keypath->v[1][0].type != C_XMLTAG) {
    VALID_TRACE_IF(kTraceFlow,
                   "Error reading service-port information from Confd. No supported keypath: %s",
                   valid::keypath_text(keypath).c_str());
    return -1;
  }
  const int sp_index = keypath->len - 3;
  if (CONFD_GET_XMLTAG(&keypath->v[sp_index + 1][0]) != base_service_port) {
    VALID_TRACE(kTraceFlow, "Invalid keypath received");
    return -1;
  }
  sp = CONFD_GET_UINT32(&keypath->v[sp_index][0]);
  return 0;
}

int sp_get_values(std::int32_t /*sock*/, confd_trans_ctx* /*tctx*/, const confd_hkeypath_t* keypath,
                  std::string& interface_name, std::uint32_t& onu, std::uint32_t& gem,
                  std::uint32_t sp, limid_type_t type, confd_tag_value_t* tv, int /*size*/) {
  const cl_ElapsedTime timer;
  VALID_TRACE_IF(kTraceFlow, "Retrieving information from service port from confd. Keypath: %s",
                 valid::keypath_text(keypath).c_str());
  const bool is_gpon = is(type, limid_type_gpon);
  if (!is_gpon && !is(type, limid_type_xgspon)) {
    VALID_TRACE(kTraceFlow, "Invalid limid to get service port values from confd");
    return -1;
  }
  const valid::BranchPositions& branch = is_gpon ? valid::kGponRequest : valid::kXgsponRequest;
  // These names appear in the texts of the assertions below.
  const int idx_svc_port = branch.interface_name;
  const int idx_onu = branch.onu;
  const int idx_gem = branch.gem;
  for (const int index : {idx_svc_port, idx_onu, idx_gem}) {
    if (CONFD_GET_TAG_VALUE(&tv[index])->type == C_NOEXISTS) {
      VALID_TRACE(kTraceFlow, "Error to get SP %u values from ConfD (err=%s)", sp, confd_lasterr());
      return -1;
    }
  }
  valid::set_blank_separated(interface_name,
                             CONFD_GET_CBUFPTR(CONFD_GET_TAG_VALUE(&tv[idx_svc_port])));
  onu = CONFD_GET_UINT32(CONFD_GET_TAG_VALUE(&tv[idx_onu]));
  gem = CONFD_GET_UINT32(CONFD_GET_TAG_VALUE(&tv[idx_gem]));
  valid::free_interface_name(CONFD_GET_TAG_VALUE(&tv[idx_svc_port]));
  VALID_TRACE_IF(kTraceDetail, "Took %d usecs to get SP %u (%s=%s, onu=%d, gem=%d) from ConfD",
                 static_cast<int>(timer.get_elapsed_time_usec()), sp, branch.link,
                 interface_name.c_str(), static_cast<int>(onu), static_cast<int>(gem));
  return 0;
}

// All service ports together

namespace {

// The model allows an entry without a branch, but none with both. Neither claims any traffic.
bool has_one_branch(const confd_value_t* values) {
  return valid::has_branch(values, valid::kGponPositions) !=
         valid::has_branch(values, valid::kXgsponPositions);
}

// Reads the object into `port`. Returns null, or the text of the trace record for a failure.
const char* validate_object(confd_value_t* values, valid::ServicePort& port, std::string& message,
                            MatchOverlapValidation& matches) {
  fm_port_type type{};
  if (get_ponlink_type(values, &type) != 0) {
    return "Failed to get PONLINK Type.";
  }
  if (service_port_get_leafs(values, port.id, port.interface_name, port.onu, port.gem,
                             port.match_vlan, port.action_vlan) != 0) {
    return "Failed to get leafs.";
  }
  if (service_port_validate(port.id, type, port.interface_name, port.onu, port.gem, port.match_vlan,
                            port.action_vlan, message, matches) != CONFD_OK) {
    return "Service Port Validation failed.";
  }
  return nullptr;
}

}  // namespace

std::int32_t service_port_global_validation(std::int32_t sock, confd_trans_ctx* tctx,
                                            confd_hkeypath_t* keypath, confd_value_t* /*newval*/) {
  const valid::ValidationTrace trace("service_port_global_validation");
  VALID_TRACE_IF(kTraceDetail, "Validating keypath: %s", valid::keypath_text(keypath).c_str());

  bool changed = false;
  if (maapi_keypath_diff_iterate(sock, tctx->thandle, iterate_detect_change_on_sp, 0, &changed,
                                 "%h", keypath) != CONFD_OK) {
    VALID_TRACE_IF(kTraceDetail, "Error iterating keypath: %s",
                   valid::keypath_text(keypath).c_str());
    return trace.end(CONFD_ERR);
  }
  return trace.end(changed ? validate_sp_global_validation(sock, tctx) : CONFD_OK);
}

maapi_iter_ret iterate_detect_change_on_sp(confd_hkeypath_t* keypath, maapi_iter_op op,
                                           confd_value_t* /*oldv*/, confd_value_t* /*newv*/,
                                           void* state) {
  auto* const changed = static_cast<bool*>(state);
  VALID_TRACE_IF(kTraceDetail, "Validating keypath: %s\n", valid::keypath_text(keypath).c_str());
  const char* const change = change_name(op);
  if (change == nullptr) {
    VALID_TRACE_IF(kTraceFlow,
                   "WARNING: Reached default case (service_port_global_validation service-port %s)",
                   valid::keypath_text(keypath).c_str());
    return ITER_CONTINUE;
  }
  VALID_TRACE_IF(kTraceDetail, "service-port %s %s\n", valid::keypath_text(keypath).c_str(),
                 change);
  if (op == MOP_DELETED) {
    return ITER_CONTINUE;  // removing a service port makes no conflict
  }
  *changed = true;
  return ITER_STOP;
}

std::int32_t validate_sp_global_validation(std::int32_t sock, confd_trans_ctx* tctx) {
  const std::uint32_t max = get_max_service_ports();
  MatchOverlapValidation matches;
  matches.reserve(std::min(max, kMostReserved));
  valid::ServicePortBatches batches(sock, tctx);
  std::uint32_t installed = 0;
  std::int32_t result = CONFD_OK;
  std::string message;

  // Outside the loop, so that their memory is used again.
  valid::ServicePort port;
  std::string conflict;
  int count = 0;
  while ((count = batches.next()) > 0) {
    for (int i = 0; i < count; ++i) {
      confd_value_t* const values = batches.object(i);
      if (!has_one_branch(values)) {
        continue;
      }
      conflict.clear();
      if (const char* const failure = validate_object(values, port, conflict, matches)) {
        VALID_TRACE(kTraceFlow, "%s", failure);
        result = CONFD_ERR;
        if (message.empty()) {
          message = conflict;
        }
        break;  // the next batch is still read: it counts towards the limit
      }
      ++installed;
    }
  }

  if (installed > max) {
    message = "Service-port limit exceeded: Installed " + std::to_string(installed) + " of " +
              std::to_string(max) + " allowed\n";
  } else if (count == 0 && result == CONFD_OK) {
    return CONFD_OK;
  }
  return valid::reject(tctx, message.c_str());
}

std::int32_t service_port_validate(std::uint32_t sp, fm_port_type type,
                                   const std::string& interface_name, std::uint32_t onu,
                                   std::uint32_t gem, std::int32_t match_vlan,
                                   std::int32_t /*action_vlan*/, std::string& message,
                                   MatchOverlapValidation& matches) {
  zlog_category_t* const category = valid::enabled_trace_cat(kTraceEntry);
  VALID_TRACE_TO(category, static_cast<const char*>(__func__), kTraceEntry,
                 "Validate SP %u (%s=%s, onu=%d, gem=%d) Match Vlan %d begin.", sp,
                 ponlink_type_name(type), interface_name.c_str(), static_cast<int>(onu),
                 static_cast<int>(gem), match_vlan);
  if (matches.ServicePortMatchOverlaps(sp, message, type, interface_name, onu, gem, match_vlan)) {
    return CONFD_ERR;
  }
  VALID_TRACE_TO(category, static_cast<const char*>(__func__), kTraceEntry, "Validate SP %u end.",
                 sp);
  return CONFD_OK;
}

std::int32_t service_port_delete_all_warning(std::int32_t sock, confd_trans_ctx* tctx,
                                             confd_hkeypath_t* /*keypath*/,
                                             confd_value_t* /*newval*/) {
  const valid::ValidationTrace trace("service_port_delete_all_warning");
  valid::ConfigSession session(tctx, valid::ConfigSession::AfterFailedStart::kEnd);
  if (!session.open()) {
    return trace.end(CONFD_OK);
  }
  const int in_running = cdb_num_instances(session.socket(), valid::kServicePorts);
  const int in_candidate = maapi_num_instances(sock, tctx->thandle, valid::kServicePorts);
  // Without ONUs the card returns to its factory settings, and no traffic stops.
  const bool is_load_factory = get_number_onus_in_candidate(sock, tctx) == 0;
  VALID_TRACE(kTraceFlow,
              "num_inst_in_running = %d, num_inst_in_candidate = %d, is_load_factory = %d.",
              in_running, in_candidate, is_load_factory ? 1 : 0);
  session.end();

  // A single service port may be removed without a question.
  if (in_candidate != 0 || in_running <= 1 || is_load_factory) {
    return trace.end(CONFD_OK);
  }
  return trace.end(
      valid::ask_to_confirm(tctx, valid::formatted("%s", SP_DEL_ALL_WARN_MSG).c_str()));
}

int get_number_onus_in_candidate(std::int32_t sock, confd_trans_ctx* tctx) {
  int onus = 0;
  for (const char* const links : kLinkLists) {
    valid::Cursor cursor(sock, tctx, links);
    while (cursor.next()) {
      maapi_cursor& link = cursor.entry();
      const int onus_on_link = maapi_num_instances(sock, tctx->thandle, "%s{%*x}/onu", links,
                                                   link.n, static_cast<confd_value_t*>(link.keys));
      if (onus_on_link < 0) {
        VALID_TRACE(kTraceFlow, "Failed to get number of ONUs. (err: %s).", confd_lasterr());
        continue;
      }
      onus += onus_on_link;
    }
  }
  return onus;
}

// Each service port by itself

std::int32_t validate_sp_gem_check(std::int32_t sock, confd_trans_ctx* tctx,
                                   confd_hkeypath_t* keypath, confd_value_t* /*newval*/) {
  const valid::ValidationTrace trace("validate_sp_gem_check");
  VALID_TRACE_IF(kTraceDetail, "validate_sp_gem_check: Validating keypath: %s",
                 valid::keypath_text(keypath).c_str());

  sp_gem_check_state state{true, sock, tctx};
  const int iterated = maapi_keypath_diff_iterate(
      sock, tctx->thandle, iterate_sp_for_gem_check_validation, 0, &state, "%h", keypath);
  return trace.end(iterated == CONFD_OK && state.all_good ? CONFD_OK : CONFD_ERR);
}

maapi_iter_ret iterate_sp_for_gem_check_validation(confd_hkeypath_t* keypath, maapi_iter_op op,
                                                   confd_value_t* /*oldv*/, confd_value_t* /*newv*/,
                                                   void* state) {
  auto& [all_good, sock, tctx] = *static_cast<sp_gem_check_state*>(state);
  VALID_TRACE_IF(kTraceDetail, "Validating keypath: %s", valid::keypath_text(keypath).c_str());
  const char* const change = change_name(op);
  if (change == nullptr) {
    VALID_TRACE_IF(kTraceFlow, "WARNING: Reached default case (sp_gem_check service-port %s)",
                   valid::keypath_text(keypath).c_str());
    return ITER_CONTINUE;
  }
  VALID_TRACE_IF(kTraceDetail, "service-port %s %s\n", valid::keypath_text(keypath).c_str(),
                 change);
  if (op == MOP_DELETED) {
    return ITER_CONTINUE;
  }

  std::uint32_t sp = 0;
  if (sp_get_id(sock, tctx, keypath, sp) != 0) {
    VALID_TRACE(kTraceFlow, "Error reading sp id from confd");
    all_good = false;
    return ITER_STOP;
  }
  valid::ServicePortRequest request;
  if (!request.read(sock, tctx, sp)) {
    VALID_TRACE(kTraceFlow, "Error to get SP %u values from ConfD (err=%s)", sp, confd_lasterr());
    return ITER_STOP;  // a value that cannot be read does not reject the commit
  }
  if (request.type(valid::kGponRequest) == request.type(valid::kXgsponRequest)) {
    return ITER_CONTINUE;
  }
  const limid_type_t link =
      request.type(valid::kXgsponRequest) == C_NOEXISTS ? limid_type_gpon : limid_type_xgspon;
  std::string interface_name;
  std::uint32_t onu = 0;
  std::uint32_t gem = 0;
  if (sp_get_values(sock, tctx, keypath, interface_name, onu, gem, sp, link, request.values(),
                    request.size()) != 0) {
    VALID_TRACE(kTraceDetail, "error reading sp values from confd");
    all_good = false;
    return ITER_STOP;
  }
  VALID_TRACE_IF(kTraceDetail, "Validate SP %u (gpon=%s, onu=%d, gem=%d)", sp,
                 valid::slash_separated(interface_name).c_str(), static_cast<int>(onu),
                 static_cast<int>(gem));
  if (gem_check_single_sp(sock, tctx, onu, gem, sp, interface_name, link) != CONFD_OK) {
    all_good = false;
    return ITER_STOP;
  }
  return ITER_CONTINUE;
}

std::int32_t gem_check_single_sp(std::int32_t sock, confd_trans_ctx* tctx, std::uint32_t onu,
                                 std::uint32_t gem, std::uint32_t sp,
                                 const std::string& interface_name, limid_type_t type) {
  std::int32_t result = CONFD_OK;
  const char* link = "";
  if (is(type, limid_type_gpon)) {
    link = valid::kGponList;
  } else if (is(type, limid_type_xgspon)) {
    link = valid::kXgsponList;
  } else {
    VALID_TRACE(kTraceFlow, "Invalid limid to check gem from service port");
    result = CONFD_ERR;
  }
  const int onu_id = static_cast<int>(onu);

  if (maapi_exists(sock, tctx->thandle, kOnu, link, interface_name.c_str(), onu_id) == 0) {
    confd_trans_seterr(tctx, kOnuNotConfigured, sp, onu_id, link,
                       valid::slash_separated(interface_name).c_str());
    result = CONFD_ERR;
  }

  const std::string line_profile_path =
      valid::formatted(kOnuLineProfile, link, interface_name.c_str(), onu_id);
  if (!valid::line_profile_has_gem(sock, tctx, line_profile_path.c_str(), gem)) {
    result = valid::reject_missing_gem(tctx, sp, gem, onu);
  }
  return result;
}
