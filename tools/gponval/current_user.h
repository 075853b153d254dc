#pragma once

#include <string>

namespace gponval {

/// The name of the user who runs this command, or the number of one who has no name.
std::string current_user();

}  // namespace gponval
