#pragma once

#include <cstdint>

#include "confd_maapi.h"

/// "voip_media_profile_confirmation_warning": asks the user to confirm a change to a committed
/// media profile if telephone ports of the GPON links' ONUs use it; each port counts. The keypath
/// is the profile's entry; newval is not used. Returns 0, -3 with a text, or -1 with a text.
std::int32_t voip_media_profile_confirmation(std::int32_t sock, confd_trans_ctx* tctx,
                                             confd_hkeypath_t* keypath, confd_value_t* newval);
