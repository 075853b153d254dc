#pragma once

#include <cstdint>

#include "confd_maapi.h"

/// "rg_profile_confirmation_warning": asks the user to confirm a change to a committed RG profile
/// if ONUs of the GPON links use it. The keypath is the profile's entry; newval is not used.
/// Returns 0, -3 with a text, or -1 with a text.
std::int32_t rg_profile_confirmation(std::int32_t sock, confd_trans_ctx* tctx,
                                     confd_hkeypath_t* keypath, confd_value_t* newval);

/// "rg_profile_ssid_unique_check": rejects an RG profile in which two WLANs have the same SSID, or
/// one has none. Reads the transaction's WLANs below the keypath, the profile's list of WLANs;
/// newval is not used. Returns 0, or -1 with a text. Writes no begin and end records.
std::int32_t rg_profile_ssid_unique_check_func(std::int32_t sock, confd_trans_ctx* tctx,
                                               confd_hkeypath_t* keypath, confd_value_t* newval);
