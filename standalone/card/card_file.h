#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace tarnd {

/// What the card defines about itself. An empty field is a capability that it does not define.
struct CardDescription {
  std::optional<bool> bw_check;
  std::optional<std::uint32_t> onus_per_link;
  std::optional<std::uint32_t> pon_links;
  std::optional<std::uint32_t> manageable_links;
  std::optional<std::uint32_t> max_service_ports;
  std::optional<bool> xgspon;
  bool init_fails = false;        ///< for tests: fm_init fails
  bool local_slot_fails = false;  ///< for tests: fm_local_slot fails

  /// The card that is used without a card file: bandwidth check, 128 ONUs a link, nothing else.
  static CardDescription standard();
};

/// Reads the text of a card file, "key = value" lines: bw-check, onus-per-link, pon-links,
/// manageable-links, max-service-ports, xgspon. Throws InputError with the line.
CardDescription parse_card(std::string_view text);

/// Sets the card whose values fm_* return from now on.
void insert_card(const CardDescription& card);

}  // namespace tarnd
