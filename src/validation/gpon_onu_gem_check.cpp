#include "gpon_onu_gem_check.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <stdexcept>

#include "base.h"
#include "confd_cdb.h"
#include "gpon_vald_trace_itf.h"
#include "model_fault.h"
#include "pon_link.h"
#include "service_port_batches.h"
#include "service_port_gem.h"
#include "service_port_record.h"
#include "validation_guards.h"
#include "validation_texts.h"

namespace {

constexpr const char* kValidator = "validate_onu_gem_check";

constexpr const char* kOnuLineProfile = "%s/profile-references/line-profile";
constexpr const char* kLineProfileOfListedOnu = "%s{%d}/profile-references/line-profile";

// The buffer for the name of a line profile; a name that does not fit counts as none.
constexpr std::size_t kLineProfileSize = 49;

constexpr const char* kOnuInUse =
    "Service-port [%u] is configured to ONU [%d] on interface PON [%s]";
constexpr const char* kInternalError = "Internal error validating onu commit";
constexpr const char* kNoSession = "Failed to open qzconfd_config_session socket";

bool contains(const std::vector<std::string>& onus, const std::string& onu) {
  return std::find(onus.begin(), onus.end(), onu) != onus.end();
}

std::string onu_key(const std::string& link, std::uint32_t onu) {
  return link + " " + std::to_string(onu);
}

std::int32_t validate_changes(std::int32_t sock, confd_trans_ctx* tctx,
                              const confd_hkeypath_t* keypath, validation_state& state) {
  if (maapi_keypath_diff_iterate(sock, tctx->thandle, iterate_detect_change_on_onu, 0, &state, "%h",
                                 keypath) != CONFD_OK) {
    return CONFD_ERR;
  }
  if (!state.onu_deleted && !state.line_profile_changed) {
    return CONFD_OK;
  }
  return validate_onu_removal_and_modification(sock, tctx, state, state.keypath.c_str());
}

}  // namespace

void validation_state::register_deleted_onu(const std::string& onu) {
  deleted_onus_.push_back(onu);
}

void validation_state::register_modified_onu(const std::string& onu) {
  modified_onus_.push_back(onu);
}

bool validation_state::is_deleted_onu(const std::string& onu) const {
  return contains(deleted_onus_, onu);
}

bool validation_state::is_modified_onu(const std::string& onu) const {
  return contains(modified_onus_, onu);
}

std::int32_t validate_onu_gem_check(std::int32_t sock, confd_trans_ctx* tctx,
                                    confd_hkeypath_t* keypath, confd_value_t* /*newval*/) {
  const valid::ValidationTrace trace(kValidator);
  if (CONFD_GET_XMLTAG(&(keypath->v[0][0])) != base_onu) {
    valid::end_on_model_fault({__FILE__, kValidator, __LINE__}, valid::kInvalidTag);
  }
  validation_state state;
  state.sock = sock;
  state.tctx = tctx;
  state.keypath = valid::keypath_text(keypath);
  VALID_TRACE(kTraceDetail, "Validating keypath: %s", state.keypath.c_str());
  try {
    return trace.end(validate_changes(sock, tctx, keypath, state));
  } catch (const std::runtime_error&) {
    confd_trans_seterr(tctx, kInternalError);
    return trace.end(CONFD_ERR);
  }
}

maapi_iter_ret iterate_detect_change_on_onu(confd_hkeypath_t* keypath, maapi_iter_op op,
                                            confd_value_t* /*oldv*/, confd_value_t* /*newv*/,
                                            void* state) {
  const std::uint32_t onu = CONFD_GET_UINT32(&keypath->v[0][0]);
  const std::uint32_t chassis = CONFD_GET_UINT32(&keypath->v[2][0]);
  const std::uint32_t slot = CONFD_GET_UINT32(&keypath->v[2][1]);
  const std::uint32_t port = CONFD_GET_UINT32(&keypath->v[2][2]);
  auto& changes = *static_cast<validation_state*>(state);
  switch (op) {
    case MOP_CREATED:
      VALID_TRACE_IF(kTraceDetail, "Onu created: %s", valid::keypath_text(keypath).c_str());
      break;
    case MOP_DELETED:
      VALID_TRACE_IF(kTraceDetail, "Onu deleted: %s (%d %d %d %d)",
                     valid::keypath_text(keypath).c_str(), chassis, slot, port, onu);
      changes.register_deleted_onu(onu_key(valid::link_keys(chassis, slot, port), onu));
      changes.onu_deleted = true;
      break;
    case MOP_MODIFIED:
    case MOP_VALUE_SET:
    case MOP_ATTR_SET:
      if (is_change_in_line_profile(changes.sock, changes.tctx,
                                    valid::keypath_text(keypath).c_str())) {
        VALID_TRACE_IF(kTraceDetail, "Onu modified: %s (%d %d %d %d)",
                       valid::keypath_text(keypath).c_str(), chassis, slot, port, onu);
        changes.register_modified_onu(onu_key(valid::link_keys(chassis, slot, port), onu));
        changes.line_profile_changed = true;
      }
      break;
    default:
      VALID_TRACE_IF(kTraceDetail, "Not valid onu operation: %s",
                     valid::keypath_text(keypath).c_str());
  }
  return ITER_CONTINUE;
}

bool is_change_in_line_profile(unsigned int sock, confd_trans_ctx* tctx, const char* onu_keypath) {
  valid::ConfigSession session(tctx, valid::ConfigSession::AfterFailedStart::kEnd);
  if (!session.open()) {
    VALID_TRACE(kTraceDetail, "%s", kNoSession);
    throw std::runtime_error(kNoSession);
  }
  // If the read fails, the name stays empty: the ONU has no line profile, or one with a longer
  // name.
  std::array<char, kLineProfileSize> old_profile{};
  std::array<char, kLineProfileSize> new_profile{};
  cdb_get_str(session.socket(), old_profile.data(), kLineProfileSize, kOnuLineProfile, onu_keypath);
  session.end();
  maapi_get_str_elem(static_cast<int>(sock), tctx->thandle, new_profile.data(), kLineProfileSize,
                     kOnuLineProfile, onu_keypath);
  const bool changed = std::strncmp(old_profile.data(), new_profile.data(), kLineProfileSize) != 0;
  VALID_TRACE(kTraceDetail, "old line_profile: %s -- new line_profile: %s -- different: %s",
              old_profile.data(), new_profile.data(), changed ? "yes" : "no");
  return changed;
}

std::int32_t validate_onu_removal_and_modification(int sock, confd_trans_ctx* tctx,
                                                   validation_state& state, const char* keypath) {
  valid::ServicePortBatches batches(sock, tctx);
  for (int count = batches.next(); count > 0; count = batches.next()) {
    for (int i = 0; i < count; ++i) {
      const std::optional<valid::ServicePort> port = valid::take_service_port(batches.object(i));
      if (!port.has_value()) {
        return CONFD_ERR;
      }
      const std::string key = onu_key(port->interface_name, port->onu);
      const int onu_id = static_cast<int>(port->onu);
      if (state.is_deleted_onu(key)) {
        confd_trans_seterr(tctx, kOnuInUse, port->id, onu_id, port->interface_name.c_str());
        return CONFD_ERR;
      }
      if (!state.is_modified_onu(key)) {
        continue;
      }
      const std::string line_profile_path =
          valid::formatted(kLineProfileOfListedOnu, keypath, onu_id);
      if (!valid::line_profile_has_gem(sock, tctx, line_profile_path.c_str(), port->gem)) {
        return valid::reject_missing_gem(tctx, port->id, port->gem, port->onu);
      }
    }
  }
  return CONFD_OK;
}
