#include "tools/gponval/whole_number.h"

#include <charconv>
#include <string>
#include <system_error>

namespace gponval {
namespace {

std::string range_text(std::int64_t least, std::int64_t most) {
  const std::string from = "from " + std::to_string(least);
  const bool is_open = most == std::numeric_limits<std::int64_t>::max();
  return from + (is_open ? " on" : " to " + std::to_string(most));
}

}  // namespace

// The library's own conversion reads 010 as 8, and its message has other limits.
CLI::Validator whole_number(std::int64_t least, std::int64_t most) {
  return {[least, most](std::string& text) -> std::string {
            std::int64_t number = 0;
            const char* end = text.data() + text.size();
            const auto [rest, error] = std::from_chars(text.data(), end, number);
            if (error != std::errc() || rest != end || number < least || number > most) {
              return "'" + text + "' is no number " + range_text(least, most);
            }
            text = std::to_string(number);
            return "";
          },
          ""};
}

}  // namespace gponval
