#pragma once

#include <ostream>

namespace gponval {

/// Whether the stream, standard output or standard error, is a terminal that shows colours to a
/// user who wants them.
bool has_colours(const std::ostream& out);

}  // namespace gponval
