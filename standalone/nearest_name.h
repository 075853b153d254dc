#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace tarnd {

/// The candidate that somebody who wrote `wanted` probably meant, for a "did you mean": the one
/// with the fewest wrong letters, or else one that begins with `wanted`. None if all differ too
/// much. Upper and lower case count as the same letter.
std::optional<std::string_view> nearest(std::string_view wanted,
                                        std::span<const std::string_view> candidates);

/// ", did you mean 'vlan-id'?" to end a message with, or an empty text.
std::string did_you_mean(std::string_view wanted, std::span<const std::string_view> candidates);

}  // namespace tarnd
