#pragma once

#include <cstdint>
#include <unordered_map>

#include "confd_maapi.h"

/// "vlan_limit_check": rejects a service profile with more than 20 VLAN mappings for one port. The
/// keypath is that of a VLAN mapping, its element 2 the service profile; newval is not used. Reads
/// all VLAN mappings of the profile. Returns 0, or -1 with a text.
std::int32_t validate_vlan_limit(std::int32_t sock, confd_trans_ctx* tctx,
                                 confd_hkeypath_t* keypath, confd_value_t* newval);

/// Counts one more VLAN mapping for the port; the counter's keys are the low 8 bits of port
/// numbers. Returns 0, or -1 if the port now has too many; the mapping is counted in both cases.
std::int32_t check_vlan_counter(std::uint32_t port,
                                std::unordered_map<std::uint32_t, std::uint32_t>& counter);
