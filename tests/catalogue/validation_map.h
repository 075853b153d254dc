#pragma once

#include <string>

namespace tarnd::test {

/// The table of src/validation/README.md: where each request has its validator, its nodes and its
/// tests.
std::string validation_map();

/// The text with its table of requests replaced by that one; the rest stays as it is. Throws if it
/// has no such table.
std::string with_validation_map(const std::string& page);

}  // namespace tarnd::test
