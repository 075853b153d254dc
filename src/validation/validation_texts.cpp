#include "validation_texts.h"

#include <algorithm>
#include <array>
#include <cstdarg>
#include <cstdio>

namespace valid {

std::string formatted(const char* format, ...) {
  std::array<char, kTextSize> text;
  text.front() = '\0';
  std::va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text.data(), text.size(), format, arguments);
  va_end(arguments);
  return text.data();
}

std::string keypath_text(const confd_hkeypath_t* keypath, std::size_t size) {
  std::array<char, kTextSize> text;
  text.front() = '\0';
  confd_pp_kpath(text.data(), static_cast<int>(std::min(size, text.size())), keypath);
  return text.data();
}

std::string value_text(const confd_value_t* value, std::size_t size) {
  std::array<char, kTextSize> text;
  text.front() = '\0';
  confd_pp_value(text.data(), static_cast<int>(std::min(size, text.size())), value);
  return text.data();
}

}  // namespace valid
