#pragma once

#include <cstdint>

#include "confd_maapi.h"

/// The entry points of the plug-in. The daemon calls them one at a time.
extern "C" {

/// Opens the card's platform service and reads the card's capabilities. 0, or -1 with a line on
/// standard error; the capabilities then stay as they were.
int lib_init();

/// Writes the name of the validation point, at most size - 1 characters and a NUL. Always 0.
int get_validation_point(char* name, int size);

/// Answers one validation request: the first validator whose name begins with the request (the
/// context's `validate_opaque`) decides. Gives CONFD_OK, CONFD_ERR or CONFD_VALIDATION_WARN, with
/// the user's text set in the context; CONFD_OK for a request that no validator answers, CONFD_ERR
/// for a validator that throws, whatever it throws.
int validate(confd_trans_ctx* tctx, confd_hkeypath_t* keypath, confd_value_t* newval);

/// Does nothing; gives 0.
int lib_finish();
}

/// "one_shot_prov_check": warns when one-shot provisioning is switched on or off while an ONU uses
/// an RG profile. Reads the transaction's changes at and below the keypath; newval is not used. 0,
/// or -3 with a text; a query of the ONUs that cannot be made or read to its end counts as use.
std::int32_t validate_one_shot_prov(std::int32_t maapi_sock, confd_trans_ctx* tctx,
                                    confd_hkeypath_t* keypath, confd_value_t* newval);

/// Looks for the one-shot switch among the changes; state is a std::uint8_t that becomes 1 when the
/// switch was created or deleted, which also ends the iteration.
maapi_iter_ret diff_iter(confd_hkeypath_t* kp, maapi_iter_op op, confd_value_t* oldv,
                         confd_value_t* newv, void* state);
