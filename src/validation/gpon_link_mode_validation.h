#pragma once

#include <cstdint>

#include "confd_maapi.h"

/// "pon_mode_validation": rejects another operation mode for an XGS-PON interface that has ONUs. If
/// it has none, a message to the user's session says which ONUs the new mode supports. The keypath
/// is that of the mode leaf, its element 1 the interface's three keys; newMode is the new mode.
/// Writes no begin and end records. Returns 0, or -1 with a text.
std::int32_t pon_mode_validation(std::int32_t sock, confd_trans_ctx* tctx,
                                 confd_hkeypath_t* keypath, confd_value_t* newMode);
