#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "confd_maapi.h"

/// The walk over a service profile's VLAN mappings that the checks of their number and of their
/// matches share.
namespace valid {

/// The ONU's virtual Ethernet interface point (VEIP) counts as this port, and so shares it with an
/// Ethernet port of the same number.
constexpr std::uint32_t kVeipPort = 127;

/// Only the low 8 bits of port numbers are compared.
constexpr std::uint32_t port_key(std::uint32_t port) {
  return port & 0xFFU;
}

/// One VLAN mapping of the transaction. It owns nothing.
struct VlanMapping {
  std::int32_t sock;
  int thandle;
  const char* profile;       ///< name of the service profile
  const confd_value_t* key;  ///< the mapping's key; valid until the next step of the walk
};

enum class PortsResult : std::uint8_t {
  kAccepted,    ///< every port
  kRefused,     ///< one port; the ports after it were not checked
  kNone,        ///< the mapping applies to no port
  kUnreadable,  ///< noted in the debug log
};

/// Calls `accepts` for each port that the mapping applies to until one is refused: for its Ethernet
/// ports in their order, or for the VEIP if it has none.
PortsResult check_ports(const VlanMapping& mapping,
                        const std::function<bool(std::uint32_t port)>& accepts);

/// Notes in the debug log that a mapping could not be read.
void note_unreadable_mapping();

/// Checks one mapping. Returns the text that rejects it, or an empty one.
using MappingRule = std::function<std::string(const VlanMapping& mapping)>;

/// Applies the rule to the VLAN mappings of the service profile in key order until one is rejected.
/// Returns CONFD_OK, or CONFD_ERR with the rule's text set.
std::int32_t check_vlan_mappings(std::int32_t sock, confd_trans_ctx* tctx, const char* profile,
                                 const MappingRule& rule);

}  // namespace valid
