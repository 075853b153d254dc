#pragma once

#include <string>

namespace tarnd::fuzz {

/// The configuration in fuzz/card.xml.
const std::string& small_card();

}  // namespace tarnd::fuzz
