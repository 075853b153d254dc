#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "card/fm_port_type.h"

namespace tarnd {

/// The values of a service port that the check of all service ports compares.
struct Port {
  std::string interface_name;
  fm_port_type type = FM_PORT_TYPE_GPON;
  std::uint32_t onu = 0;
  std::uint32_t gem = 0;
  std::int32_t vlan = 0;
};

/// Ports spread over links, ONUs and two GEM ports, each with a VLAN of its own on its link.
Port port_of(int id);

/// The least possible work: inserts the same keys into the same kind of table. Returns its size.
std::size_t bare_loop(const std::vector<Port>& ports);

}  // namespace tarnd
