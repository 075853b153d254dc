#pragma once

#include <cstdint>
#include <ostream>

namespace gponval {

/// How much a generated card holds. The standing values make a full card.
struct CardSize {
  std::uint32_t links = 16;
  std::uint32_t xgs_links = 0;
  std::uint32_t onus = 128;  ///< on each link
  std::uint32_t service_ports = 4096;
  std::uint32_t bandwidth_profiles = 128;
  std::uint32_t line_profiles = 512;
  std::uint32_t gems = 4;  ///< in each line profile
  std::uint32_t service_profiles = 64;
  std::uint32_t rg_profiles = 16;
  std::uint32_t tr069_profiles = 8;
  std::uint32_t sip_profiles = 8;
  std::uint32_t media_profiles = 8;
};

/// Refuses a size of which no valid card can be made. Throws UsageError.
void check_card_size(const CardSize& size);

/// Writes a configuration of that size as XML: the same bytes for the same size. Committed onto an
/// empty card it is accepted without a warning, provided that the card allows for that many service
/// ports.
void write_card(std::ostream& out, const CardSize& size);

}  // namespace gponval
