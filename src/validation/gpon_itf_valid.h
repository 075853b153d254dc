#pragma once

#include <cstdint>

#include "card/limid.h"
#include "confd_maapi.h"

/// "interface_gpon_validation" and "interface_xgs_validation": PON interfaces mirror the card's
/// physical ports, so the transaction must not leave fewer of a type than the card manages. keypath
/// and newval are not used. They return 0, or -1, with a text if interfaces are missing.
std::int32_t validate_itf_gpon(std::int32_t sock, confd_trans_ctx* tctx, confd_hkeypath_t* keypath,
                               confd_value_t* newval);
std::int32_t validate_itf_xgspon(std::int32_t sock, confd_trans_ctx* tctx,
                                 confd_hkeypath_t* keypath, confd_value_t* newval);

/// The check for one type of PON interface; returns -1 without a text for any other type.
std::int32_t validate_itf_pon(std::int32_t sock, confd_trans_ctx* tctx, limid_type_t type);

/// Whether these are all the PON links that the card manages, or more.
bool num_pon_links_ok(std::uint32_t count);
