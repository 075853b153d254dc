#include "netconf/locks.h"

#include <ctime>
#include <optional>

namespace tarnd::netconf {
namespace {

// cppcheck-suppress constParameter; the caller may change the lock
std::optional<SessionId>& lock_of(Card& card, Target target) {
  return target == Target::kRunning ? card.running_lock : card.candidate_lock;
}

[[noreturn]] void deny_lock(SessionId holder, const std::string& why) {
  RpcError error = error_of("protocol", "lock-denied", why);
  error.info = "<session-id>" + std::to_string(holder) + "</session-id>";
  refuse(error);
}

// A commit that outlives its session has no holder.
SessionId holder_of_pending(const Card& card) {
  const SessionId session = card.pending->session;
  return card.sessions.contains(session) ? session : 0;
}

void check_no_pending_of_another(const Run& run) {
  const auto& pending = run.card.pending;
  if (!pending.has_value() || pending->session == run.caller.id) return;
  deny_lock(holder_of_pending(run.card), "a commit of session " + std::to_string(pending->session) +
                                             " has to be confirmed first");
}

}  // namespace

void check_not_locked_by_another(const Run& run, Target target) {
  const auto& holder = lock_of(run.card, target);
  if (!holder.has_value() || *holder == run.caller.id) return;
  refuse(error_of("protocol", "in-use",
                  "session " + std::to_string(*holder) + " has locked the " +
                      std::string(to_string(target)) + " configuration"));
}

std::string lock(const Run& run) {
  const Target target = datastore_in(run, "target");
  auto& holder = lock_of(run.card, target);
  if (holder.has_value()) {
    deny_lock(*holder, "session " + std::to_string(*holder) + " has the lock already");
  }
  if (target == Target::kCandidate && run.card.candidate.is_edited()) {
    deny_lock(0, "the candidate configuration has changes that are not committed");
  }
  if (target == Target::kRunning) check_no_pending_of_another(run);
  holder = run.caller.id;
  (target == Target::kRunning ? run.card.running_locked : run.card.candidate_locked) =
      std::time(nullptr);
  return kOk;
}

std::string unlock(const Run& run) {
  const Target target = datastore_in(run, "target");
  auto& holder = lock_of(run.card, target);
  if (holder != run.caller.id) {
    refuse(error_of("protocol", "operation-failed", "this session does not have the lock"));
  }
  holder.reset();
  return kOk;
}

}  // namespace tarnd::netconf
