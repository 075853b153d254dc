#include "gpon_sip_agent_validation.h"

#include "profile_confirmation.h"
#include "user_answers.h"

namespace {

constexpr const char* kChangeWarning =
    "Change in sip-agent-profile configuration will result in temporary data loss for all ONUs "
    "using this profile.";

constexpr valid::ProfileConfirmation kSipAgentProfile = {
    "sip-agent-profile",
    "/config/profile/gpon/sip-agent-profile{%s}",
    "/onu/pots[sip-agent-profile='",
    nullptr,
    &kChangeWarning,
    valid::kConfdUnreadable,
};

}  // namespace

std::int32_t sip_agent_profile_confirmation(std::int32_t sock, confd_trans_ctx* tctx,
                                            confd_hkeypath_t* keypath, confd_value_t* /*newval*/) {
  return valid::confirm_profile_change(kSipAgentProfile, {__FILE__, __func__, __LINE__}, sock, tctx,
                                       keypath);
}
