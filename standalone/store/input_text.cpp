#include "standalone/store/input_text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <optional>
#include <utility>

#include "standalone/input_error.h"
#include "standalone/utf8.h"

namespace tarnd::store {
namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kWhiteSpace = " \t\r\n";
constexpr std::size_t kLongestLetter = 4;
constexpr std::size_t kLongestQuote = 60;

bool is_ascii(std::string_view text, std::size_t at) {
  return static_cast<unsigned char>(text[at]) < 0x80;
}

// Skips words of ASCII letters without a NUL byte, several letters at a time.
std::size_t end_of_plain_ascii(std::string_view text, std::size_t at) {
  constexpr std::uint64_t kLowest = 0x0101010101010101;
  constexpr std::uint64_t kHighest = 0x8080808080808080;
  for (; text.size() - at >= sizeof(std::uint64_t); at += sizeof(std::uint64_t)) {
    std::uint64_t word = 0;
    std::memcpy(&word, text.data() + at, sizeof word);
    // True if a byte has its highest bit set, or is zero: subtracting one then sets it.
    if (((word | (word - kLowest)) & kHighest) != 0) break;
  }
  return at;
}

bool is_control(char c) {
  return static_cast<unsigned char>(c) < ' ' && c != '\t' && c != '\n' && c != '\r';
}

// Code points that Unicode assigns to no character.
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

std::string_view without_mark(std::string_view text) {
  refuse_utf16(text);
  if (text.substr(0, kByteOrderMark.size()) != kByteOrderMark) return text;
  text.remove_prefix(kByteOrderMark.size());
  if (text.substr(0, kByteOrderMark.size()) == kByteOrderMark) {
    throw InputError("a second byte order mark", 1);
  }
  return text;
}

std::string no_letter(std::string_view bytes) {
  return "the text is not UTF-8: the byte " + hex(byte_at(bytes, 0)) + " begins no letter";
}

// Whether these are the first bytes of a letter that may continue.
bool begins_a_letter(std::string_view bytes) {
  if (bytes.size() >= kLongestLetter) return false;
  // The least and the greatest byte that continues a letter. Which of them can follow depends on
  // the first byte.
  for (const char next : {'\x80', '\xBF'}) {
    std::string completed(bytes);
    completed.resize(kLongestLetter, next);
    const std::optional<Letter> letter = letter_at(completed, 0);
    if (letter.has_value() && letter->length > bytes.size()) return true;
  }
  return false;
}

}  // namespace

std::size_t line_at(std::string_view text, std::size_t offset) {
  const std::string_view before = text.substr(0, offset);
  std::size_t line = 1;
  for (std::size_t at = before.find('\n'); at != std::string_view::npos;
       at = before.find('\n', at + 1)) {
    ++line;
  }
  return line;
}

void TextCheck::refuse(std::string_view before, const std::string& what) const {
  throw InputError(what, lines_ + line_at(before, before.size()));
}

// The end of the letter that the previous piece began.
std::size_t TextCheck::end_of_cut_letter(std::string_view piece) {
  if (cut_.empty()) return 0;
  const std::size_t begun = cut_.size();
  cut_ += piece.substr(0, kLongestLetter - begun);
  const std::optional<Letter> letter = letter_at(cut_, 0);
  if (!letter.has_value()) refuse({}, no_letter(cut_));
  cut_.clear();
  return letter->length - begun;
}

std::string_view TextCheck::take(std::string_view piece) {
  if (!std::exchange(begun_, true)) piece = without_mark(piece);
  blank_ = blank_ && piece.find_first_not_of(kWhiteSpace) == std::string_view::npos;
  std::size_t at = end_of_cut_letter(piece);
  while (at < piece.size()) {
    at = end_of_plain_ascii(piece, at);
    if (at == piece.size()) break;
    if (is_ascii(piece, at)) {
      if (piece[at] == '\0') refuse(piece.substr(0, at), "holds a NUL byte");
      ++at;
      continue;
    }
    const std::optional<Letter> letter = letter_at(piece, at);
    if (!letter.has_value()) {
      const std::string_view rest = piece.substr(at);
      if (!begins_a_letter(rest)) refuse(piece.substr(0, at), no_letter(rest));
      cut_ = rest;
      break;
    }
    at += letter->length;
  }
  lines_ += line_at(piece, piece.size()) - 1;
  return piece;
}

void TextCheck::finish() const {
  if (blank_) throw InputError("there is nothing in it");
  if (!cut_.empty()) refuse({}, no_letter(cut_));
}

std::string_view checked_text(std::string_view text) {
  TextCheck check;
  const std::string_view checked = check.take(text);
  check.finish();
  return checked;
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
  while (end > 0 && continues_letter(text, end)) --end;
  return "'" + std::string(text.substr(0, end)) + "...'";
}

}  // namespace tarnd::store
