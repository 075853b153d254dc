#include "gpon_rg_profile_validation.h"

#include <array>
#include <optional>
#include <set>
#include <string>

#include "gpon_vald_trace_itf.h"
#include "profile_confirmation.h"
#include "user_answers.h"
#include "validation_guards.h"
#include "validation_texts.h"

namespace {

constexpr const char* kChangeWarning =
    "Change in rg-profile configuration will result in temporary data loss for all ONUs using this "
    "profile.";

constexpr valid::ProfileConfirmation kRgProfile = {
    "rg-profile",        "/config/profile/gpon/rg-profile{%s}",
    "/onu[rg-profile='", nullptr,
    &kChangeWarning,     valid::kConfdUnreadable,
};

// The function in whose name the walk over the WLANs writes to the trace.
constexpr const char* kSsidCheck = "rg_profile_ssid_unique_check_func";

constexpr const char* kSsidNotConfigured = "must configure one of: auto, custom";
constexpr const char* kSsidNotUnique =
    "There are two or more WLANs with the same SSID. SSID must be unique within the RG profile.";

// An automatic SSID contains the ONU's serial number, so it differs from ONU to ONU.
constexpr const char* kSerialNumberOfAnyOnu = "ZQRT12345678";
constexpr int kSsidTextSize = 33;

struct Wlan {
  std::int32_t sock;
  int thandle;
  const char* list_path;
  const confd_value_t* key;
};

bool has(const Wlan& wlan, const char* node) {
  return maapi_exists(wlan.sock, wlan.thandle, "%s{%x}/ssid/%s", wlan.list_path, wlan.key, node) ==
         1;
}

// Empty if the text cannot be read.
std::string read(const Wlan& wlan, const char* node) {
  std::array<char, kSsidTextSize> text{};
  const int result = maapi_get_str_elem(wlan.sock, wlan.thandle, text.data(), kSsidTextSize,
                                        "%s{%x}/ssid/%s", wlan.list_path, wlan.key, node);
  return result == CONFD_OK ? text.data() : "";
}

std::string read_if_there(const Wlan& wlan, const char* node) {
  return has(wlan, node) ? read(wlan, node) : "";
}

// No value if the WLAN has no SSID; an empty one if it cannot be read.
std::optional<std::string> ssid_of(const Wlan& wlan) {
  if (has(wlan, "custom")) {
    return read(wlan, "custom");
  }
  if (!has(wlan, "auto/onu-serial-number")) {
    return std::nullopt;
  }
  std::string ssid = read_if_there(wlan, "auto/prefix");
  ssid += kSerialNumberOfAnyOnu;
  ssid += read_if_there(wlan, "auto/suffix");
  return ssid;
}

enum class Ssids { kUnique, kNotConfigured, kUnreadable, kRepeated };

Ssids check_ssids(std::int32_t sock, const confd_trans_ctx* tctx, const std::string& list_path) {
  std::set<std::string> seen;
  valid::Cursor wlans(sock, tctx, "%s", list_path.c_str());
  while (wlans.next()) {
    const std::optional<std::string> ssid =
        ssid_of({sock, tctx->thandle, list_path.c_str(), &wlans.entry().keys[0]});
    if (!ssid.has_value()) {
      VALID_TRACE_AS_IF(kSsidCheck, kTraceDetail, "SSID not configured");
      wlans.next();
      wlans.release();  // ConfD frees it with the transaction
      return Ssids::kNotConfigured;
    }
    if (ssid->empty()) {
      return Ssids::kUnreadable;
    }
    // The record names the list, whose path contains the profile's name.
    VALID_TRACE_AS(kSsidCheck, kTraceFlow, "SSID is (%s) RG-Profile (%s) wlan.", ssid->c_str(),
                   list_path.c_str());
    if (!seen.insert(*ssid).second) {
      wlans.release();
      return Ssids::kRepeated;
    }
  }
  return Ssids::kUnique;
}

}  // namespace

std::int32_t rg_profile_confirmation(std::int32_t sock, confd_trans_ctx* tctx,
                                     confd_hkeypath_t* keypath, confd_value_t* /*newval*/) {
  return valid::confirm_profile_change(kRgProfile, {__FILE__, __func__, __LINE__}, sock, tctx,
                                       keypath);
}

std::int32_t rg_profile_ssid_unique_check_func(std::int32_t sock, confd_trans_ctx* tctx,
                                               confd_hkeypath_t* keypath,
                                               confd_value_t* /*newval*/) {
  const std::string profile = valid::value_text(&keypath->v[1][0]);
  VALID_TRACE_IF(kTraceDetail, "Checking if SSID is unique for (%s) RG-Profile", profile.c_str());

  const Ssids ssids = check_ssids(sock, tctx, valid::keypath_text(keypath, valid::kTextSize));
  if (ssids == Ssids::kUnique) {
    return CONFD_OK;
  }
  if (ssids == Ssids::kNotConfigured) {
    confd_trans_seterr(tctx, kSsidNotConfigured);
    return CONFD_ERR;
  }
  VALID_TRACE(kTraceFlow, "There was an error (%s) checking if SSID is unique in rg-profile.",
              confd_lasterr());
  return valid::reject(tctx, ssids == Ssids::kRepeated ? kSsidNotUnique : valid::kConfdUnreadable);
}
