#include "gpon_onu_snmp_rt_confirm.h"

#include <optional>

#include "gpon_vald_trace_itf.h"
#include "user_answers.h"
#include "validation_guards.h"
#include "validation_texts.h"
#include "xpath_count.h"

namespace {

constexpr const char* kValidator = "onu_snmp_rt_confirmation";

constexpr const char* kGponOnus = "count(/config/interface/gpon/onu/snmp/real-time)";
constexpr const char* kXgsponOnus = "count(/config/interface/xgspon/onu/snmp/real-time)";

constexpr int kRecommendedOnus = 128;
constexpr const char* kTooManyOnus =
    "There are %d ONUs with real-time SNMP monitoring enabled. Recommended number is %d. This "
    "might cause performance impacts. Do you want to proceed?";

std::int32_t warn(confd_trans_ctx* tctx, int onus) {
  VALID_TRACE_AS(kValidator, kTraceFlow, "%d ONUs with real-time enabled. Show warning message.",
                 onus);
  const std::string text = valid::formatted(kTooManyOnus, onus, kRecommendedOnus);
  VALID_TRACE_AS(kValidator, kTraceFlow, "%s", text.c_str());
  return valid::ask_to_confirm(tctx, text.c_str());
}

std::int32_t confirm_onus(std::int32_t sock, confd_trans_ctx* tctx) {
  int gpon_onus = 0;
  if (get_onu_snmp_rt_count(sock, tctx, kGponOnus, gpon_onus) != CONFD_OK) {
    VALID_TRACE_AS(kValidator, kTraceFlow,
                   "There was an error checking how many GPON ONUs have SNMP real-time enabled.");
    return valid::reject(tctx, valid::kConfdUnreadable);
  }
  int xgspon_onus = 0;
  if (get_onu_snmp_rt_count(sock, tctx, kXgsponOnus, xgspon_onus) != CONFD_OK) {
    VALID_TRACE_AS(kValidator, kTraceFlow,
                   "There was an error checking how many XGSPON ONUs have SNMP real-time enabled.");
    return valid::reject(tctx, valid::kConfdUnreadable);
  }
  const int onus = gpon_onus + xgspon_onus;
  if (onus > kRecommendedOnus) {
    return warn(tctx, onus);
  }
  VALID_TRACE_AS_IF(kValidator, kTraceDetail,
                    "%d ONUs with real-time enabled. Don't show warning message.", onus);
  return CONFD_OK;
}

}  // namespace

std::int32_t onu_snmp_rt_confirmation(std::int32_t maapi_sock, confd_trans_ctx* tctx,
                                      confd_hkeypath_t* /*keypath*/, confd_value_t* /*newval*/) {
  const valid::ValidationTrace trace(kValidator);
  return trace.end(confirm_onus(maapi_sock, tctx));
}

// The exported signature passes the expression by value.
// cppcheck-suppress passedByValue ; NOLINTNEXTLINE(performance-unnecessary-value-param)
int get_onu_snmp_rt_count(int sock, confd_trans_ctx* tctx, std::string xpath, int& count) {
  count = 0;
  const valid::XpathResult evaluated = valid::evaluate_xpath(sock, tctx, xpath);
  if (evaluated.result != CONFD_OK || evaluated.text == nullptr) {
    VALID_TRACE(kTraceFlow, "There was an error (%s) evaluating onus snmp real-time xpath.",
                confd_lasterr());
    return CONFD_ERR;
  }
  std::string error;
  const std::optional<int> number = valid::count_in(evaluated.text.get(), error);
  if (!number.has_value()) {
    VALID_TRACE(kTraceFlow,
                "There was an error (%s) (%s) retrieving the number of onus with snmp real-time.",
                confd_lasterr(), error.c_str());
    return CONFD_ERR;
  }
  count = *number;
  return CONFD_OK;
}
