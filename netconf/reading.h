#pragma once

#include <string>

#include "netconf/operation.h"

namespace tarnd::netconf {

/// Running and the server's own state, which holds the capabilities that the server offers.
std::string get(const Run& run, const std::string& offered);
std::string get_config(const Run& run);

}  // namespace tarnd::netconf
