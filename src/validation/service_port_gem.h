#pragma once

#include <cstdint>

#include "confd_maapi.h"

namespace valid {

/// Does the transaction have the GEM port in the line profile that an ONU refers to? The path is
/// that of the ONU's reference. An ONU without a line profile has no GEM port; what cannot be
/// looked up counts as there. The line profiles of both kinds of link are in one list.
bool line_profile_has_gem(std::int32_t sock, const confd_trans_ctx* tctx,
                          const char* line_profile_path, std::uint32_t gem);

/// Rejects a service port for its GEM port. Returns CONFD_ERR.
std::int32_t reject_missing_gem(confd_trans_ctx* tctx, std::uint32_t sp, std::uint32_t gem,
                                std::uint32_t onu);

}  // namespace valid
