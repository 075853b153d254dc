#pragma once

#include "standalone/daemon/daemon.h"

namespace gponval {

enum class ExitStatus {
  kAccepted = 0,
  kRejected = 1,
  kWrongUse = 2,
  kUnconfirmed = 3,
  kAlike = 0,  ///< of `gponval diff`, which has the exit statuses of diff(1)
  kDifferent = 1,
  kSound = 0,  ///< of `gponval state check`
  kDamaged = 1,
  kCannotStore = 1  ///< of `gponval serve`, which may be started again
};

/// The part of every help text that explains them.
extern const char* const kExitStatusHelp;

/// The exit status that reports a result.
ExitStatus exit_status(tarnd::CommitResult result);

}  // namespace gponval
