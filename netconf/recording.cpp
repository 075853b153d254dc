#include "netconf/recording.h"

#include <chrono>
#include <utility>

#include "netconf/xml_text.h"

namespace tarnd::netconf {
namespace {

std::optional<std::string> text_in(const Run& run, std::string_view name) {
  const Element* given = find_parameter(run, name);
  if (given == nullptr) return std::nullopt;
  return std::string(trimmed(given->text));
}

std::optional<state::Unconfirmed> unconfirmed(const std::optional<PendingCommit>& pending) {
  if (!pending.has_value()) return std::nullopt;
  const auto left = pending->deadline - std::chrono::steady_clock::now();
  return state::Unconfirmed{pending->persist, std::chrono::ceil<std::chrono::seconds>(left)};
}

}  // namespace

state::Commit accepted_commit(state::Kind kind, state::Author author, const CommitReport& report,
                              const store::Transaction& transaction) {
  state::Commit commit;
  commit.kind = kind;
  commit.author = std::move(author);
  commit.changes = transaction.item_changes();
  commit.answers = report.answers;
  commit.notices = report.messages;
  return commit;
}

void record_commit(const Run& run, const CommitReport& report,
                   const std::optional<PendingCommit>& pending) {
  Card& card = run.card;
  if (card.journal == nullptr) return;
  const bool goes_back = run.operation.name == kRollback;
  state::Author author{card.sessions.at(run.caller.id).user, run.caller.id, text_in(run, "label"),
                       text_in(run, "comment")};
  const state::Commit commit =
      accepted_commit(goes_back ? state::Kind::kRollback : state::Kind::kCommit, std::move(author),
                      report, card.candidate);
  try {
    card.journal->record(commit, unconfirmed(pending));
  } catch (const state::Failure& failure) {
    card.log(LogLevel::kError, session_name(run) + ": commit not stored: " + failure.what());
    refuse(rpc_error(failure));
  }
}

void record_return(Card& card, const std::string& why) {
  if (card.journal == nullptr) return;
  state::Commit commit;
  commit.kind = state::Kind::kReturn;
  commit.author.comment = why;
  commit.changes = card.candidate.changes_to_go_back();
  card.journal->record(commit, std::nullopt);
}

void sync_commits(Card& card) {
  if (card.journal != nullptr) card.journal->sync();
}

void tend_commits(Card& card) {
  if (card.journal == nullptr) return;
  try {
    card.journal->tend(card.candidate);
  } catch (const state::Failure& failure) {
    card.log(LogLevel::kWarning, std::string(failure.what()) + "; the commits are stored");
  }
}

RpcError rpc_error(const state::Failure& failure) {
  const bool is_full = failure.cause() == state::Failure::Cause::kNoRoom;
  return error_of("application", is_full ? "resource-denied" : "operation-failed", failure.what());
}

}  // namespace tarnd::netconf
