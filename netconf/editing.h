#pragma once

#include <string>

#include "netconf/operation.h"

namespace tarnd::netconf {

std::string edit_config(const Run& run);
std::string discard_changes(const Run& run);

}  // namespace tarnd::netconf
