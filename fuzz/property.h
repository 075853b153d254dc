#pragma once

#include <string>

namespace tarnd::fuzz {

/// Ends the process as a crash does, with the property on standard error, where it does not hold.
void require(bool holds, const std::string& property);

}  // namespace tarnd::fuzz
