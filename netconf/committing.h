#pragma once

#include <string>

#include "netconf/operation.h"

namespace tarnd::netconf {

std::string validate(const Run& run);
std::string commit(const Run& run);

}  // namespace tarnd::netconf
