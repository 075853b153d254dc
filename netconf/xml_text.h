#pragma once

#include <string>
#include <string_view>

namespace tarnd::netconf {

/// The text as the content of an element. What XML cannot hold (control characters, bytes that are
/// not UTF-8) becomes the replacement character.
std::string escaped(std::string_view text);

/// The same as the value of an attribute in double quotes, where a reader takes a bare tab or line
/// end for a blank.
std::string escaped_value(std::string_view text);

/// The text without white space before and after it.
std::string_view trimmed(std::string_view text);

}  // namespace tarnd::netconf
