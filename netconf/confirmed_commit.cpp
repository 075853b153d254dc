#include "netconf/confirmed_commit.h"

#include <charconv>
#include <cstdint>
#include <string_view>

#include "netconf/recording.h"
#include "netconf/state/snapshots.h"
#include "netconf/xml_text.h"

namespace tarnd::netconf {
namespace {

using std::chrono::seconds;
using std::chrono::steady_clock;

constexpr std::uint32_t kUsualTimeout = 600;

// After so long a return that could not be stored is tried again.
constexpr seconds kUntilNextTry{1};

std::string text_of(const Run& run, std::string_view name) {
  const Element* given = find_parameter(run, name);
  return given != nullptr ? std::string(trimmed(given->text)) : std::string();
}

std::uint32_t timeout_of(const Run& run) {
  const Element* given = find_parameter(run, "confirm-timeout");
  if (given == nullptr) return kUsualTimeout;
  const std::string_view text = trimmed(given->text);
  std::uint32_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error == std::errc() && end == text.data() + text.size() && number > 0) return number;
  refuse(invalid_value("confirm-timeout is '" + std::string(text) +
                       "'; a number of seconds from 1 to 4294967295 is needed"));
}

// They would have no effect, and the client might expect one.
void check_needs_confirmed(const Run& run) {
  for (const char* name : {"confirm-timeout", "persist"}) {
    if (find_parameter(run, name) != nullptr) refuse(missing_element("confirmed"));
  }
}

void take_back(Card& card, const std::string& why) {
  record_return(card, why);
  card.pending.reset();
  card.candidate.go_back();
  card.log(LogLevel::kWarning, "confirmed commit taken back: " + why);
}

// Nobody waits for the answer, so a failure is no reason to give up.
void take_back_soon(Card& card, const std::string& why) {
  try {
    take_back(card, why);
  } catch (const state::Failure& failure) {
    card.pending->deadline = steady_clock::now() + kUntilNextTry;
    card.log(LogLevel::kError,
             "confirmed commit not taken back yet: " + std::string(failure.what()));
  }
}

std::string persist_of(const Run& run) {
  const Element* given = find_parameter(run, "persist");
  if (given == nullptr) return "";
  std::string persist(trimmed(given->text));
  if (persist.empty()) refuse(invalid_value("persist is empty"));
  return persist;
}

void begin_pending(const Run& run, std::uint32_t timeout, const PendingCommit& pending) {
  const bool again = run.card.pending.has_value();
  run.card.pending = pending;
  run.card.log(LogLevel::kInfo, session_name(run) + ": confirmed commit " +
                                    (again ? "goes on" : "begins") + ", to be confirmed within " +
                                    std::to_string(timeout) + " s");
}

void confirm_pending(const Run& run) {
  if (!run.card.pending.has_value()) return;
  run.card.pending.reset();
  run.card.candidate.forget_return();
  run.card.log(LogLevel::kInfo, session_name(run) + ": confirmed commit confirmed");
}

std::string commit_to_be_confirmed(const Run& run, CommitFunction commit) {
  const std::uint32_t timeout = timeout_of(run);
  const PendingCommit pending{run.caller.id, persist_of(run),
                              steady_clock::now() + seconds(timeout)};
  run.card.candidate.set_return();
  try {
    std::string reply = commit(run, pending);
    begin_pending(run, timeout, pending);
    return reply;
  } catch (...) {
    if (!run.card.pending.has_value()) run.card.candidate.forget_return();
    throw;
  }
}

}  // namespace

void check_pending_allows(const Run& run) {
  const auto& pending = run.card.pending;
  const bool gives_id = find_parameter(run, "persist-id") != nullptr;
  const std::string id = text_of(run, "persist-id");
  if (gives_id && (!pending.has_value() || pending->persist != id || id.empty())) {
    refuse(invalid_value("no confirmed commit has the persist-id '" + id + "'"));
  }
  if (!pending.has_value() || gives_id) return;
  if (pending->persist.empty() && pending->session == run.caller.id) return;
  refuse(error_of("protocol", "in-use",
                  "a commit of session " + std::to_string(pending->session) +
                      " has to be confirmed first" +
                      (pending->persist.empty() ? "" : ", with its persist-id")));
}

std::string commit_with_return(const Run& run, CommitFunction commit) {
  check_pending_allows(run);
  if (find_parameter(run, "confirmed") != nullptr) return commit_to_be_confirmed(run, commit);
  check_needs_confirmed(run);
  std::string reply = commit(run, std::nullopt);
  confirm_pending(run);
  return reply;
}

std::string cancel_commit(const Run& run) {
  check_pending_allows(run);
  if (!run.card.pending.has_value()) {
    refuse(error_of("protocol", "operation-failed", "no commit waits to be confirmed"));
  }
  try {
    take_back(run.card, session_name(run) + " cancelled it");
  } catch (const state::Failure& failure) {
    refuse(rpc_error(failure));
  }
  return kOk;
}

void end_late_commit(Card& card, steady_clock::time_point now) {
  if (card.pending.has_value() && now >= card.pending->deadline) {
    take_back_soon(card, "it was not confirmed in time");
  }
}

void end_pending_of(Card& card, SessionId session) {
  const auto& pending = card.pending;
  if (!pending.has_value() || !pending->persist.empty() || pending->session != session) return;
  take_back_soon(card, "session " + std::to_string(session) + " ends");
}

void resume_pending(Card& card) {
  state::Journal& journal = *card.journal;
  const auto left = journal.left_unconfirmed();
  if (!left.has_value()) return;
  card.candidate.set_return();
  state::replay(journal.connection(), card.candidate, left->since, journal.newest());
  card.pending = {0, left->persist, steady_clock::now() + left->left};
  if (left->persist.empty()) return take_back(card, "the server was started again");
  if (!left->same_boot) return take_back(card, "the machine was started again");
  card.log(LogLevel::kInfo, "confirmed commit goes on, to be confirmed within " +
                                std::to_string(left->left.count()) + " s");
}

}  // namespace tarnd::netconf
