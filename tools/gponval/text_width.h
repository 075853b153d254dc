#pragma once

#include <cstddef>
#include <string>

namespace gponval {

/// The columns that a UTF-8 text takes at a terminal: two for each East Asian wide letter, none for
/// a combining one.
std::size_t text_width(const std::string& text);

}  // namespace gponval
