#pragma once

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "netconf/state/commits.h"
#include "standalone/daemon/daemon.h"
#include "tools/gponval/remarks.h"

namespace gponval {

struct RollbackRequest {
  std::string state;
  tarnd::netconf::state::Number number = 0;
  Remarks remarks;
};

struct RollbackReport {
  tarnd::CommitReport report;
  bool nothing_changed = false;
};

/// Lets the server that has the state do the rollback. It lists every error and warning; of what
/// was refused the errors come first. While warnings are confirmed, no other session can change
/// the running configuration. Throws UsageError.
RollbackReport roll_back_through(
    const std::filesystem::path& socket, const RollbackRequest& request,
    const std::function<bool(const std::vector<tarnd::Answer>&)>& confirm);

}  // namespace gponval
