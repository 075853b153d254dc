#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tools/gponval/card_size.h"
#include "tools/gponval/generated_card.h"

namespace gponval {

/// Where the parts of a fault are, so that no two faults meet.
struct FaultPlace {
  std::uint32_t port = 0;          ///< of a link that no other part of the card has
  std::uint32_t service_port = 0;  ///< the first of as many numbers as the fault needs
};

/// A kind of fault, which the plug-in finds if the card is committed to an empty one.
struct FaultKind {
  std::string_view name;
  std::string_view requests;  ///< that report it, and no others do; separated by commas
  std::string_view text;      ///< what is wrong
  void (*add)(CardAdditions& card, const FaultPlace& place);
  std::uint32_t service_ports = 0;        ///< that it adds
  std::uint32_t least_service_ports = 0;  ///< of the whole card
};

/// All kinds, in the order in which they are printed.
const std::vector<FaultKind>& fault_kinds();

/// The kinds in a list such as "serial-number,ssid", or all for "all". Throws UsageError for an
/// unknown name.
std::vector<const FaultKind*> parse_faults(const std::string& list);

/// Returns what is to be written besides the card. The service ports of the faults are among those
/// of the size, which is then what remains.
CardAdditions add_faults(const std::vector<const FaultKind*>& faults, CardSize& size);

}  // namespace gponval
