#include "standalone/card/card_file.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <set>
#include <string>
#include <system_error>
#include <variant>

#include "standalone/input_error.h"
#include "standalone/nearest_name.h"
#include "standalone/utf8.h"

namespace tarnd {
namespace {

constexpr bool kStandardBwCheck = true;
constexpr std::uint32_t kStandardOnusPerLink = 128;

constexpr std::string_view kBlanks = " \t";
constexpr std::string_view kCommentSigns = "#;";
constexpr std::string_view kByteOrderMark = "\xef\xbb\xbf";

using Flag = std::optional<bool> CardDescription::*;
using Number = std::optional<std::uint32_t> CardDescription::*;

struct Key {
  std::string_view name;
  std::variant<Flag, Number> field;
};

constexpr std::array kKeys = {
    Key{"bw-check", &CardDescription::bw_check},
    Key{"onus-per-link", &CardDescription::onus_per_link},
    Key{"pon-links", &CardDescription::pon_links},
    Key{"manageable-links", &CardDescription::manageable_links},
    Key{"max-service-ports", &CardDescription::max_service_ports},
    Key{"xgspon", &CardDescription::xgspon},
};

// One line of the card file.
struct Entry {
  std::string_view key;
  std::string_view value;
};

std::string quoted(std::string_view text) {
  return "'" + std::string(text) + "'";
}

// UTF-8 without control characters, because one that moves the cursor could hide what the line
// says.
bool is_text(std::string_view line) {
  for (std::size_t at = 0; at < line.size();) {
    const std::optional<Letter> letter = letter_at(line, at);
    if (!letter.has_value() || (is_control(*letter) && letter->code != '\t')) return false;
    at += letter->length;
  }
  return true;
}

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
}

std::string_view without(std::string_view text, char open, char close) {
  const bool enclosed = text.size() > 1 && text.front() == open && text.back() == close;
  return enclosed ? trimmed(text.substr(1, text.size() - 2)) : text;
}

// As in TOML, names and values may be quoted, and one value may be written as a list.
std::string_view bare(std::string_view text) {
  return without(without(text, '"', '"'), '\'', '\'');
}

std::string_view without_comment(std::string_view line) {
  const std::string_view text = trimmed(line);
  if (!text.empty() && kCommentSigns.find(text.front()) != std::string_view::npos) return {};
  return trimmed(text.substr(0, text.find('#')));
}

// A key without a value is a flag that is set.
Entry entry_of(std::string_view text) {
  const std::size_t sign = text.find('=');
  if (sign == std::string_view::npos) return {bare(text), "true"};
  return {bare(trimmed(text.substr(0, sign))),
          bare(without(trimmed(text.substr(sign + 1)), '[', ']'))};
}

const Key& key_of(const Entry& entry) {
  const auto* key = std::find_if(kKeys.begin(), kKeys.end(),
                                 [&entry](const Key& known) { return known.name == entry.key; });
  if (key != kKeys.end()) return *key;
  std::array<std::string_view, kKeys.size()> names;
  std::transform(kKeys.begin(), kKeys.end(), names.begin(),
                 [](const Key& known) { return known.name; });
  std::string help = did_you_mean(entry.key, names);
  if (help.empty()) {
    for (const std::string_view name : names) {
      help += (help.empty() ? ", known are " : ", ") + std::string(name);
    }
  }
  throw InputError("unknown key " + quoted(entry.key) + help);
}

[[noreturn]] void refuse_value(const Entry& entry, const std::string& expected) {
  throw InputError(quoted(entry.key) + " has the value " + quoted(entry.value) + ", expected " +
                   expected);
}

bool flag(const Entry& entry) {
  if (entry.value != "true" && entry.value != "false") refuse_value(entry, "true or false");
  return entry.value == "true";
}

std::uint32_t number(const Entry& entry) {
  std::uint32_t result = 0;
  const char* end = entry.value.data() + entry.value.size();
  const auto [rest, error] = std::from_chars(entry.value.data(), end, result);
  if (error != std::errc() || rest != end) {
    refuse_value(entry, "a number from 0 to " + std::to_string(UINT32_MAX));
  }
  return result;
}

// Reads one card, line by line.
class CardReader {
 public:
  void take(std::string_view line) {
    if (!is_text(line)) throw InputError("a card file is text, and this line is not");
    const std::string_view text = without_comment(line);
    if (text.empty()) return;
    if (text.front() == '[') throw InputError("sections are not known");
    const Entry entry = entry_of(text);
    const Key& key = key_of(entry);
    if (!seen_.insert(key.name).second) throw InputError(quoted(key.name) + " is given twice");
    if (const auto* field = std::get_if<Flag>(&key.field)) card_.*(*field) = flag(entry);
    if (const auto* field = std::get_if<Number>(&key.field)) card_.*(*field) = number(entry);
  }

  [[nodiscard]] const CardDescription& card() const { return card_; }

 private:
  CardDescription card_;
  std::set<std::string_view> seen_;
};

}  // namespace

CardDescription CardDescription::standard() {
  CardDescription card;
  card.bw_check = kStandardBwCheck;
  card.onus_per_link = kStandardOnusPerLink;
  return card;
}

CardDescription parse_card(std::string_view text) {
  if (text.starts_with(kByteOrderMark)) text.remove_prefix(kByteOrderMark.size());
  CardReader reader;
  for (std::size_t number = 1; !text.empty(); ++number) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    if (line.ends_with('\r')) line.remove_suffix(1);
    try {
      reader.take(line);
    } catch (const InputError& error) {
      throw InputError(error.what(), number);
    }
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return reader.card();
}

}  // namespace tarnd
