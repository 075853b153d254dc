#pragma once

#include <functional>
#include <vector>

#include "standalone/daemon/daemon.h"
#include "tools/gponval/options.h"

namespace gponval {

/// Answers the warnings of a commit as --confirm says; without the option the user is asked at a
/// terminal, and nothing is confirmed elsewhere.
std::function<bool(const std::vector<tarnd::Answer>&)> confirmation(const RunOptions& options);

}  // namespace gponval
