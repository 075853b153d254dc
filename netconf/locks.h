#pragma once

#include <string>

#include "netconf/operation.h"

namespace tarnd::netconf {

std::string lock(const Run& run);
std::string unlock(const Run& run);

/// Refuses an operation that changes a datastore while another session has locked it.
void check_not_locked_by_another(const Run& run, Target target);

}  // namespace tarnd::netconf
