#pragma once

#include <cstdint>

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

/// The card of a small town.
constexpr CardSize kTown = {
    .links = 2,
    .xgs_links = 2,
    .onus = 16,
    .service_ports = 64,
    .bandwidth_profiles = 10,
    .line_profiles = 6,
    .gems = 3,
    .service_profiles = 4,
    .rg_profiles = 4,
    .tr069_profiles = 2,
    .sip_profiles = 2,
    .media_profiles = 2,
};

}  // namespace gponval
