#include "gpon_itf_grp_validation.h"

#include <arpa/inet.h>

#include <array>
#include <optional>

#include "cl_elapsed_time.h"
#include "gpon_vald_trace_itf.h"
#include "validation_guards.h"
#include "validation_texts.h"

namespace {

// The functions in whose names the helpers below write to the trace.
constexpr const char* kPortCheck = "check_port_vlan";
constexpr const char* kNetworkCheck = "validate_itf_grp_dhcp";

struct WanList {
  const char* path;  // below the profile
  bool bridge;
};
constexpr std::array<WanList, 3> kWanLists = {{
    {"/wan-pppoe-connection", false},
    {"/wan-ip-connection", false},
    {"/wan-bridge-connection", true},
}};

constexpr std::size_t kProfilePathSize = 256;
constexpr std::size_t kKeyTextSize = 49;
constexpr unsigned int kHostPrefixLength = 32;

// By the number that the port has in the data model.
constexpr std::array<const char*, 6> kPortNames = {"eth1", "eth2", "eth3",
                                                   "eth4", "wl0",  "wl0-vap1"};
constexpr std::int32_t kFirstWirelessPort = 4;
constexpr std::int32_t kUntagged = 0;

constexpr const char* kWirelessPortReused =
    "Port %s cannot be used in more than one interface grouping";
constexpr const char* kUntaggedPortReused =
    "Port %s untagged cannot be used in more than one interface grouping";
constexpr const char* kTaggedPortReused =
    "Port %s with VLAN %d cannot be used in more than one interface grouping";
constexpr const char* kNetworkConflict =
    "Network %s from WAN %s conflicts with network %s from WAN %s";
constexpr const char* kPoolOrder = "DHCP pool start-address must be lower than the end-address";
constexpr const char* kStartOutsideNetwork =
    "Start address %s for DHCP pool is not part of network %s";
constexpr const char* kEndOutsideNetwork = "End address %s for DHCP pool is not part of network %s";

struct Wan {
  std::int32_t sock;
  confd_trans_ctx* tctx;
  const std::string& list;
  std::string key;
};

Wan wan_at(valid::Cursor& wans, std::int32_t sock, confd_trans_ctx* tctx, const std::string& list) {
  return {sock, tctx, list, valid::value_text(&wans.entry().keys[0], kKeyTextSize)};
}

// `node` is below the interface grouping; an empty one is the grouping itself.
bool has(const Wan& wan, const char* node) {
  return maapi_exists(wan.sock, wan.tctx->thandle, "%s{%s}/itf-grouping/%s", wan.list.c_str(),
                      wan.key.c_str(), node) == 1;
}

std::string profile_name(const confd_hkeypath_t* keypath) {
  return valid::value_text(&keypath->v[0][0], kKeyTextSize);
}

// Ports

// A port without a VLAN is untagged. No value if the VLAN cannot be read.
std::optional<std::int32_t> read_vlan(const Wan& wan, const confd_value_t* port) {
  std::uint32_t vlan = kUntagged;
  const int result = maapi_get_u_int32_elem(wan.sock, wan.tctx->thandle, &vlan,
                                            "%s{%s}/itf-grouping/ports{%x}/vlan", wan.list.c_str(),
                                            wan.key.c_str(), port);
  if (result != CONFD_OK && confd_errno != CONFD_ERR_NOEXISTS) {
    return std::nullopt;
  }
  return static_cast<std::int32_t>(vlan);
}

void report_reused_port(confd_trans_ctx* tctx, std::int32_t port, std::int32_t vlan) {
  const char* const name = kPortNames.at(static_cast<std::size_t>(port));
  if (port >= kFirstWirelessPort) {
    confd_trans_seterr(tctx, kWirelessPortReused, name);
  } else if (vlan == kUntagged) {
    confd_trans_seterr(tctx, kUntaggedPortReused, name);
  } else {
    confd_trans_seterr(tctx, kTaggedPortReused, name, vlan);
  }
}

// As everywhere in this file, a rejection leaves its cursors open: ConfD frees them with the
// transaction.
std::int32_t check_grouping(const Wan& wan, valid::GroupedPorts& seen) {
  valid::Cursor ports(wan.sock, wan.tctx, "%s{%s}/itf-grouping/ports", wan.list.c_str(),
                      wan.key.c_str());
  while (ports.next()) {
    const maapi_cursor& port_cursor = ports.entry();
    const std::int32_t port = CONFD_GET_ENUM_VALUE(&port_cursor.keys[0]);
    const std::optional<std::int32_t> vlan = read_vlan(wan, &port_cursor.keys[0]);
    if (!vlan.has_value()) {
      VALID_TRACE_AS(kPortCheck, kTraceFlow,
                     "Failed getting port VLAN for Itf Grouping on WAN from ConfD (%s)",
                     confd_lasterr());
      ports.release();
      return CONFD_ERR;
    }
    VALID_TRACE_AS_IF(kPortCheck, kTraceDetail, "Checking port %d vlan %d itf grp", port, *vlan);
    if (!seen.insert({port, *vlan}).second) {
      report_reused_port(wan.tctx, port, *vlan);
      ports.release();
      return CONFD_ERR;
    }
  }
  return CONFD_OK;
}

// Networks and DHCP pools

// The address in network byte order.
nettypes::IPv4AddrMask network_of(in_addr address, unsigned int prefix_length) {
  nettypes::IPv4AddrMask network;
  network.set_addr(ntohl(address.s_addr));
  network.set_prefix_len(prefix_length);
  return network;
}

std::int32_t add_network(const Wan& wan, valid::GroupedNetworks& networks) {
  confd_ipv4_prefix address{};
  if (maapi_get_ipv4_and_plen_elem(wan.sock, wan.tctx->thandle, &address,
                                   "%s{%s}/itf-grouping/ipv4-address", wan.list.c_str(),
                                   wan.key.c_str()) != CONFD_OK) {
    VALID_TRACE_AS(kNetworkCheck, kTraceDetail, "Failed to get ipv4 %s", confd_lasterr());
    return CONFD_ERR;
  }
  const nettypes::IPv4AddrMask network = network_of(address.ip, address.len);
  for (const auto& [earlier, earlier_wan] : networks) {
    if (network.Overlap(earlier)) {
      confd_trans_seterr(wan.tctx, kNetworkConflict, network.to_string().c_str(), wan.key.c_str(),
                         earlier.to_string().c_str(), earlier_wan.c_str());
      return CONFD_ERR;
    }
  }
  networks.emplace_back(network, wan.key);
  return CONFD_OK;
}

// No value if the address cannot be read.
std::optional<nettypes::IPv4AddrMask> read_pool_address(const Wan& wan, const char* leaf) {
  in_addr address{};
  if (maapi_get_ipv4_elem(wan.sock, wan.tctx->thandle, &address,
                          "%s{%s}/itf-grouping/dhcp-server-address-pool/%s", wan.list.c_str(),
                          wan.key.c_str(), leaf) != CONFD_OK) {
    return std::nullopt;
  }
  return network_of(address, kHostPrefixLength);
}

// Start and end may be the same address, although the text says "lower".
std::int32_t check_pool(confd_trans_ctx* tctx, const nettypes::IPv4AddrMask& start,
                        const nettypes::IPv4AddrMask& end, const nettypes::IPv4AddrMask& network) {
  if (start.addr_to_uint32() > end.addr_to_uint32()) {
    confd_trans_seterr(tctx, kPoolOrder);
    return CONFD_ERR;
  }
  if (!start.Overlap(network)) {
    confd_trans_seterr(tctx, kStartOutsideNetwork, start.addr_to_string().c_str(),
                       network.to_string().c_str());
    return CONFD_ERR;
  }
  if (!end.Overlap(network)) {
    confd_trans_seterr(tctx, kEndOutsideNetwork, end.addr_to_string().c_str(),
                       network.to_string().c_str());
    return CONFD_ERR;
  }
  return CONFD_OK;
}

std::int32_t check_dhcp(const Wan& wan, const nettypes::IPv4AddrMask& network) {
  int enabled = 0;
  if (maapi_get_bool_elem(wan.sock, wan.tctx->thandle, &enabled, "%s{%s}/itf-grouping/dhcp-server",
                          wan.list.c_str(), wan.key.c_str()) != CONFD_OK) {
    VALID_TRACE_AS(kNetworkCheck, kTraceFlow, "Failed to get DHCP info from ConfD");
    return CONFD_ERR;
  }
  if (enabled == 0) {
    VALID_TRACE_AS(kNetworkCheck, kTraceFlow,
                   "DHCP not enabled for this Interface grouping, skipping validation of DHCP");
    return CONFD_OK;
  }
  const auto end = read_pool_address(wan, "end-address");
  if (!end.has_value()) {
    VALID_TRACE_AS(kNetworkCheck, kTraceFlow, "Failed to get end-address");
    return CONFD_ERR;
  }
  const auto start = read_pool_address(wan, "start-address");
  if (!start.has_value()) {
    VALID_TRACE_AS(kNetworkCheck, kTraceDetail, "Failed to get start-address");
    return CONFD_ERR;
  }
  return check_pool(wan.tctx, *start, *end, network);
}

}  // namespace

std::int32_t validate_itf_grp(std::int32_t sock, confd_trans_ctx* tctx, confd_hkeypath_t* keypath,
                              confd_value_t* /*newval*/) {
  const valid::ValidationTrace trace("validate_itf_grp");
  if (validate_itf_grp_ports(sock, tctx, keypath) != CONFD_OK ||
      validate_itf_grp_net(sock, tctx, keypath) != CONFD_OK) {
    return trace.end(CONFD_ERR);
  }
  return trace.end(CONFD_OK);
}

std::int32_t validate_itf_grp_ports(std::int32_t sock, confd_trans_ctx* tctx,
                                    confd_hkeypath_t* keypath) {
  const cl_ElapsedTime timer;
  VALID_TRACE_IF(kTraceDetail, "Checking port+vlan Itf Grp");

  const std::string profile_path = valid::keypath_text(keypath, kProfilePathSize);
  valid::GroupedPorts seen;
  for (const WanList& wans : kWanLists) {
    if (check_port_vlan(sock, tctx, seen, profile_path + wans.path) != CONFD_OK) {
      return CONFD_ERR;
    }
  }
  VALID_TRACE_IF(kTraceDetail,
                 "Took %d usecs to validate the Interface Groupings Ports from RG-profile %s",
                 static_cast<int>(timer.get_elapsed_time_usec()), profile_name(keypath).c_str());
  return CONFD_OK;
}

std::int32_t check_port_vlan(std::int32_t sock, confd_trans_ctx* tctx, valid::GroupedPorts& seen,
                             const std::string& wan_list) {
  valid::Cursor wans(sock, tctx, "%s", wan_list.c_str());
  while (wans.next()) {
    const Wan wan = wan_at(wans, sock, tctx, wan_list);
    if (!has(wan, "")) {
      VALID_TRACE_IF(kTraceDetail,
                     "Interface Grouping not created for WAN %s. Skipping validation.",
                     wan.key.c_str());
      continue;
    }
    if (check_grouping(wan, seen) != CONFD_OK) {
      wans.release();
      return CONFD_ERR;
    }
  }
  return CONFD_OK;
}

std::int32_t validate_itf_grp_net(std::int32_t sock, confd_trans_ctx* tctx,
                                  confd_hkeypath_t* keypath) {
  const cl_ElapsedTime timer;
  VALID_TRACE_IF(kTraceDetail, "Checking port vlan itf grp");

  const std::string profile_path = valid::keypath_text(keypath, kProfilePathSize);
  valid::GroupedNetworks networks;
  for (const WanList& wans : kWanLists) {
    if (validate_itf_grp_dhcp(sock, tctx, profile_path + wans.path, &networks, wans.bridge) !=
        CONFD_OK) {
      return CONFD_ERR;
    }
  }
  VALID_TRACE_IF(kTraceDetail,
                 "Took %d usecs to validate the Interface Groupings IP and DHCP configurations "
                 "from RG-profile %s",
                 static_cast<int>(timer.get_elapsed_time_usec()), profile_name(keypath).c_str());
  return CONFD_OK;
}

std::int32_t validate_itf_grp_dhcp(std::int32_t sock, confd_trans_ctx* tctx,
                                   const std::string& wan_list, valid::GroupedNetworks* networks,
                                   bool bridge) {
  VALID_TRACE_IF(kTraceDetail, "Checking Itf Grouping DHCP");
  valid::Cursor wans(sock, tctx, "%s", wan_list.c_str());
  while (wans.next()) {
    const Wan wan = wan_at(wans, sock, tctx, wan_list);
    if (!has(wan, "")) {
      VALID_TRACE(kTraceDetail, "No Interface Grouping for wan %s, skipping validation",
                  wan.key.c_str());
      continue;
    }
    if (!has(wan, "ipv4-address")) {
      VALID_TRACE(kTraceDetail,
                  "IP not configured for this Interface grouping, skipping validation");
      continue;
    }
    if (add_network(wan, *networks) != CONFD_OK) {
      wans.release();
      return CONFD_ERR;
    }
    if (bridge) {
      VALID_TRACE(kTraceDetail,
                  "WAN bridge does not have DHCP configuration, skipping this part of validation");
      continue;
    }
    if (check_dhcp(wan, networks->back().first) != CONFD_OK) {
      wans.release();
      return CONFD_ERR;
    }
  }
  return CONFD_OK;
}
