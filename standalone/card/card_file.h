#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

namespace tarnd {

/// What the card defines about itself. An empty field is a capability that it does not define.
struct CardDescription {
  std::optional<bool> bw_check;
  std::optional<std::uint32_t> onus_per_link;
  std::optional<std::uint32_t> pon_links;
  std::optional<std::uint32_t> manageable_links;
  std::optional<std::uint32_t> max_service_ports;
  std::optional<bool> xgspon;
  bool init_fails = false;        ///< for tests: fm_init answers a failure
  bool local_slot_fails = false;  ///< for tests: fm_local_slot answers a failure

  /// The card that is played without a card file: bandwidth check, 128 ONUs a link, nothing else.
  static CardDescription standard();
};

/// Reads "key = value" lines: bw-check, onus-per-link, pon-links, manageable-links,
/// max-service-ports, xgspon. Throws InputError, one line that names file and key.
CardDescription read_card_file(const std::filesystem::path& file);

/// The card that fm_* answers for from now on.
void insert_card(const CardDescription& card);

}  // namespace tarnd
