#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "bench/full_card.h"

namespace bench {

/// What a card has many of. What a change touches counts as well: its entries.
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

/// The name for the reader, such as "service ports".
std::string_view to_string(Dimension dimension);

/// A request of the model, and changes of a card that call it and are accepted.
struct Request {
  std::string name;
  /// A change of that many entries of a card of that size.
  Edit (*edit)(const gponval::CardSize& size, int entries) = nullptr;
  /// What the rule has to look at: with nothing else may the number of platform calls grow.
  std::vector<Dimension> looks_at;
};

/// Every request of the model, once.
const std::vector<Request>& requests();

/// What the changes need and a generated card lacks: an XGS-PON link without ONUs, and residential
/// gateways that are provisioned once.
std::string preparation();

}  // namespace bench
