#include "gpon_line_profile_confirm.h"

#include "card/fm_card.h"
#include "pon_link.h"
#include "profile_confirmation.h"
#include "user_answers.h"

const char* LINE_PROF_WARN_MSG =
    "Change in line-profile configuration will result in temporary data loss for all ONUs using "
    "this profile.";

namespace {

// A card that does not report its kind is a GPON card.
const char* interface_list_of_card() {
  fm_init();
  fm_slot_t slot{};
  fm_local_slot(&slot);
  bool is_xgspon = false;
  fm_scalar_card_tarnd_is_xgspon(&slot, &is_xgspon);
  return is_xgspon ? valid::kXgsponList : valid::kGponList;
}

constexpr valid::ProfileConfirmation kLineProfile = {
    "line-profile",
    "/config/profile/gpon/line-profile{%s}",
    "/onu/profile-references[line-profile='",
    interface_list_of_card,
    &LINE_PROF_WARN_MSG,
    valid::kConfdUnreadable,
};

}  // namespace

std::int32_t line_profile_confirmation(std::int32_t sock, confd_trans_ctx* tctx,
                                       confd_hkeypath_t* keypath, confd_value_t* /*newval*/) {
  return valid::confirm_profile_change(kLineProfile, {__FILE__, __func__, __LINE__}, sock, tctx,
                                       keypath);
}
