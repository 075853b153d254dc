#include "standalone/utf8.h"

#include <array>

namespace tarnd {
namespace {

constexpr std::uint32_t kFirstBeyondAscii = 0x80;

}  // namespace

std::uint32_t byte_at(std::string_view text, std::size_t at) {
  return static_cast<unsigned char>(text[at]);
}

bool continues_letter(std::string_view text, std::size_t at) {
  constexpr std::uint32_t kMask = 0xC0;
  constexpr std::uint32_t kContinuation = 0x80;
  return at < text.size() && (byte_at(text, at) & kMask) == kContinuation;
}

std::optional<Letter> letter_at(std::string_view text, std::size_t at) {
  struct Form {
    std::uint32_t lead_mask, lead, least;
    std::size_t length;
  };
  constexpr std::array<Form, 3> kForms{
      {{0xE0, 0xC0, 0x80, 2}, {0xF0, 0xE0, 0x800, 3}, {0xF8, 0xF0, 0x10000, 4}}};
  constexpr std::uint32_t kPayload = 0x3F;
  constexpr std::uint32_t kPayloadBits = 6;
  const std::uint32_t lead = byte_at(text, at);
  if (lead < kFirstBeyondAscii) return Letter{lead, 1};
  for (const Form& form : kForms) {
    if ((lead & form.lead_mask) != form.lead) continue;
    std::uint32_t code = lead & ~form.lead_mask;
    for (std::size_t i = 1; i < form.length; ++i) {
      if (!continues_letter(text, at + i)) return std::nullopt;
      code = code << kPayloadBits | (byte_at(text, at + i) & kPayload);
    }
    const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
    if (code < form.least || code > 0x10FFFF || surrogate) return std::nullopt;
    return Letter{code, form.length};
  }
  return std::nullopt;
}

bool is_control(const Letter& letter) {
  return letter.code < 0x20 || (letter.code >= 0x7F && letter.code < 0xA0);
}

}  // namespace tarnd
