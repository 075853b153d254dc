#pragma once

#include <string>

#include "netconf/card.h"

namespace tarnd::fuzz {

/// The small card, with all validators, as sessions share it. Each object starts from the same
/// configuration; there may be one at a time.
class ServedCard {
 public:
  explicit ServedCard(netconf::WarningPolicy warnings = netconf::WarningPolicy::kAccept);

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
