#pragma once

#include <ostream>
#include <string_view>

#include "standalone/daemon/daemon.h"
#include "tools/gponval/options.h"

namespace gponval {

/// What a report is about, and whether answers that accept are listed in the text format too.
struct ReportKind {
  std::string_view title;  ///< "Commit", "Request"
  bool with_ok_answers = false;
};

/// Prints a commit's or request's report to standard output in the format asked for. Throws
/// UsageError where standard output takes nothing.
void print_report(const tarnd::CommitReport& report, const ReportKind& kind,
                  const RunOptions& options);

/// One answer: its verdict, path and request in a line, then its text as the validator set it.
void print_answer(std::ostream& out, const tarnd::Answer& answer, bool colours);

/// Flushes standard output. Throws UsageError where it did not take everything.
void finish_output();

/// The exit status that tells a result.
int exit_status(tarnd::CommitResult result);

}  // namespace gponval
