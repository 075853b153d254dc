#include "tools/gponval/exit_status.h"

namespace gponval {

const char* const kExitStatusHelp =
    "Exit status:\n"
    "  0  accepted, or the list or card is written\n"
    "  1  rejected\n"
    "  2  wrong use, or input that cannot be read; one line on standard error says why\n"
    "  3  the warnings were not confirmed\n";

ExitStatus exit_status(tarnd::CommitResult result) {
  switch (result) {
    case tarnd::CommitResult::kAccepted:
      return ExitStatus::kAccepted;
    case tarnd::CommitResult::kRejected:
      return ExitStatus::kRejected;
    case tarnd::CommitResult::kUnconfirmed:
      return ExitStatus::kUnconfirmed;
  }
  return ExitStatus::kWrongUse;
}

}  // namespace gponval
