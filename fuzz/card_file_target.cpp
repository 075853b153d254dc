// Any text as a card file. It is read or refused; the values that were read are in the text, and
// can be written and read again.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <sstream>
#include <string>

#include "fuzz/property.h"
#include "fuzz/target.h"
#include "standalone/card/card_file.h"
#include "standalone/input_error.h"

namespace tarnd::fuzz {
namespace {

void write_line(std::string& text, const std::string& key, const std::optional<bool>& value) {
  if (value.has_value()) text += key + " = " + (*value ? "true" : "false") + "\n";
}

void write_line(std::string& text, const std::string& key,
                const std::optional<std::uint32_t>& value) {
  if (value.has_value()) text += key + " = " + std::to_string(*value) + "\n";
}

std::string written(const CardDescription& card) {
  std::string text;
  write_line(text, "bw-check", card.bw_check);
  write_line(text, "onus-per-link", card.onus_per_link);
  write_line(text, "pon-links", card.pon_links);
  write_line(text, "manageable-links", card.manageable_links);
  write_line(text, "max-service-ports", card.max_service_ports);
  write_line(text, "xgspon", card.xgspon);
  return text;
}

// Word for word. A key without a value is a flag that is set.
void require_stands_in(const std::string& written_card, const std::string& file) {
  std::istringstream words(written_card);
  for (std::string word; words >> word;) {
    if (word == "=" || word == "true") continue;
    require(file.find(word) != std::string::npos, word + " of the card stands in its file");
  }
}

void try_card_file(const std::string& file) {
  std::string card;
  try {
    card = written(parse_card(file));
  } catch (const InputError& error) {
    const auto lines = static_cast<std::size_t>(std::count(file.begin(), file.end(), '\n')) + 1;
    require(error.line() >= 1 && error.line() <= lines, "a refusal names a line of the file");
    return;
  }
  require_stands_in(card, file);
  require(written(parse_card(card)) == card, "a card is read back as it was:\n" + card);
}

}  // namespace
}  // namespace tarnd::fuzz

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  tarnd::fuzz::try_card_file({reinterpret_cast<const char*>(data), size});
  return 0;
}
