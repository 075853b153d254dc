#pragma once

#include <cstdint>

#include "confd_maapi.h"

/// "tr069_profile_confirmation_warning": asks the user to confirm a change to a committed TR-069
/// ACS profile if ONUs of the GPON links use it. The keypath is the profile's entry; newval is not
/// used. Returns 0, -3 with a text, or -1 with a text.
std::int32_t tr069_profile_confirmation(std::int32_t sock, confd_trans_ctx* tctx,
                                        confd_hkeypath_t* keypath, confd_value_t* newval);

/// "tr069_profile_password_length_check": rejects a password of more than 25 characters. newval is
/// the encrypted password, a C_BUF; the keypath is not used. The clear text never leaves the stack
/// and is overwritten before the return. Returns 0, or -1 with a text, also if the password cannot
/// be decrypted.
std::int32_t tr069_profile_password_length_check_func(std::int32_t sock, confd_trans_ctx* tctx,
                                                      confd_hkeypath_t* keypath,
                                                      confd_value_t* newval);
