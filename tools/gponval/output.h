#pragma once

#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "standalone/daemon/daemon.h"
#include "standalone/report/answer_source.h"
#include "tools/gponval/options.h"

namespace gponval {

/// What differs between reports.
struct ReportKind {
  std::string_view title;        ///< "Commit", "Request"
  bool with_ok_answers = false;  ///< also list the answers that accept
  bool nothing_changed = false;  ///< print this instead of "Commit accepted."
  std::string changes_json;      ///< a list for the JSON format; empty if not asked for
  std::vector<std::optional<tarnd::report::Source>> sources;  ///< one for each answer
};

/// Prints a commit's or request's report in the selected format, to standard output or, if that has
/// the saved configuration, to standard error. Throws UsageError if standard output cannot be
/// written.
void print_report(std::ostream& out, const tarnd::CommitReport& report, const ReportKind& kind,
                  const RunOptions& options);

/// Flushes standard output. Throws UsageError if not everything could be written.
void finish_output();

}  // namespace gponval
