#include "tools/gponval/error_line.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "standalone/utf8.h"

namespace gponval {
namespace {

constexpr std::string_view kPrefix = "gponval: ";
constexpr std::string_view kGap = " ... ";
constexpr std::size_t kLongestLine = 400;
constexpr std::size_t kLongestHead = (kLongestLine - kGap.size()) / 2;
constexpr std::size_t kLongestTail = kLongestLine - kGap.size() - kLongestHead;

struct Range {
  std::uint32_t first;
  std::uint32_t last;
};

// Characters that are invisible or change how others are shown, besides the control characters:
// line separators, marks of the writing direction, private and unassigned ones.
constexpr std::array kInvisible = {
    Range{0xad, 0xad},       Range{0x61c, 0x61c},   Range{0x180e, 0x180e}, Range{0x200b, 0x200f},
    Range{0x2028, 0x202e},   Range{0x2060, 0x206f}, Range{0xe000, 0xf8ff}, Range{0xfe00, 0xfe0f},
    Range{0xfeff, 0xfeff},   Range{0xfff0, 0xfffb}, Range{0xfffe, 0xffff}, Range{0x1d173, 0x1d17a},
    Range{0xe0000, 0x10ffff}};

bool is_visible(const tarnd::Letter& letter) {
  const auto holds = [code = letter.code](const Range& range) {
    return range.first <= code && code <= range.last;
  };
  return !tarnd::is_control(letter) && std::none_of(kInvisible.begin(), kInvisible.end(), holds);
}

// The length in bytes of the printable character that the text begins with; 0 if it begins with
// none.
std::size_t letter_size(std::string_view text) {
  const std::optional<tarnd::Letter> letter = tarnd::letter_at(text, 0);
  return letter.has_value() && is_visible(*letter) ? letter->length : 0;
}

std::string escaped(unsigned char byte) {
  constexpr std::string_view kHexDigits = "0123456789abcdef";
  return {'\\', 'x', kHexDigits[byte >> 4U], kHexDigits[byte & 0xfU]};
}

// The text as it is shown, in pieces that cannot be cut.
std::vector<std::string> shown_letters(std::string_view text) {
  std::vector<std::string> letters;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t size = letter_size(text.substr(at));
    letters.push_back(size == 0 ? escaped(static_cast<unsigned char>(text[at]))
                                : std::string(text.substr(at, size)));
    at += std::max<std::size_t>(size, 1);
  }
  return letters;
}

// The first of the letters, as many as fit.
template <typename Iterator>
Iterator end_of_room(Iterator letter, Iterator end, std::size_t room) {
  for (; letter != end && letter->size() <= room; ++letter) room -= letter->size();
  return letter;
}

template <typename Iterator>
std::string joined(Iterator begin, Iterator end) {
  std::string text;
  for (; begin != end; ++begin) text += *begin;
  return text;
}

}  // namespace

std::string error_line(std::string_view text) {
  std::string whole(kPrefix);
  whole += text.substr(0, kLongestLine);
  // The shown form of a letter is never shorter than the letter, so this part of a long text is
  // enough.
  if (text.size() > kLongestLine)
    whole += text.substr(std::max(text.size() - kLongestLine, kLongestLine));
  const std::vector<std::string> letters = shown_letters(whole);
  if (end_of_room(letters.begin(), letters.end(), kLongestLine) == letters.end()) {
    return joined(letters.begin(), letters.end());
  }
  const auto head = end_of_room(letters.begin(), letters.end(), kLongestHead);
  const auto tail = end_of_room(letters.rbegin(), letters.rend(), kLongestTail).base();
  return joined(letters.begin(), head) + std::string(kGap) + joined(tail, letters.end());
}

std::string printable(std::string_view text) {
  const std::vector<std::string> letters = shown_letters(text);
  return joined(letters.begin(), letters.end());
}

void print_error(std::string_view text) {
  std::cerr << error_line(text) << '\n';
}

}  // namespace gponval
