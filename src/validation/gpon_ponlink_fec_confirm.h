#pragma once

#include <cstdint>
#include <string>

#include "confd_maapi.h"

extern "C" {

/// The text that asks the user to confirm a change of FEC. The daemon may point it at another text,
/// which must outlive its use here; 8191 characters of it are shown.
extern const char* FEC_WARN_MSG;
}

/// "fec_confirmation_warning": asks the user to confirm another forward error correction (FEC) for
/// a PON interface that is committed already. The keypath is that of a FEC leaf, newval its new
/// boolean, compared with the committed one. Gives 0, or -1 or -3 with a text; on a leaf that is no
/// FEC leaf the process ends.
std::int32_t ponlink_fec_confirmation(std::int32_t sock, confd_trans_ctx* tctx,
                                      confd_hkeypath_t* keypath, confd_value_t* newval);

/// The path of the PON interface that the FEC leaf of the keypath belongs to, such as
/// "/config/interface/gpon{1 1 3}"; the chassis is 1 always. False, and the path left as it was,
/// where the leaf does not stand in a list of PON interfaces.
bool get_interface_path(const confd_hkeypath_t* keypath, std::string& path);

/// The path of the keypath's FEC leaf below the base path. False, and the path left as it was,
/// where it is no FEC leaf.
bool get_fec_path(const confd_hkeypath_t* keypath, const std::string& base, std::string& path);
