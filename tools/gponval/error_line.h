#pragma once

#include <string>
#include <string_view>

namespace gponval {

/// The line that reports this to the user: "gponval: " and the text, without a line end. Bytes that
/// are no printable character are written as \xNN, and a line of more than 400 bytes loses its
/// middle, so that what a file or an argument put into the text cannot spoil a terminal.
std::string error_line(std::string_view text);

/// Writes the line to standard error.
void print_error(std::string_view text);

}  // namespace gponval
