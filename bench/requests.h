#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "bench/full_card.h"

namespace bench {

/// What a card has many of, and the number of entries that a change has.
enum class Dimension {
  kLinks,
  kOnusOfLink,  ///< the one that is changed
  kOnus,        ///< of all links
  kServicePorts,
  kBandwidthProfiles,
  kLineProfiles,
  kServiceProfiles,
  kRgProfiles,
  kOtherProfiles,
  kChangedEntries,
  kCount
};

constexpr std::size_t kDimensions = static_cast<std::size_t>(Dimension::kCount);

/// The name in the table, such as "service ports".
std::string_view to_string(Dimension dimension);

/// A request of the model, with accepted changes of a card for which it is called.
struct Request {
  std::string name;
  /// A change of that many entries of a card of that size.
  Edit (*edit)(const gponval::CardSize& size, int entries) = nullptr;
  /// What the rule must read. The number of platform calls may grow with nothing else.
  std::vector<Dimension> looks_at;
};

/// Every request of the model, once.
const std::vector<Request>& requests();

/// Adds what the changes need and a generated card lacks: an XGS-PON link without ONUs, and
/// one-shot provisioning of residential gateways.
std::string preparation();

}  // namespace bench
