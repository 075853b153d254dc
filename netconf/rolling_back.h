#pragma once

#include <string>

#include "netconf/operation.h"

namespace tarnd::netconf {

/// Commits what makes running as it was after an earlier commit, through the validators. The
/// history stays as it is; the way back is one more commit.
std::string roll_back(const Run& run);

}  // namespace tarnd::netconf
