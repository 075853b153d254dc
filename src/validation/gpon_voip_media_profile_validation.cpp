#include "gpon_voip_media_profile_validation.h"

#include "profile_confirmation.h"
#include "user_answers.h"

namespace {

constexpr const char* kChangeWarning =
    "Change in media-profile configuration will result in temporary data loss for all ONUs using "
    "this profile.";

constexpr valid::ProfileConfirmation kMediaProfile = {
    "media-profile",
    "/config/profile/gpon/media-profile{%s}",
    "/onu/pots[media-profile='",
    nullptr,
    &kChangeWarning,
    valid::kTransactionUnreadable,
};

}  // namespace

std::int32_t voip_media_profile_confirmation(std::int32_t sock, confd_trans_ctx* tctx,
                                             confd_hkeypath_t* keypath, confd_value_t* /*newval*/) {
  return valid::confirm_profile_change(kMediaProfile, {__FILE__, __func__, __LINE__}, sock, tctx,
                                       keypath);
}
