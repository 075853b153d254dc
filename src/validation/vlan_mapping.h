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

/// Ports are told apart by the low 8 bits of their number.
constexpr std::uint32_t port_key(std::uint32_t port) {
  return port & 0xFFU;
}

/// One VLAN mapping of the transaction. It owns nothing.
struct VlanMapping {
  std::int32_t sock;
  int thandle;
  const char* profile;       ///< name of the service profile
  const confd_value_t* key;  ///< the mapping's key; valid until the walk goes on
};

enum class PortsResult : std::uint8_t {
  kAccepted,    ///< every port
  kRefused,     ///< one port; those after it were not asked about
  kNone,        ///< the mapping applies to no port
  kUnreadable,  ///< noted in the debug log
};

/// Asks about each port that the mapping applies to: its Ethernet ports in their order, or the VEIP
/// where it has none.
PortsResult check_ports(const VlanMapping& mapping,
                        const std::function<bool(std::uint32_t port)>& accepts);

/// Notes in the debug log that a mapping could not be read.
void note_unreadable_mapping();

/// Judges one mapping: the text that refuses it, empty where it may stand.
using MappingRule = std::function<std::string(const VlanMapping& mapping)>;

/// Puts the rule to the VLAN mappings of the service profile in key order until one is refused.
/// Gives CONFD_OK, or CONFD_ERR with the rule's text set.
std::int32_t check_vlan_mappings(std::int32_t sock, confd_trans_ctx* tctx, const char* profile,
                                 const MappingRule& rule);

}  // namespace valid
