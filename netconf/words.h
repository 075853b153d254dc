#pragma once

#include <array>
#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "netconf/operation.h"
#include "netconf/xml_text.h"

namespace tarnd::netconf {

/// A word that a parameter may have.
template <typename Meaning>
struct Word {
  std::string_view text;
  Meaning meaning;
};

/// What the parameter's word means; no value if the parameter is not given. Refuses the operation
/// if the word is unknown, and names those that are known.
template <typename Meaning, std::size_t Size>
std::optional<Meaning> meaning_of(const Run& run, std::string_view parameter,
                                  const std::array<Word<Meaning>, Size>& words) {
  const Element* given = find_parameter(run, parameter);
  if (given == nullptr) return std::nullopt;
  std::string known;
  for (std::size_t i = 0; i < Size; ++i) {
    if (words[i].text == trimmed(given->text)) return words[i].meaning;
    if (i > 0) known += i + 1 < Size ? ", " : " or ";
    known += words[i].text;
  }
  refuse(invalid_value(std::string(parameter) + " is '" + std::string(trimmed(given->text)) +
                       "'; " + known + " is needed"));
}

}  // namespace tarnd::netconf
