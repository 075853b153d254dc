#include "gpon_onu_snmp_rt_confirm.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <stdexcept>

#include "gpon_vald_trace_itf.h"
#include "validation_guards.h"

namespace {

constexpr const char* kValidator = "onu_snmp_rt_confirmation";

constexpr const char* kGponOnus = "count(/config/interface/gpon/onu/snmp/real-time)";
constexpr const char* kXgsponOnus = "count(/config/interface/xgspon/onu/snmp/real-time)";

constexpr int kRecommendedOnus = 128;
constexpr const char* kTooManyOnus =
    "There are %d ONUs with real-time SNMP monitoring enabled. Recommended number is %d. This "
    "might cause performance impacts. Do you want to proceed?";
constexpr const char* kAccessFailed = "Failed accessing confd data.";

struct Free {
  void operator()(char* text) const { std::free(text); }
};

std::int32_t access_failed(confd_trans_ctx* tctx) {
  confd_trans_seterr(tctx, "%s", kAccessFailed);
  return CONFD_ERR;
}

std::int32_t warn(confd_trans_ctx* tctx, int onus) {
  VALID_TRACE_AS(kValidator, kTraceFlow, "%d ONUs with real-time enabled. Show warning message.",
                 onus);
  std::array<char, valid::kValueTextSize> text;
  std::snprintf(text.data(), text.size(), kTooManyOnus, onus, kRecommendedOnus);
  VALID_TRACE_AS(kValidator, kTraceFlow, "%s", text.data());
  confd_trans_seterr(tctx, "%s", text.data());
  return CONFD_VALIDATION_WARN;
}

std::int32_t confirm_onus(std::int32_t sock, confd_trans_ctx* tctx) {
  int gpon_onus = 0;
  if (get_onu_snmp_rt_count(sock, tctx, kGponOnus, gpon_onus) != CONFD_OK) {
    VALID_TRACE_AS(kValidator, kTraceFlow,
                   "There was an error checking how many GPON ONUs have SNMP real-time enabled.");
    return access_failed(tctx);
  }
  int xgspon_onus = 0;
  if (get_onu_snmp_rt_count(sock, tctx, kXgsponOnus, xgspon_onus) != CONFD_OK) {
    VALID_TRACE_AS(kValidator, kTraceFlow,
                   "There was an error checking how many XGSPON ONUs have SNMP real-time enabled.");
    return access_failed(tctx);
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

// The plug-in exports the function with the expression by value.
// cppcheck-suppress passedByValue ; NOLINTNEXTLINE(performance-unnecessary-value-param)
int get_onu_snmp_rt_count(int sock, confd_trans_ctx* tctx, std::string xpath, int& count) {
  count = 0;
  char* result = nullptr;
  const int evaluated =
      maapi_xpath_eval_expr(sock, tctx->thandle, xpath.c_str(), &result, nullptr, nullptr);
  const std::unique_ptr<char, Free> text(result);
  if (evaluated != CONFD_OK || text == nullptr) {
    VALID_TRACE(kTraceFlow, "There was an error (%s) evaluating onus snmp real-time xpath.",
                confd_lasterr());
    return CONFD_ERR;
  }
  try {
    count = std::stoi(text.get());
  } catch (const std::invalid_argument& error) {
    VALID_TRACE(kTraceFlow,
                "There was an error (%s) (%s) retrieving the number of onus with snmp real-time.",
                confd_lasterr(), error.what());
    return CONFD_ERR;
  }
  return CONFD_OK;
}
