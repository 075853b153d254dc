#include "model/name_numbers.h"

#include <cerrno>
#include <charconv>
#include <fstream>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <system_error>
#include <vector>

namespace tarnd {
namespace {

constexpr std::uint32_t kLargestNumber = 0x7fffffff;

// The 32-bit FNV-1a hash.
constexpr std::uint32_t kFnvOffset = 2166136261U;
constexpr std::uint32_t kFnvPrime = 16777619U;

// 31 bits by xor-folding, as the authors of the hash advise; 0 means "no name" elsewhere.
std::uint32_t hash_of(std::string_view name) {
  std::uint32_t hash = kFnvOffset;
  for (const char c : name) {
    hash ^= static_cast<unsigned char>(c);
    hash *= kFnvPrime;
  }
  const std::uint32_t folded = (hash >> 31U) ^ (hash & kLargestNumber);
  return folded == 0 ? 1 : folded;
}

std::optional<std::uint32_t> parse_number(std::string_view text) {
  int base = 10;
  if (text.starts_with("0x")) {
    base = 16;
    text.remove_prefix(2);
  }
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number, base);
  if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
  if (number == 0 || number > kLargestNumber) return std::nullopt;
  return number;
}

// The words of a line, up to its comment.
std::vector<std::string> words_of(const std::string& line) {
  std::istringstream stream(line.substr(0, line.find('#')));
  std::vector<std::string> words;
  for (std::string word; stream >> word;) words.push_back(word);
  return words;
}

[[noreturn]] void fail_at(std::string_view source, int line, const std::string& reason) {
  throw std::runtime_error(std::string(source) + ":" + std::to_string(line) + ": " + reason);
}

}  // namespace

NameNumbers::NameNumbers(const std::filesystem::path& known_numbers) {
  std::ifstream file(known_numbers);
  if (!file) {
    throw std::runtime_error(known_numbers.string() +
                             ": cannot be read: " + std::generic_category().message(errno));
  }
  read(file, known_numbers.string());
}

NameNumbers::NameNumbers(std::istream& known_numbers, std::string_view source) {
  read(known_numbers, source);
}

void NameNumbers::read(std::istream& lines, std::string_view source) {
  int line_number = 0;
  for (std::string line; std::getline(lines, line);) {
    ++line_number;
    const std::vector<std::string> words = words_of(line);
    if (words.empty()) continue;
    if (words.size() != 3) fail_at(source, line_number, "kind, name and number are expected");

    const std::optional<std::uint32_t> parsed = parse_number(words[2]);
    if (!parsed) fail_at(source, line_number, "\"" + words[2] + "\" is not a number of 31 bits");
    if (const std::string* other = name_of(*parsed)) {
      fail_at(source, line_number, words[1] + " and " + *other + " have the same number");
    }
    names_.emplace(*parsed, words[1]);

    if (words[0] == "name") {
      if (!known_.emplace(words[1], *parsed).second) {
        fail_at(source, line_number, words[1] + " stands here twice");
      }
    } else if (words[0] == "namespace") {
      if (!namespace_uri_.empty()) fail_at(source, line_number, "a second namespace");
      namespace_uri_ = words[1];
      namespace_number_ = *parsed;
    } else {
      fail_at(source, line_number, "\"" + words[0] + "\" is neither namespace nor name");
    }
  }
  if (namespace_uri_.empty()) {
    throw std::runtime_error(std::string(source) + ": no namespace");
  }
}

std::uint32_t NameNumbers::number(std::string_view name) const {
  const auto found = known_.find(name);
  return found == known_.end() ? hash_of(name) : found->second;
}

void NameNumbers::add(const std::string& name) {
  const auto [entry, inserted] = names_.emplace(number(name), name);
  if (!inserted && entry->second != name) {
    throw std::runtime_error("the names " + entry->second + " and " + name +
                             " have the same number " + std::to_string(entry->first));
  }
}

const std::string* NameNumbers::name_of(std::uint32_t number) const {
  const auto found = names_.find(number);
  return found == names_.end() ? nullptr : &found->second;
}

}  // namespace tarnd
