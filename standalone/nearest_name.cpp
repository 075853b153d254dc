#include "standalone/nearest_name.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <string>
#include <vector>

namespace tarnd {
namespace {

// One letter in this many may be wrong; in a shorter name, one.
constexpr std::size_t kLettersPerError = 3;

std::string lower_case(std::string_view text) {
  std::string lower(text);
  std::transform(lower.begin(), lower.end(), lower.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
  return lower;
}

// The number of letters to insert, delete, replace or swap with their neighbour. Row i of the
// table holds the distances from the first i letters of `from` to each beginning of `to`.
std::size_t edit_distance(std::string_view from, std::string_view to) {
  std::vector<std::size_t> before_last(to.size() + 1);
  std::vector<std::size_t> last(to.size() + 1);
  std::vector<std::size_t> row(to.size() + 1);
  for (std::size_t j = 0; j <= to.size(); ++j) row[j] = j;
  for (std::size_t i = 1; i <= from.size(); ++i) {
    before_last.swap(last);
    last.swap(row);
    row[0] = i;
    for (std::size_t j = 1; j <= to.size(); ++j) {
      const std::size_t replaced = last[j - 1] + (from[i - 1] == to[j - 1] ? 0 : 1);
      row[j] = std::min({last[j] + 1, row[j - 1] + 1, replaced});
      const bool swapped = i > 1 && j > 1 && from[i - 1] == to[j - 2] && from[i - 2] == to[j - 1];
      if (swapped) row[j] = std::min(row[j], before_last[j - 2] + 1);
    }
  }
  return row[to.size()];
}

std::size_t size_difference(std::string_view left, std::string_view right) {
  return std::max(left.size(), right.size()) - std::min(left.size(), right.size());
}

}  // namespace

std::optional<std::string_view> nearest(std::string_view wanted,
                                        std::span<const std::string_view> candidates) {
  if (wanted.empty()) return std::nullopt;
  const std::string text = lower_case(wanted);
  const std::size_t most = std::max<std::size_t>(1, text.size() / kLettersPerError);
  std::optional<std::string_view> found;
  std::optional<std::string_view> longer;
  std::size_t fewest = std::min(most + 1, text.size());  // a name of one letter must be right
  for (const std::string_view candidate : candidates) {
    const std::string name = lower_case(candidate);
    if (!longer.has_value() && name.starts_with(text)) longer = candidate;
    // A lower bound of the distance.
    if (size_difference(text, name) >= fewest) continue;
    const std::size_t distance = edit_distance(text, name);
    if (distance >= fewest) continue;
    fewest = distance;
    found = candidate;
  }
  return found.has_value() ? found : longer;
}

std::string did_you_mean(std::string_view wanted, std::span<const std::string_view> candidates) {
  const std::optional<std::string_view> name = nearest(wanted, candidates);
  return name.has_value() ? ", did you mean '" + std::string(*name) + "'?" : "";
}

}  // namespace tarnd
