#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "model/name_numbers.h"

namespace tarnd {

/// The text of the header that gives the numbers of a module's names as symbols: PREFIX__ns (the
/// number of the namespace), PREFIX__ns_id and PREFIX__ns_uri (its URI), and PREFIX_NAME for every
/// node name, with an underscore for each character that is not allowed in a symbol. The text
/// depends only on the set of names, not on their order or on repetitions.
///
/// Throws std::runtime_error with one line if two names have the same number or the same symbol, or
/// if a name with a known number is not among the names.
std::string base_header(NameNumbers numbers, std::string_view prefix,
                        const std::vector<std::string>& names);

}  // namespace tarnd
