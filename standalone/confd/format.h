#pragma once

#include <cstdarg>
#include <optional>
#include <string>

namespace tarnd::confd {

/// The text of a path argument: a format with %d, %u and %s as in printf, %x for a value, %*x for a
/// count and values, %h for a keypath at the start, %*h for a number of elements, counted from the
/// root, and a keypath. Nothing if the format has another conversion or an argument is null.
std::optional<std::string> format_path(const char* format, std::va_list arguments);

/// The same into a text whose memory is used again. If the result is false, the text is of no use.
bool format_path(std::string& text, const char* format, std::va_list arguments);

}  // namespace tarnd::confd
