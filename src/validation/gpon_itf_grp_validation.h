#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "confd_maapi.h"
#include "nettypes/ipv4_addr_mask.h"

namespace valid {

/// The ports of interface groupings: port number and VLAN, 0 for untagged.
using GroupedPorts = std::set<std::pair<std::int32_t, std::int32_t>>;

/// Networks of interface groupings, each with the name of its WAN connection, in the order found.
using GroupedNetworks = std::vector<std::pair<nettypes::IPv4AddrMask, std::string>>;

}  // namespace valid

/// "itf_grp_validation": rejects an RG profile if two of its interface groupings share a port or
/// have overlapping networks, or if one has a DHCP pool outside its network. Reads the
/// transaction's WAN connections below the keypath, the profile's entry; newval is not used.
/// Returns 0, or -1 with a text; without a text if something cannot be read.
std::int32_t validate_itf_grp(std::int32_t sock, confd_trans_ctx* tctx, confd_hkeypath_t* keypath,
                              confd_value_t* newval);

/// Checks that each port of the profile at the keypath, with its VLAN, is in one interface grouping
/// at most. Returns as validate_itf_grp() does.
std::int32_t validate_itf_grp_ports(std::int32_t sock, confd_trans_ctx* tctx,
                                    confd_hkeypath_t* keypath);

/// The same for one list of WAN connections, given by its path. Its ports are compared with each
/// other and with those seen before, and added to them. Returns 0, or -1 with a text; without a
/// text if a VLAN cannot be read.
std::int32_t check_port_vlan(std::int32_t sock, confd_trans_ctx* tctx, valid::GroupedPorts& seen,
                             const std::string& wan_list);

/// Checks the networks and DHCP pools of the profile at the keypath. Returns as validate_itf_grp()
/// does.
std::int32_t validate_itf_grp_net(std::int32_t sock, confd_trans_ctx* tctx,
                                  confd_hkeypath_t* keypath);

/// The same for one list of WAN connections, given by its path. Its networks are compared with each
/// other and with those found before, and added to them. Bridges have no DHCP server. Returns 0, or
/// -1 with a text; without a text if something cannot be read.
std::int32_t validate_itf_grp_dhcp(std::int32_t sock, confd_trans_ctx* tctx,
                                   const std::string& wan_list, valid::GroupedNetworks* networks,
                                   bool bridge);
