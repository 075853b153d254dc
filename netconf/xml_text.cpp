#include "netconf/xml_text.h"

#include "standalone/utf8.h"

namespace tarnd::netconf {
namespace {

constexpr std::string_view kReplacement = "\xEF\xBF\xBD";  // U+FFFD
constexpr std::uint32_t kFirstPrintable = 0x20;
constexpr std::uint32_t kNotACharacter = 0xFFFE;  // and the one after it

bool fits_xml(std::uint32_t code) {
  if (code == '\t' || code == '\n' || code == '\r') return true;
  return code >= kFirstPrintable && code != kNotACharacter && code != kNotACharacter + 1;
}

void append_escaped(std::string& to, std::string_view letter) {
  switch (letter.front()) {
    case '&':
      to += "&amp;";
      break;
    case '<':
      to += "&lt;";
      break;
    case '>':
      to += "&gt;";
      break;
    case '"':
      to += "&quot;";
      break;
    case '\r':
      to += "&#13;";  // a reader takes a bare one for a line end
      break;
    default:
      to += letter;
  }
}

}  // namespace

std::string escaped(std::string_view text) {
  std::string result;
  result.reserve(text.size());
  for (std::size_t at = 0; at < text.size();) {
    const auto letter = letter_at(text, at);
    if (!letter.has_value() || !fits_xml(letter->code)) {
      result += kReplacement;
      at += letter.has_value() ? letter->length : 1;
      continue;
    }
    append_escaped(result, text.substr(at, letter->length));
    at += letter->length;
  }
  return result;
}

std::string escaped_value(std::string_view text) {
  std::string result;
  for (const char letter : escaped(text)) {
    if (letter == '\t' || letter == '\n') {
      result += letter == '\t' ? "&#9;" : "&#10;";
    } else {
      result += letter;
    }
  }
  return result;
}

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kWhiteSpace = " \t\r\n";
  const std::size_t begin = text.find_first_not_of(kWhiteSpace);
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(kWhiteSpace) - begin + 1);
}

}  // namespace tarnd::netconf
