#include "valid_service_port.h"

#include <algorithm>
#include <array>
#include <cstdio>

#include "base.h"
#include "card/fm_card.h"
#include "cl_elapsed_time.h"
#include "confd_cdb.h"
#include "confd_get_str.h"
#include "gpon_vald_trace_itf.h"
#include "service_port_batches.h"
#include "validation_guards.h"

const char* SP_DEL_ALL_WARN_MSG =
    "All Service Ports are being removed causing traffic stop for all ONUs. Are you sure you want "
    "to proceed?";

namespace {

constexpr const char* kGpon = "gpon";
constexpr const char* kXgspon = "xgspon";

constexpr const char* kServicePorts = "/config/service-port";
constexpr const char* kServicePort = "/base:config/service-port{%u}";
constexpr std::array<const char*, 2> kLinkLists{"/config/interface/gpon/",
                                                "/config/interface/xgspon/"};

constexpr std::uint32_t kDefaultMaxServicePorts = 4096;
constexpr std::int32_t kNoVlan = -1;
constexpr std::size_t kTextSize = 8192;

constexpr const char* kOnu = "/config/interface/%s{%s}/onu{%d}";
constexpr const char* kOnuLineProfile =
    "/config/interface/%s{%s}/onu{%d}/profile-references/line-profile";
constexpr const char* kLineProfileGem = "/config/profile/gpon/line-profile{%s}/gem{%d}/gem-id";

constexpr const char* kOnuNotConfigured =
    "Service-port [%u] ONU [%d] was not configured on interface %s [%s]";
constexpr const char* kGemNotConfigured =
    "Service-port [%u] gem [%d] was not configured to onu [%d]";

// The value array of an entry.

struct BranchPositions {
  const char* link;
  int interface_name;
  int onu;
  int gem;
};

constexpr BranchPositions kGponPositions{kGpon, SP_CONFD_VAL_OFFSET_GPON_INTERFACE,
                                         SP_CONFD_VAL_OFFSET_GPON_ONU,
                                         SP_CONFD_VAL_OFFSET_GPON_GEM};
constexpr BranchPositions kXgsponPositions{kXgspon, SP_CONFD_VAL_OFFSET_XGSPON_INTERFACE,
                                           SP_CONFD_VAL_OFFSET_XGSPON_ONU,
                                           SP_CONFD_VAL_OFFSET_XGSPON_GEM};

bool has(const confd_value_t* values, const BranchPositions& branch) {
  return values[branch.interface_name].type != C_NOEXISTS;
}

std::int32_t vlan_or_none(const confd_value_t& value) {
  return value.type == C_INT32 ? CONFD_GET_INT32(&value) : kNoVlan;
}

// The tagged request of an entry. Unlike the value array it has the GPON branch first.

constexpr BranchPositions kGponRequest{kGpon, 1, 3, 5};
constexpr BranchPositions kXgsponRequest{kXgspon, 10, 12, 14};

confd_tag_value_t container_begin(std::uint32_t tag) {
  confd_tag_value_t tv;
  CONFD_SET_TAG_XMLBEGIN(&tv, tag, base__ns);
  return tv;
}

confd_tag_value_t container_end(std::uint32_t tag) {
  confd_tag_value_t tv;
  CONFD_SET_TAG_XMLEND(&tv, tag, base__ns);
  return tv;
}

confd_tag_value_t leaf_to_read(std::uint32_t tag) {
  confd_tag_value_t tv;
  CONFD_SET_TAG_NOEXISTS(&tv, tag);
  CONFD_SET_TAG_NS(&tv, base__ns);
  return tv;
}

// Both branches of an entry. Frees the interface names that nobody took out of it.
class ServicePortRequest {
 public:
  ServicePortRequest() = default;
  ServicePortRequest(const ServicePortRequest&) = delete;
  ServicePortRequest& operator=(const ServicePortRequest&) = delete;
  ~ServicePortRequest() {
    valid::free_interface_name(CONFD_GET_TAG_VALUE(&values_[kGponRequest.interface_name]));
    valid::free_interface_name(CONFD_GET_TAG_VALUE(&values_[kXgsponRequest.interface_name]));
  }

  confd_tag_value_t* values() { return values_.data(); }
  [[nodiscard]] int size() const { return static_cast<int>(values_.size()); }

  [[nodiscard]] confd_vtype type(const BranchPositions& branch) const {
    return CONFD_GET_TAG_VALUE(&values_[branch.interface_name])->type;
  }

 private:
  std::array<confd_tag_value_t, 18> values_{{
      container_begin(base_gpon),
      leaf_to_read(base_id),
      container_begin(base_onu),
      leaf_to_read(base_id),
      container_begin(base_gem),
      leaf_to_read(base_gem_id),
      container_end(base_gem),
      container_end(base_onu),
      container_end(base_gpon),
      container_begin(base_xgspon),
      leaf_to_read(base_id),
      container_begin(base_onu),
      leaf_to_read(base_id),
      container_begin(base_gem),
      leaf_to_read(base_gem_id),
      container_end(base_gem),
      container_end(base_onu),
      container_end(base_xgspon),
  }};
};

// Interface names: with slashes for the user, with blanks as the keys of a path.

std::string replaced(std::string text, char from, char to) {
  std::replace(text.begin(), text.end(), from, to);
  return text;
}

std::string blank_separated(const char* name) {
  return name == nullptr ? std::string() : replaced(name, '/', ' ');
}

std::string slash_separated(const std::string& name) {
  return replaced(name, ' ', '/');
}

// The word for a change in the trace; null for an operation that is none.
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

const char* ponlink_type_name(fm_port_type type) {
  switch (type) {
    case FM_PORT_TYPE_GPON:
      return kGpon;
    case FM_PORT_TYPE_XGSPON:
      return kXgspon;
  }
  return "";
}

int get_ponlink_type(const confd_value_t* values, fm_port_type* type) {
  if (has(values, kGponPositions)) {
    *type = FM_PORT_TYPE_GPON;
    return 0;
  }
  if (!has(values, kXgsponPositions)) {
    return -1;
  }
  *type = FM_PORT_TYPE_XGSPON;
  return 0;
}

int service_port_get_leafs(confd_value_t* values, std::uint32_t& sp, std::string& interface_name,
                           std::uint32_t& onu, std::uint32_t& gem, std::int32_t& match_vlan,
                           std::int32_t& action_vlan) {
  if (!has(values, kGponPositions) && !has(values, kXgsponPositions)) {
    VALID_TRACE(kTraceFlow, "Error: Ponlink of GPON or XGSPON do not exist in confd.");
    return -1;
  }
  const BranchPositions& branch = has(values, kGponPositions) ? kGponPositions : kXgsponPositions;
  // The texts of the assertions below name these two positions.
  const int SP_CONFD_VAL_OFFSET_ONU = branch.onu;
  const int SP_CONFD_VAL_OFFSET_GEM = branch.gem;
  confd_value_t* const name = &values[branch.interface_name];
  if (name->type != C_BUF || values[SP_CONFD_VAL_OFFSET_ONU].type != C_UINT32 ||
      values[SP_CONFD_VAL_OFFSET_GEM].type != C_UINT32 ||
      values[SP_CONFD_VAL_OFFSET_SP].type != C_UINT32) {
    return -1;
  }
  interface_name = blank_separated(CONFD_GET_CBUFPTR(name));
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
  const BranchPositions& branch = is_gpon ? kGponRequest : kXgsponRequest;
  // The texts of the assertions below name these three positions.
  const int idx_svc_port = branch.interface_name;
  const int idx_onu = branch.onu;
  const int idx_gem = branch.gem;
  for (const int index : {idx_svc_port, idx_onu, idx_gem}) {
    if (CONFD_GET_TAG_VALUE(&tv[index])->type == C_NOEXISTS) {
      VALID_TRACE(kTraceFlow, "Error to get SP %u values from ConfD (err=%s)", sp, confd_lasterr());
      return -1;
    }
  }
  interface_name = blank_separated(CONFD_GET_CBUFPTR(CONFD_GET_TAG_VALUE(&tv[idx_svc_port])));
  onu = CONFD_GET_UINT32(CONFD_GET_TAG_VALUE(&tv[idx_onu]));
  gem = CONFD_GET_UINT32(CONFD_GET_TAG_VALUE(&tv[idx_gem]));
  valid::free_interface_name(CONFD_GET_TAG_VALUE(&tv[idx_svc_port]));
  VALID_TRACE_IF(kTraceDetail, "Took %d usecs to get SP %u (%s=%s, onu=%d, gem=%d) from ConfD",
                 static_cast<int>(timer.get_elapsed_time_usec()), sp, branch.link,
                 interface_name.c_str(), static_cast<int>(onu), static_cast<int>(gem));
  return 0;
}

std::uint32_t get_max_service_ports() {
  fm_slot_t slot{};
  std::uint32_t max = 0;
  fm_init();
  fm_local_slot(&slot);
  fm_scalar_card_tarnd_max_service_ports(&slot, &max);
  return max != 0 ? max : kDefaultMaxServicePorts;
}

// All service ports together

namespace {

// The model lets an entry have neither branch, and does not let it have both; such an entry claims
// no traffic.
bool has_one_branch(const confd_value_t* values) {
  return has(values, kGponPositions) != has(values, kXgsponPositions);
}

// Gives null, or the record for the trace.
const char* validate_object(confd_value_t* values, std::string& message,
                            MatchOverlapValidation& matches) {
  fm_port_type type{};
  if (get_ponlink_type(values, &type) != 0) {
    return "Failed to get PONLINK Type.";
  }
  std::uint32_t sp = 0;
  std::uint32_t onu = 0;
  std::uint32_t gem = 0;
  std::int32_t match_vlan = kNoVlan;
  std::int32_t action_vlan = kNoVlan;
  std::string interface_name;
  if (service_port_get_leafs(values, sp, interface_name, onu, gem, match_vlan, action_vlan) != 0) {
    return "Failed to get leafs.";
  }
  if (service_port_validate(sp, type, interface_name, onu, gem, match_vlan, action_vlan, message,
                            matches) != CONFD_OK) {
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
    return ITER_CONTINUE;  // a service port less brings no conflict
  }
  *changed = true;
  return ITER_STOP;
}

std::int32_t validate_sp_global_validation(std::int32_t sock, confd_trans_ctx* tctx) {
  const std::uint32_t max = get_max_service_ports();
  MatchOverlapValidation matches;
  valid::ServicePortBatches batches(sock, tctx);
  std::uint32_t installed = 0;
  std::int32_t result = CONFD_OK;
  std::string message;

  int count = 0;
  while ((count = batches.next()) > 0) {
    for (int i = 0; i < count; ++i) {
      confd_value_t* const values = batches.object(i);
      if (!has_one_branch(values)) {
        continue;
      }
      std::string conflict;
      if (const char* const failure = validate_object(values, conflict, matches)) {
        VALID_TRACE(kTraceFlow, "%s", failure);
        result = CONFD_ERR;
        if (message.empty()) {
          message = conflict;
        }
        break;  // the next batch is looked at nevertheless: it counts towards the limit
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
  confd_trans_seterr(tctx, "%s", message.c_str());
  return CONFD_ERR;
}

std::int32_t service_port_validate(std::uint32_t sp, fm_port_type type,
                                   const std::string& interface_name, std::uint32_t onu,
                                   std::uint32_t gem, std::int32_t match_vlan,
                                   std::int32_t /*action_vlan*/, std::string& message,
                                   MatchOverlapValidation& matches) {
  VALID_TRACE(kTraceEntry, "Validate SP %u (%s=%s, onu=%d, gem=%d) Match Vlan %d begin.", sp,
              ponlink_type_name(type), interface_name.c_str(), static_cast<int>(onu),
              static_cast<int>(gem), match_vlan);
  if (matches.ServicePortMatchOverlaps(sp, message, type, interface_name, onu, gem, match_vlan)) {
    return CONFD_ERR;
  }
  VALID_TRACE(kTraceEntry, "Validate SP %u end.", sp);
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
  const int in_running = cdb_num_instances(session.socket(), kServicePorts);
  const int in_candidate = maapi_num_instances(sock, tctx->thandle, kServicePorts);
  // Without any ONU the card goes back to its factory settings, and nobody's traffic stops.
  const bool is_load_factory = get_number_onus_in_candidate(sock, tctx) == 0;
  VALID_TRACE(kTraceFlow,
              "num_inst_in_running = %d, num_inst_in_candidate = %d, is_load_factory = %d.",
              in_running, in_candidate, is_load_factory ? 1 : 0);
  session.end();

  // One lone service port may go without a question.
  if (in_candidate != 0 || in_running <= 1 || is_load_factory) {
    return trace.end(CONFD_OK);
  }
  std::array<char, kTextSize> text;
  std::snprintf(text.data(), text.size(), "%s", SP_DEL_ALL_WARN_MSG);
  confd_trans_seterr(tctx, "%s", text.data());
  return trace.end(CONFD_VALIDATION_WARN);
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
  ServicePortRequest request;
  if (maapi_get_values(sock, tctx->thandle, request.values(), request.size(), kServicePort, sp) !=
      CONFD_OK) {
    VALID_TRACE(kTraceFlow, "Error to get SP %u values from ConfD (err=%s)", sp, confd_lasterr());
    return ITER_STOP;  // what cannot be read is not held against the commit
  }
  if (request.type(kGponRequest) == request.type(kXgsponRequest)) {
    return ITER_CONTINUE;
  }
  const limid_type_t link =
      request.type(kXgsponRequest) == C_NOEXISTS ? limid_type_gpon : limid_type_xgspon;
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
                 slash_separated(interface_name).c_str(), static_cast<int>(onu),
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
    link = kGpon;
  } else if (is(type, limid_type_xgspon)) {
    link = kXgspon;
  } else {
    VALID_TRACE(kTraceFlow, "Invalid limid to check gem from service port");
    result = CONFD_ERR;
  }
  const int onu_id = static_cast<int>(onu);
  const int gem_id = static_cast<int>(gem);

  if (maapi_exists(sock, tctx->thandle, kOnu, link, interface_name.c_str(), onu_id) == 0) {
    confd_trans_seterr(tctx, kOnuNotConfigured, sp, onu_id, link,
                       slash_separated(interface_name).c_str());
    result = CONFD_ERR;
  }

  std::array<char, kTextSize> path;
  std::snprintf(path.data(), path.size(), kOnuLineProfile, link, interface_name.c_str(), onu_id);
  std::string line_profile;
  GetStrFromConfd(sock, tctx->thandle, path.data(), "", line_profile);
  // The line profiles of both kinds of link stand in one tree.
  if (maapi_exists(sock, tctx->thandle, kLineProfileGem, line_profile.c_str(), gem_id) == 0) {
    confd_trans_seterr(tctx, kGemNotConfigured, sp, gem_id, onu_id);
    result = CONFD_ERR;
  }
  return result;
}
