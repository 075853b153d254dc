#pragma once

#include <string>
#include <string_view>

namespace tarnd::netconf {

/// The text as the content of an element. What XML cannot hold (control characters, bytes that are
/// not UTF-8) becomes the replacement character.
std::string escaped(std::string_view text);

/// The same for an attribute's value in double quotes, in which parsers replace a bare tab or line
/// end by a blank.
std::string escaped_value(std::string_view text);

/// The text without white space before and after it.
std::string_view trimmed(std::string_view text);

}  // namespace tarnd::netconf
