#pragma once

#include <cstdint>

#include "confd_maapi.h"

/// "onu_gateway_ip_check": the gateway of an ONU's IP host must lie in the host's network and
/// differ from its address. keypath is that of the host; reads its address and default-gateway;
/// newval is not used. 0, or -1 with a text; without one where a leaf cannot be read.
std::int32_t validate_onu_gateway_ip(std::int32_t sock, confd_trans_ctx* tctx,
                                     confd_hkeypath_t* keypath, confd_value_t* newval);

/// Do two addresses (host byte order) share the network of that prefix length, 0..32? 0, or -1.
/// With length 0 an address shares its network with itself only.
int chk_same_net(std::uint32_t a, std::uint32_t b, std::uint32_t plen);
