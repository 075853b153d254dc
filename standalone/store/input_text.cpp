#include "standalone/store/input_text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <optional>

#include "standalone/input_error.h"
#include "standalone/utf8.h"

namespace tarnd::store {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::size_t kLongestQuote = 60;

std::uint32_t byte_at(std::string_view text, std::size_t at) {
  return static_cast<unsigned char>(text[at]);
}

bool continues(std::string_view text, std::size_t at) {
  constexpr std::uint32_t kMask = 0xC0;
  constexpr std::uint32_t kContinuation = 0x80;
  return at < text.size() && (byte_at(text, at) & kMask) == kContinuation;
}

bool is_ascii(std::string_view text, std::size_t at) {
  return byte_at(text, at) < 0x80;
}

// Skips words of ASCII letters without a NUL byte, several letters at a time.
std::size_t end_of_plain_ascii(std::string_view text, std::size_t at) {
  constexpr std::uint64_t kLowest = 0x0101010101010101;
  constexpr std::uint64_t kHighest = 0x8080808080808080;
  for (; text.size() - at >= sizeof(std::uint64_t); at += sizeof(std::uint64_t)) {
    std::uint64_t word = 0;
    std::memcpy(&word, text.data() + at, sizeof word);
    // Some byte has its highest bit, or gets it when one is taken away from a zero.
    if (((word | (word - kLowest)) & kHighest) != 0) break;
  }
  return at;
}

bool is_control(char c) {
  return static_cast<unsigned char>(c) < ' ' && c != '\t' && c != '\n' && c != '\r';
}

// Code points that Unicode keeps for no character at all.
bool is_noncharacter(std::uint32_t code) {
  return (code >= 0xFDD0 && code <= 0xFDEF) || (code & 0xFFFE) == 0xFFFE;
}

std::string hex(std::uint32_t byte) {
  std::array<char, sizeof "0xff"> text{};
  std::snprintf(text.data(), text.size(), "0x%02x", byte);
  return text.data();
}

void refuse_utf16(std::string_view text) {
  if (text.size() < 2) return;
  const std::uint32_t first = byte_at(text, 0);
  const std::uint32_t second = byte_at(text, 1);
  const bool marked = (first == 0xFF && second == 0xFE) || (first == 0xFE && second == 0xFF);
  if (marked) throw InputError("the text is UTF-16 or UTF-32; UTF-8 is needed", 1);
}

}  // namespace

std::size_t line_at(std::string_view text, std::size_t offset) {
  const auto end = text.begin() + static_cast<std::ptrdiff_t>(std::min(offset, text.size()));
  return 1 + static_cast<std::size_t>(std::count(text.begin(), end, '\n'));
}

LineTable::LineTable(std::string_view text) {
  for (std::size_t at = text.find('\n'); at != std::string_view::npos;
       at = text.find('\n', at + 1)) {
    ends_.push_back(at);
  }
}

std::size_t LineTable::line_of(std::size_t offset) const {
  return 1 + static_cast<std::size_t>(std::lower_bound(ends_.begin(), ends_.end(), offset) -
                                      ends_.begin());
}

std::string_view checked_text(const std::string& text) {
  std::string_view rest = text;
  refuse_utf16(rest);
  if (rest.substr(0, kByteOrderMark.size()) == kByteOrderMark) {
    rest.remove_prefix(kByteOrderMark.size());
  }
  if (rest.substr(0, kByteOrderMark.size()) == kByteOrderMark) {
    throw InputError("a second byte order mark", 1);
  }
  if (rest.find_first_not_of(" \t\r\n") == std::string_view::npos) {
    throw InputError("there is nothing in it");
  }
  std::size_t at = 0;
  while (at < rest.size()) {
    at = end_of_plain_ascii(rest, at);
    if (at == rest.size()) break;
    if (is_ascii(rest, at)) {
      if (rest[at] == '\0') throw InputError("holds a NUL byte", line_at(rest, at));
      ++at;
      continue;
    }
    const std::optional<Letter> letter = letter_at(rest, at);
    if (!letter.has_value()) {
      throw InputError(
          "the text is not UTF-8: the byte " + hex(byte_at(rest, at)) + " begins no letter",
          line_at(rest, at));
    }
    at += letter->length;
  }
  return rest;
}

bool is_yang_text(std::string_view text) {
  std::size_t at = 0;
  while (at < text.size()) {
    if (is_ascii(text, at)) {
      if (is_control(text[at])) return false;
      ++at;
      continue;
    }
    const std::optional<Letter> letter = letter_at(text, at);
    if (!letter.has_value() || is_noncharacter(letter->code)) return false;
    at += letter->length;
  }
  return true;
}

std::string excerpt(std::string_view text) {
  if (text.size() <= kLongestQuote) return "'" + std::string(text) + "'";
  std::size_t end = kLongestQuote;
  while (end > 0 && continues(text, end)) --end;
  return "'" + std::string(text.substr(0, end)) + "...'";
}

}  // namespace tarnd::store
