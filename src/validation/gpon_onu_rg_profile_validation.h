#pragma once

#include <cstdint>

#include "confd_maapi.h"

/// "rg_prof_one_shot_check": warns, while one-shot provisioning is on, when an ONU's RG profile is
/// exchanged or its RG override parameters change. keypath is that of the ONU's rg-profile or
/// rg-override; newval is not used. 0, -3 with a text, or -1 with a text where the committed
/// configuration cannot be read.
std::int32_t validate_rg_prof_one_shot(std::int32_t maapi_sock, confd_trans_ctx* tctx,
                                       confd_hkeypath_t* keypath, confd_value_t* newval);

/// Looks for any change; state is the changed flag, of which the first byte is written: 1 for a
/// change, which also ends the iteration, else 0.
maapi_iter_ret diff_iter_rg(confd_hkeypath_t* kp, maapi_iter_op op, confd_value_t* oldv,
                            confd_value_t* newv, void* state);

/// Is the node in the committed configuration? 0 and `exists`, or -1 with a text.
int checkRgProfileChgValue(confd_hkeypath_t* keypath, confd_trans_ctx* tctx, int& exists);
