#pragma once

#include <cstdint>
#include <ostream>

namespace gponval {

/// The size of a generated card. The default values make a full card.
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

/// Throws UsageError for a size that no valid card can have.
void check_card_size(const CardSize& size);

/// Writes a configuration of that size as XML, always the same for the same size. A commit of it to
/// an empty card is accepted without a warning if the card allows that many service ports.
void write_card(std::ostream& out, const CardSize& size);

}  // namespace gponval
