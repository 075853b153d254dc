#pragma once

#include <string_view>

namespace tarnd::report {

// What a terminal is sent to write in a colour.
constexpr std::string_view kRed = "\033[31m";
constexpr std::string_view kYellow = "\033[33m";
constexpr std::string_view kGreen = "\033[32m";
constexpr std::string_view kPlain = "\033[0m";

}  // namespace tarnd::report
