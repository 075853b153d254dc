#pragma once

#include <string>

#include "netconf/operation.h"

namespace tarnd::netconf {

std::string close_session(const Run& run);
std::string kill_session(const Run& run);

}  // namespace tarnd::netconf
