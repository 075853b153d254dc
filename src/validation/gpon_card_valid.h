#pragma once

#include <cstdint>

#include "confd_maapi.h"

/// The entry points of the plug-in. The daemon calls them one at a time.
extern "C" {

/// Opens the card's platform service and reads the card's capabilities. Returns 0, or -1 with a
/// line on standard error; the capabilities then stay as they were.
int lib_init();

/// Writes the name of the validation point, at most size - 1 characters and a NUL. Always returns
/// 0.
int get_validation_point(char* name, int size);

/// Runs one validation request, the context's `validate_opaque`: the first validator whose name
/// begins with it decides. Returns CONFD_OK, CONFD_ERR or CONFD_VALIDATION_WARN, with the user's
/// text set in the context. Returns CONFD_OK if no validator has the name, and CONFD_ERR if the
/// validator throws anything.
int validate(confd_trans_ctx* tctx, confd_hkeypath_t* keypath, confd_value_t* newval);

/// Does nothing; returns 0.
int lib_finish();
}

/// "one_shot_prov_check": warns when one-shot provisioning is switched on or off while an ONU uses
/// an RG profile. Reads the transaction's changes at and below the keypath; newval is not used. If
/// the query of the ONUs cannot be started or read to its end, a profile counts as used. Returns 0,
/// or -3 with a text.
std::int32_t validate_one_shot_prov(std::int32_t maapi_sock, confd_trans_ctx* tctx,
                                    confd_hkeypath_t* keypath, confd_value_t* newval);

/// Looks for the one-shot switch among the changes. state is a std::uint8_t; if the switch was
/// created or deleted, it becomes 1 and the iteration ends.
maapi_iter_ret diff_iter(confd_hkeypath_t* kp, maapi_iter_op op, confd_value_t* oldv,
                         confd_value_t* newv, void* state);
