#pragma once

#include <cctype>
#include <string>

namespace tarnd::test {

/// The name of the suite that tests the validator of a request: "OnuBwCheck" for "onu_bw_check".
inline std::string suite_name(const std::string& request) {
  std::string name;
  bool starts_word = true;
  for (const char letter : request) {
    if (letter != '_') {
      const int upper = std::toupper(static_cast<unsigned char>(letter));
      name += starts_word ? static_cast<char>(upper) : letter;
    }
    starts_word = letter == '_';
  }
  return name;
}

}  // namespace tarnd::test
