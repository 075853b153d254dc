#pragma once

#include <string>

namespace tarnd::fuzz {

/// If the property does not hold, writes it to standard error and ends the process like a crash.
void require(bool holds, const std::string& property);

}  // namespace tarnd::fuzz
