#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace tarnd {

/// A character of a text in UTF-8.
struct Letter {
  std::uint32_t code = 0;
  std::size_t length = 0;  ///< in bytes
};

/// The byte there as a number.
std::uint32_t byte_at(std::string_view text, std::size_t at);

/// True when the byte there is one of a character, but not its first; false at the end.
bool continues_letter(std::string_view text, std::size_t at);

/// The character whose first byte is at `at`; none if the bytes there are not UTF-8.
std::optional<Letter> letter_at(std::string_view text, std::size_t at);

/// True for the control characters of ASCII and of Latin-1, line ends included.
bool is_control(const Letter& letter);

}  // namespace tarnd
