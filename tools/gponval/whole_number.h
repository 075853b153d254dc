#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <limits>

namespace gponval {

/// For CLI::Option::transform: accepts decimal numbers in this range only.
CLI::Validator whole_number(std::int64_t least,
                            std::int64_t most = std::numeric_limits<std::int64_t>::max());

}  // namespace gponval
