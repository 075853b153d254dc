#pragma once

#include <ostream>
#include <string_view>

#include "standalone/daemon/daemon.h"
#include "tools/gponval/options.h"

namespace gponval {

/// What differs in the text format between reports.
struct ReportKind {
  std::string_view title;        ///< "Commit", "Request"
  bool with_ok_answers = false;  ///< list the answers that accept, too
  bool nothing_changed = false;  ///< say so instead of "Commit accepted."
};

/// Prints a commit's or request's report in the format asked for, to standard output or, where that
/// is taken, to standard error. Throws UsageError if standard output does not take it.
void print_report(std::ostream& out, const tarnd::CommitReport& report, const ReportKind& kind,
                  const RunOptions& options);

/// One answer: its verdict, path and request in a line, then its text as the validator set it.
void print_answer(std::ostream& out, const tarnd::Answer& answer, bool colours);

/// Flushes standard output. Throws UsageError if it did not take everything.
void finish_output();

}  // namespace gponval
