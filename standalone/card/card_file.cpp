#include "standalone/card/card_file.h"

#include <CLI/CLI.hpp>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <fstream>
#include <set>
#include <string>
#include <vector>

#include "standalone/input_error.h"

namespace tarnd {
namespace {

constexpr bool kStandardBwCheck = true;
constexpr std::uint32_t kStandardOnusPerLink = 128;

constexpr std::string_view kKnownKeys =
    "bw-check, onus-per-link, pon-links, manageable-links, max-service-ports, xgspon";

// One line of the card file.
struct Entry {
  std::string key;
  std::string value;
};

[[noreturn]] void refuse(const std::filesystem::path& file, const std::string& what) {
  throw InputError("card file '" + file.string() + "': " + what);
}

[[noreturn]] void refuse_value(const std::filesystem::path& file, const Entry& entry,
                               const std::string& expected) {
  refuse(file, "'" + entry.key + "' has the value '" + entry.value + "', expected " + expected);
}

bool flag(const std::filesystem::path& file, const Entry& entry) {
  if (entry.value != "true" && entry.value != "false") refuse_value(file, entry, "true or false");
  return entry.value == "true";
}

std::uint32_t number(const std::filesystem::path& file, const Entry& entry) {
  std::uint32_t result = 0;
  const char* end = entry.value.data() + entry.value.size();
  const auto [rest, error] = std::from_chars(entry.value.data(), end, result);
  if (error != std::errc() || rest != end) {
    refuse_value(file, entry, "a number from 0 to 4294967295");
  }
  return result;
}

std::vector<CLI::ConfigItem> parse(const std::filesystem::path& file) {
  std::error_code unknown;
  if (std::filesystem::is_directory(file, unknown)) refuse(file, "is a folder");
  errno = 0;
  std::ifstream in(file);
  if (!in) refuse(file, std::strerror(errno));
  return CLI::ConfigTOML().from_config(in);
}

Entry entry_of(const std::filesystem::path& file, const CLI::ConfigItem& item) {
  // Two lines in a row with one key come as one item with two values, as a list of values does.
  if (item.inputs.size() > 1) refuse(file, "'" + item.fullname() + "' has more than one value");
  return {item.fullname(), item.inputs.empty() ? std::string() : item.inputs.front()};
}

void take(const std::filesystem::path& file, const Entry& entry, CardDescription& card) {
  if (entry.key == "bw-check") {
    card.bw_check = flag(file, entry);
  } else if (entry.key == "onus-per-link") {
    card.onus_per_link = number(file, entry);
  } else if (entry.key == "pon-links") {
    card.pon_links = number(file, entry);
  } else if (entry.key == "manageable-links") {
    card.manageable_links = number(file, entry);
  } else if (entry.key == "max-service-ports") {
    card.max_service_ports = number(file, entry);
  } else if (entry.key == "xgspon") {
    card.xgspon = flag(file, entry);
  } else {
    refuse(file, "unknown key '" + entry.key + "', known are " + std::string(kKnownKeys));
  }
}

}  // namespace

CardDescription CardDescription::standard() {
  CardDescription card;
  card.bw_check = kStandardBwCheck;
  card.onus_per_link = kStandardOnusPerLink;
  return card;
}

CardDescription read_card_file(const std::filesystem::path& file) {
  CardDescription card;
  std::set<std::string> seen;
  for (const CLI::ConfigItem& item : parse(file)) {
    if (item.name == "++" || item.name == "--") refuse(file, "sections are not known");
    const Entry entry = entry_of(file, item);
    if (!seen.insert(entry.key).second) refuse(file, "'" + entry.key + "' is given twice");
    take(file, entry, card);
  }
  return card;
}

}  // namespace tarnd
