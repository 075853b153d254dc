#pragma once

#include <cstdint>
#include <string>

#include "confd_maapi.h"

extern "C" {

/// The text that asks the user to confirm a change of FEC. The daemon may set it to another text,
/// which must stay valid; its first 8191 characters are shown.
extern const char* FEC_WARN_MSG;
}

/// "fec_confirmation_warning": asks the user to confirm another forward error correction (FEC) for
/// a PON interface that is committed already. The keypath is that of a FEC leaf, newval its new
/// boolean, which is compared with the committed one. Returns 0, -3 with a text, or -1 with a text;
/// for any other leaf the process ends.
std::int32_t ponlink_fec_confirmation(std::int32_t sock, confd_trans_ctx* tctx,
                                      confd_hkeypath_t* keypath, confd_value_t* newval);

/// The path of the PON interface that the FEC leaf of the keypath belongs to, such as
/// "/config/interface/gpon{1 1 3}"; the chassis is always 1. Returns false, and leaves the path as
/// it was, if the leaf is not in a list of PON interfaces.
bool get_interface_path(const confd_hkeypath_t* keypath, std::string& path);

/// The path of the keypath's FEC leaf below the base path. Returns false, and leaves the path as it
/// was, if it is no FEC leaf.
bool get_fec_path(const confd_hkeypath_t* keypath, const std::string& base, std::string& path);
