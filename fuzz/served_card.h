#pragma once

#include <string>

#include "netconf/card.h"

namespace tarnd::fuzz {

/// A card with all validators, as sessions share it. There may be one at a time.
class ServedCard {
 public:
  /// With this configuration, in XML.
  explicit ServedCard(const std::string& configuration,
                      netconf::WarningPolicy warnings = netconf::WarningPolicy::kAccept);

  netconf::Card& shared() { return card_; }
  std::string running();
  [[nodiscard]] std::string candidate() const;
  /// What was logged since the last call.
  std::string take_log();

 private:
  std::string log_;
  netconf::Card card_;
};

}  // namespace tarnd::fuzz
