#pragma once

#include <string>

#include "confd_lib.h"
#include "standalone/platform_calls.h"

namespace tarnd::confd {

/// Sets confd_errno and the text of confd_lasterr; gives CONFD_ERR.
int fail(int code, const std::string& text);

/// Counts the call and asks the hook; where it says no, the call has failed with
/// CONFD_ERR_UNAVAILABLE and the result is false.
bool enter(PlatformCall call);

}  // namespace tarnd::confd
