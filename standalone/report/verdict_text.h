#pragma once

#include <optional>
#include <ostream>
#include <string>
#include <string_view>
#include <vector>

#include "standalone/daemon/daemon.h"
#include "standalone/report/answer_source.h"

namespace tarnd::report {

/// What differs between the texts of reports.
struct TextOptions {
  std::string_view title;        ///< "Commit", "Request"
  bool with_ok_answers = false;  ///< also list the answers that accept
  bool nothing_changed = false;  ///< print this instead of "Commit accepted."
  bool colours = false;          ///< those of a terminal
};

/// Prints a commit's or request's report for people: a sentence with the result, then each answer
/// and each message. There is one source for each answer.
void print_verdict(std::ostream& out, const CommitReport& report,
                   const std::vector<std::optional<Source>>& sources, const TextOptions& options);

/// Prints one answer: its verdict, path and request in a line, then its text as the validator set
/// it.
void print_answer(std::ostream& out, const Answer& answer, bool colours);

}  // namespace tarnd::report
