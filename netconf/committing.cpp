#include "netconf/committing.h"

#include "netconf/confirmed_commit.h"
#include "netconf/editing.h"
#include "netconf/locks.h"
#include "netconf/recording.h"
#include "netconf/verdicts.h"
#include "netconf/warnings.h"

namespace tarnd::netconf {
namespace {

void log_result(const Run& run, const std::string& result) {
  run.card.log(LogLevel::kInfo, session_name(run) + ": " + run.operation.name + " " + result);
}

// The reply has the model's text, which may hold a value.
void log_refusal(const Run& run) {
  log_result(run, "refused by the model");
}

void prepare_candidate(const Run& run) {
  Card& card = run.card;
  try {
    card.candidate.prepare();
  } catch (const InputError& error) {
    log_refusal(run);
    refuse(rpc_error(card.datastore.schema(), error));
  }
}

void log_report(const Run& run, const CommitReport& report) {
  Card& card = run.card;
  const std::string who = session_name(run);
  std::size_t errors = 0;
  std::size_t warnings = 0;
  for (const Answer& answer : report.answers) {
    if (answer.result == Verdict::kError) ++errors;
    if (answer.result != Verdict::kWarning) continue;
    ++warnings;
    card.log(LogLevel::kWarning, who + ": " + answer.request + " warns: " + answer.text);
  }
  const std::string before_notice = who + ": notice: ";
  for (const std::string& notice : report.messages) {
    card.log(LogLevel::kInfo, before_notice + notice);
  }
  log_result(run, std::string(to_string(report.result)) + ", " + std::to_string(errors) +
                      " errors, " + std::to_string(warnings) + " warnings");
}

std::string conclude(const Run& run, const CommitReport& report) {
  log_report(run, report);
  switch (report.result) {
    case CommitResult::kAccepted:
      return kOk;
    case CommitResult::kRejected:
      throw RpcFailure(rpc_errors(run.card.datastore.schema(), report));
    case CommitResult::kUnconfirmed:
      break;
  }
  throw RpcFailure(unconfirmed(run.card.datastore.schema(), warning_policy(run), report));
}

CommitOptions commit_options(const Run& run) {
  CommitOptions options;
  options.all = true;
  options.confirm = [accept = warning_policy(run) ==
                              WarningPolicy::kAccept](const auto& /*warnings*/) { return accept; };
  return options;
}

// What is accepted is stored first: it must not be lost once a client knows of it.
std::string commit_candidate(const Run& run, const std::optional<PendingCommit>& pending) {
  prepare_candidate(run);
  Card& card = run.card;
  const CommitReport report = card.daemon.check(card.candidate, commit_options(run));
  if (report.result == CommitResult::kAccepted) {
    record_commit(run, report, pending);
    card.candidate.commit();
  }
  return conclude(run, report);
}

// A whole configuration that is in the message.
std::string validate_given(const Run& run, const Element& config) {
  check_running_may_be_edited(run);
  store::Transaction& candidate = run.card.candidate;
  try {
    replace_candidate(run, config);
    std::string reply = check_candidate(run);
    candidate.discard();
    return reply;
  } catch (...) {
    candidate.discard();
    throw;
  }
}

}  // namespace

std::string check_candidate(const Run& run) {
  prepare_candidate(run);
  return conclude(run, run.card.daemon.check(run.card.candidate, commit_options(run)));
}

void check_running_may_be_edited(const Run& run) {
  check_not_locked_by_another(run, Target::kRunning);
  check_not_locked_by_another(run, Target::kCandidate);
  check_pending_allows(run);
  if (!run.card.candidate.is_edited()) return;
  refuse(error_of("protocol", "in-use",
                  "the candidate configuration has changes that are not committed"));
}

std::string commit_at_once(const Run& run, const std::function<void()>& edit) {
  check_running_may_be_edited(run);
  try {
    edit();
    return commit_candidate(run, run.card.pending);
  } catch (...) {
    run.card.candidate.discard();
    throw;
  }
}

std::string validate(const Run& run) {
  if (const Element* config = given_configuration(run); config != nullptr) {
    return validate_given(run, *config);
  }
  // What runs was validated when it was committed.
  if (datastore_in(run, "source") == Target::kRunning) return kOk;
  return check_candidate(run);
}

std::string copy_candidate_to_running(const Run& run) {
  check_not_locked_by_another(run, Target::kRunning);
  check_not_locked_by_another(run, Target::kCandidate);
  check_pending_allows(run);
  return commit_candidate(run, run.card.pending);
}

std::string commit(const Run& run) {
  check_not_locked_by_another(run, Target::kRunning);
  check_not_locked_by_another(run, Target::kCandidate);
  return commit_with_return(run, &commit_candidate);
}

}  // namespace tarnd::netconf
