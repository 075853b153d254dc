#pragma once

#include <string>

#include "netconf/operation.h"

namespace tarnd::netconf {

std::string edit_config(const Run& run);
std::string copy_config(const Run& run);
std::string discard_changes(const Run& run);

/// The `config` in the parameter `source`, or null if the parameter names a datastore.
const Element* given_configuration(const Run& run);

/// Makes the candidate what is in the `config`.
void replace_candidate(const Run& run, const Element& config);

}  // namespace tarnd::netconf
