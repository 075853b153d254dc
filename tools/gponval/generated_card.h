#pragma once

#include <ostream>
#include <string>

#include "tools/gponval/card_size.h"
#include "tools/gponval/card_variation.h"

namespace gponval {

/// What is written besides, as XML of the model's namespace. Nodes that exist on every generated
/// card must have other keys.
struct CardAdditions {
  std::string card;        ///< in the entry of the card, slot 1/1
  std::string interfaces;  ///< in /config/interface
  std::string profiles;    ///< in /config/profile/gpon
  std::string others;      ///< in /config
};

/// Throws UsageError for a size that no valid card can have.
void check_card_size(const CardSize& size);

/// Writes a configuration of that size as XML, always the same for the same arguments. A commit of
/// it to an empty card is accepted without a warning if the card allows that many service ports,
/// and the additions are valid.
void write_card(std::ostream& out, const CardSize& size, const CardVariation& variation = {},
                const CardAdditions& additions = {});

}  // namespace gponval
