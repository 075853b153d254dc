#pragma once

#include <CLI/CLI.hpp>
#include <string>

namespace gponval {

/// The message for a command line that could not be parsed: one line that names the option or
/// command, what was probably meant, and the help to read.
std::string wrong_use(const CLI::App& gponval, const CLI::ParseError& error);

}  // namespace gponval
