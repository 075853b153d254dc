#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "tools/gponval/card_size.h"

namespace gponval {

/// What differs between generated cards of one size. Without a seed nothing is varied; with the
/// same seed the cards are the same on every machine.
class CardVariation {
 public:
  CardVariation() = default;
  explicit CardVariation(std::uint64_t seed) : seed_(seed) {}

  /// The size with between half and all of what is configured on the ports of the card. The number
  /// of links is that of the hardware.
  [[nodiscard]] CardSize varied(CardSize size) const;

  /// Between half of the ONUs and all, but at least one of one.
  [[nodiscard]] std::uint32_t onus_on(std::uint32_t link, std::uint32_t most) const;

  /// Which of so many things the thing of this index and purpose has.
  [[nodiscard]] std::uint64_t pick(std::string_view purpose, std::uint64_t index,
                                   std::uint64_t of) const;

  /// A number below the limit for the whole card, 0 without a seed.
  [[nodiscard]] std::uint64_t offset(std::string_view purpose, std::uint64_t limit) const;

  /// Is part of the names of the profiles, with a hyphen at its end; empty without a seed.
  [[nodiscard]] std::string word() const;

  /// The first four letters of the serial numbers.
  [[nodiscard]] std::string_view vendor() const;

 private:
  [[nodiscard]] std::uint64_t random(std::string_view purpose, std::uint64_t index) const;
  [[nodiscard]] std::uint32_t half_or_more(std::string_view purpose, std::uint64_t index,
                                           std::uint32_t most) const;

  std::optional<std::uint64_t> seed_;
};

}  // namespace gponval
