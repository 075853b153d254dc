#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "confd_maapi.h"
#include "nettypes/ipv4_addr_mask.h"

namespace valid {

/// Ports that interface groupings hold: port number and VLAN, 0 for untagged.
using GroupedPorts = std::set<std::pair<std::int32_t, std::int32_t>>;

/// Networks of interface groupings, each with the name of its WAN connection, in the order found.
using GroupedNetworks = std::vector<std::pair<nettypes::IPv4AddrMask, std::string>>;

}  // namespace valid

/// "itf_grp_validation": rejects an RG profile whose interface groupings share a port, have
/// networks that overlap, or a DHCP pool outside their network. Reads the transaction's WAN
/// connections below the keypath, the profile's entry; newval is not used. Gives 0 or -1; a -1 for
/// a configuration that cannot be read comes without a text.
std::int32_t validate_itf_grp(std::int32_t sock, confd_trans_ctx* tctx, confd_hkeypath_t* keypath,
                              confd_value_t* newval);

/// The ports of the profile at the keypath: each, with its VLAN, in one interface grouping at most.
std::int32_t validate_itf_grp_ports(std::int32_t sock, confd_trans_ctx* tctx,
                                    confd_hkeypath_t* keypath);

/// The same within one list of WAN connections, given by its path, and against the ports seen
/// before; adds its own to them. 0, or -1 with a text unless a VLAN cannot be read.
std::int32_t check_port_vlan(std::int32_t sock, confd_trans_ctx* tctx, valid::GroupedPorts& seen,
                             const std::string& wan_list);

/// The networks and DHCP pools of the profile at the keypath.
std::int32_t validate_itf_grp_net(std::int32_t sock, confd_trans_ctx* tctx,
                                  confd_hkeypath_t* keypath);

/// The same within one list of WAN connections, given by its path, and against the networks found
/// before; adds its own to them. Bridges have no DHCP server. 0, or -1 with a text unless something
/// cannot be read.
std::int32_t validate_itf_grp_dhcp(std::int32_t sock, confd_trans_ctx* tctx,
                                   const std::string& wan_list, valid::GroupedNetworks* networks,
                                   bool bridge);
