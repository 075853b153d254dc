#pragma once

#include <cstdint>

#include "confd_maapi.h"

/// "rg_prof_one_shot_check": warns if an ONU gets another RG profile or other RG override
/// parameters while one-shot provisioning is on. The keypath is that of the ONU's rg-profile or
/// rg-override; newval is not used. Returns 0, -3 with a text, or -1 with a text if the committed
/// configuration cannot be read.
std::int32_t validate_rg_prof_one_shot(std::int32_t maapi_sock, confd_trans_ctx* tctx,
                                       confd_hkeypath_t* keypath, confd_value_t* newval);

/// Looks for any change. Sets the lowest byte of state, the changed flag of 32 bits: to 1 for a
/// change, which also ends the iteration, or else to 0.
maapi_iter_ret diff_iter_rg(confd_hkeypath_t* kp, maapi_iter_op op, confd_value_t* oldv,
                            confd_value_t* newv, void* state);

/// Sets `exists` to whether the node is in the committed configuration. Returns 0, or -1 with a
/// text.
int checkRgProfileChgValue(confd_hkeypath_t* keypath, confd_trans_ctx* tctx, int& exists);
