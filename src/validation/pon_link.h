#pragma once

#include <cstdint>
#include <string>

namespace valid {

/// The lists of PON links below "/config/interface", by kind of link.
inline constexpr const char* kGponList = "gpon";
inline constexpr const char* kXgsponList = "xgspon";

/// The keys of a PON link as a path has them, such as "1 1 3".
inline std::string link_keys(std::uint32_t chassis, std::uint32_t slot, std::uint32_t port) {
  return std::to_string(chassis) + " " + std::to_string(slot) + " " + std::to_string(port);
}

}  // namespace valid
