#pragma once

#include <cstdint>

#include "confd_maapi.h"

namespace valid {

/// Whether the transaction has the GEM port in the line profile that an ONU refers to; the path is
/// that of the ONU's reference. An ONU without a line profile has no GEM port. If the look-up
/// fails, the GEM port counts as existing. The line profiles of both kinds of link are in one list.
bool line_profile_has_gem(std::int32_t sock, const confd_trans_ctx* tctx,
                          const char* line_profile_path, std::uint32_t gem);

/// Sets the text that rejects a service port because of its GEM port. Returns CONFD_ERR.
std::int32_t reject_missing_gem(confd_trans_ctx* tctx, std::uint32_t sp, std::uint32_t gem,
                                std::uint32_t onu);

}  // namespace valid
