#pragma once

#include <cstdint>

#include "confd_maapi.h"

/// "config_modified_check": rejects a change to an entry that is committed already; entries may
/// only be created and deleted. Reads the transaction's changes at and below the keypath; newval is
/// not used. Returns 0, or -1 with a text.
std::int32_t validate_config_modify(std::int32_t sock, confd_trans_ctx* tctx,
                                    confd_hkeypath_t* keypath, confd_value_t* newval);

/// Looks for a modification among the changes. state is a std::uint8_t that becomes 1 with the
/// first one, which also ends the iteration.
maapi_iter_ret diffIter(confd_hkeypath_t* keypath, maapi_iter_op op, confd_value_t* oldv,
                        confd_value_t* newv, void* state);
