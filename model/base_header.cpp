#include "model/base_header.h"

#include <algorithm>
#include <map>
#include <set>
#include <sstream>
#include <stdexcept>

namespace tarnd {
namespace {

std::string symbol_of(std::string_view prefix, std::string_view name) {
  std::string symbol = std::string(prefix) + "_" + std::string(name);
  std::replace_if(
      symbol.begin(), symbol.end(), [](char c) { return c == '-' || c == '.'; }, '_');
  return symbol;
}

[[noreturn]] void fail_on_same_symbol(const std::string& earlier, const std::string& name,
                                      const std::string& symbol) {
  throw std::runtime_error("the names " + earlier + " and " + name + " have the same symbol " +
                           symbol);
}

void check_known_names(const NameNumbers& numbers, const std::set<std::string>& names) {
  for (const auto& [name, number] : numbers.known()) {
    if (!names.contains(name)) {
      throw std::runtime_error("the model has no node named " + name +
                               ", which has a known number");
    }
  }
}

}  // namespace

std::string base_header(NameNumbers numbers, std::string_view prefix,
                        const std::vector<std::string>& names) {
  const std::set<std::string> distinct(names.begin(), names.end());
  check_known_names(numbers, distinct);

  const std::string ns = std::string(prefix) + "__ns";
  std::ostringstream text;
  text << "// Generated from the data model; do not edit.\n#pragma once\n\n";
  text << "#define " << ns << " " << numbers.namespace_number() << "\n";
  text << "#define " << ns << "_id \"" << numbers.namespace_uri() << "\"\n";
  text << "#define " << ns << "_uri \"" << numbers.namespace_uri() << "\"\n\n";

  std::map<std::string, std::string> symbols{
      {ns, "the namespace"}, {ns + "_id", "the namespace"}, {ns + "_uri", "the namespace"}};
  for (const std::string& name : distinct) {
    numbers.add(name);
    const std::string symbol = symbol_of(prefix, name);
    const auto [entry, inserted] = symbols.emplace(symbol, name);
    if (!inserted) fail_on_same_symbol(entry->second, name, symbol);
    text << "#define " << symbol << " " << numbers.number(name) << "\n";
  }
  return text.str();
}

}  // namespace tarnd
