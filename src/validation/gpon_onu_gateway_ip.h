#pragma once

#include <cstdint>

#include "confd_maapi.h"

/// "onu_gateway_ip_check": the gateway of an ONU's IP host must lie in the host's network and
/// differ from its address. The keypath is that of the host, whose address and default-gateway are
/// read; newval is not used. Returns 0, or -1 with a text; without a text if a leaf cannot be read.
std::int32_t validate_onu_gateway_ip(std::int32_t sock, confd_trans_ctx* tctx,
                                     confd_hkeypath_t* keypath, confd_value_t* newval);

/// Returns 0 if two addresses (host byte order) are in the same network of that prefix length,
/// 0..32, or else -1. With length 0 only equal addresses are.
int chk_same_net(std::uint32_t a, std::uint32_t b, std::uint32_t plen);
