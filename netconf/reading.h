#pragma once

#include <string>

#include "netconf/operation.h"

namespace tarnd::netconf {

std::string get(const Run& run);
std::string get_config(const Run& run);

}  // namespace tarnd::netconf
