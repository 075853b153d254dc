#include "gpon_itf_valid.h"

#include <optional>

#include "gpon_capabilities.h"
#include "gpon_vald_trace_itf.h"
#include "pon_link.h"
#include "validation_guards.h"

namespace {

constexpr const char* kPhysicalPorts =
    "%s interfaces cannot be deleted because they are physical ports.";

struct PonNames {
  const char* display;
  const char* list;
};

std::optional<PonNames> names_of(limid_type_t type) {
  if (limid_type_compare(type, limid_type_xgspon) != 0) {
    return PonNames{"XGSPON", valid::kXgsponList};
  }
  if (limid_type_compare(type, limid_type_gpon) != 0) {
    return PonNames{"GPON", valid::kGponList};
  }
  return std::nullopt;
}

}  // namespace

std::int32_t validate_itf_gpon(std::int32_t sock, confd_trans_ctx* tctx,
                               confd_hkeypath_t* /*keypath*/, confd_value_t* /*newval*/) {
  return validate_itf_pon(sock, tctx, limid_type_gpon);
}

std::int32_t validate_itf_xgspon(std::int32_t sock, confd_trans_ctx* tctx,
                                 confd_hkeypath_t* /*keypath*/, confd_value_t* /*newval*/) {
  return validate_itf_pon(sock, tctx, limid_type_xgspon);
}

std::int32_t validate_itf_pon(std::int32_t sock, confd_trans_ctx* tctx, limid_type_t type) {
  const valid::ValidationTrace trace("validate_itf_pon");

  const std::optional<PonNames> names = names_of(type);
  if (!names) {
    VALID_TRACE(kTraceFlow,
                "Error: Trying to execute validation for a non expected type of PON port");
    trace.end(CONFD_OK);  // the trace shows a success although the request fails
    return CONFD_ERR;
  }
  const int count = maapi_num_instances(sock, tctx->thandle, "/config/interface/%s", names->list);
  if (count < 0) {
    VALID_TRACE(kTraceFlow, "Failed getting %s ports (%s)", names->list, confd_lasterr());
    return trace.end(CONFD_ERR);
  }
  if (num_pon_links_ok(static_cast<std::uint32_t>(count))) {
    return trace.end(CONFD_OK);
  }
  confd_trans_seterr(tctx, kPhysicalPorts, names->display);
  return trace.end(CONFD_ERR);
}

bool num_pon_links_ok(std::uint32_t count) {
  return get_num_manageable_ponlinks() <= count;
}
