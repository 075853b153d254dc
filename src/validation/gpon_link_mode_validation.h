#pragma once

#include <cstdint>

#include "confd_maapi.h"

/// "pon_mode_validation": refuses another operation mode for an XGS-PON interface that has ONUs,
/// and tells the user's session which ONUs will work where the mode changes. The keypath is that of
/// the mode leaf, its element 1 the interface's three keys; newMode is the new mode. Writes no
/// begin and end records. Gives 0, or -1 with a text.
std::int32_t pon_mode_validation(std::int32_t sock, confd_trans_ctx* tctx,
                                 confd_hkeypath_t* keypath, confd_value_t* newMode);
