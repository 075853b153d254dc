#pragma once

#include <string>

#include "netconf/operation.h"

namespace tarnd::netconf {

/// Running and the server's own state, which holds the capabilities that the server offers.
std::string get(const Run& run, const std::string& offered);
std::string get_config(const Run& run);

/// Whether one of these has a filter that may cost much more than to read everything.
bool has_costly_filter(const Element& operation);

}  // namespace tarnd::netconf
