#pragma once

#include <cstdint>

/// What the card can do. lib_init reads the values from the platform; the daemon may set others.
/// Until then each has the initial value below.
extern "C" {

/// Whether the upstream bandwidth of a PON link is checked on this card; initially true. A card
/// without the check allows one more dynamic TCONT per line profile, so the setter sets the TCONT
/// limits too.
void set_do_bw_check(bool enabled);
bool get_do_bw_check();

/// Largest number of ONUs on one PON link; initially 128.
void set_num_onus_per_ponlink(std::uint32_t count);
std::uint32_t get_num_onus_per_ponlink();

/// Number of PON links of the board; initially 8.
void set_num_ponlinks(std::uint32_t count);
std::uint32_t get_num_ponlinks();

/// Number of PON links that may be configured; initially 8.
void set_num_manageable_ponlinks(std::uint32_t count);
std::uint32_t get_num_manageable_ponlinks();
}

namespace valid {

constexpr std::uint32_t kStaticTconts = 3;

/// A card without the bandwidth check allows one more dynamic TCONT.
constexpr std::uint32_t allowed_dynamic_tconts(bool bw_check) {
  return bw_check ? 3 : 4;
}

/// Limits of a line profile: TCONTs with a bandwidth profile of traffic type 2 to 5, and of type 1.
std::uint32_t max_dynamic_tconts();
std::uint32_t max_static_tconts();

}  // namespace valid
