#pragma once

#include <string>
#include <string_view>

namespace gponval {

/// The line that reports this to the user: "gponval: " and the text, without a line end. Bytes that
/// are no printable character are written as \xNN, and the middle of a line of more than 400 bytes
/// is cut out. So nothing from a file or an argument can disturb a terminal.
std::string error_line(std::string_view text);

/// The text with what is no printable character written in that way, however long it is.
std::string printable(std::string_view text);

/// Writes the line to standard error.
void print_error(std::string_view text);

}  // namespace gponval
