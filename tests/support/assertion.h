#pragma once

#include <cstring>
#include <string>

namespace tarnd::test {

/// A regular expression that matches this text only.
inline std::string regex_of(const std::string& plain) {
  std::string regex;
  for (const char c : plain) {
    if (std::strchr("()[]{}.*+?^$|\\", c) != nullptr) regex += '\\';
    regex += c;
  }
  return regex;
}

/// The message of a failed assertion of the plug-in: file, line, function with its signature,
/// expectation. Pass the source without its folder and ".cpp", and the function as a regular
/// expression.
inline std::string assertion(const std::string& source, const std::string& function,
                             const std::string& expectation) {
  return ": src/validation/" + regex_of(source) + "\\.cpp:[1-9][0-9]*: .*[ :]" + function +
         "\\(.*\\): Assertion `" + regex_of(expectation) + "' failed\\.";
}

}  // namespace tarnd::test
