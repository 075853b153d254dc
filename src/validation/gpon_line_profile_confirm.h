#pragma once

#include <cstdint>

#include "confd_maapi.h"

extern "C" {

/// The text of the warning. The daemon may set it to another text.
extern const char* LINE_PROF_WARN_MSG;
}

/// "line_confirmation_warning": asks the user to confirm a change to a committed line profile if
/// ONUs on the card's own kind of link use it. The keypath is the profile's entry; newval is not
/// used. Returns 0, -3 with a text, or -1 with a text.
std::int32_t line_profile_confirmation(std::int32_t sock, confd_trans_ctx* tctx,
                                       confd_hkeypath_t* keypath, confd_value_t* newval);
