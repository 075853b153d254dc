#pragma once

#include <ctime>
#include <string>

namespace tarnd::netconf {

/// A time as YANG's date-and-time, such as "2026-11-22T08:31:07Z".
std::string utc_time(std::time_t time);

}  // namespace tarnd::netconf
