#pragma once

#include <ostream>
#include <string_view>

namespace gponval {

constexpr std::string_view kRed = "\033[31m";
constexpr std::string_view kYellow = "\033[33m";
constexpr std::string_view kGreen = "\033[32m";
constexpr std::string_view kPlain = "\033[0m";

/// Whether the stream, standard output or standard error, is a terminal that shows colours to a
/// user who wants them.
bool has_colours(const std::ostream& out);

}  // namespace gponval
