#include "tools/gponval/owned_state.h"

#include <chrono>
#include <csignal>
#include <filesystem>
#include <optional>
#include <system_error>
#include <thread>
#include <utility>

#include "netconf/confirmed_commit.h"
#include "netconf/recording.h"
#include "netconf/state/database.h"
#include "netconf/state/failure.h"
#include "netconf/state/server_address.h"
#include "netconf/state/snapshots.h"
#include "standalone/input_error.h"
#include "tools/gponval/error_line.h"
#include "tools/gponval/usage_error.h"

namespace gponval {
namespace {

namespace netconf = tarnd::netconf;
namespace state = tarnd::netconf::state;

using Clock = std::chrono::steady_clock;

constexpr std::chrono::seconds kLongestWait(5);
constexpr std::chrono::milliseconds kBetweenLooks(20);

constexpr const char* kHowToMakeOne = "; gponval state create makes one";

void check_exists(const std::string& file) {
  std::error_code unknown;
  // The journal would make it.
  if (std::filesystem::exists(file, unknown)) return;
  throw UsageError("state '" + file +
                   "': " + (unknown ? unknown.message() : "there is no such file") + kHowToMakeOne);
}

std::unique_ptr<state::Journal> owned(const std::string& file) {
  auto journal = std::make_unique<state::Journal>(file);
  if (journal->is_new()) {
    throw UsageError("state '" + file + "': nothing was stored in it" + kHowToMakeOne);
  }
  state::forget_server(journal->connection());
  return journal;
}

std::optional<std::string> server_of(const std::string& file) {
  state::Connection connection = state::open_to_read(file);
  return state::server_of(connection);
}

// The user has to know of a commit that is taken back.
void print_log(netconf::LogLevel level, const std::string& text) {
  if (level != netconf::LogLevel::kInfo) print_error(text);
}

void check_nothing_waits(netconf::Card& card) {
  netconf::resume_pending(card);
  netconf::end_late_commit(card, std::chrono::steady_clock::now());
  netconf::sync_commits(card);
  if (!card.pending.has_value()) return;
  throw UsageError("state '" + card.journal->connection().name() +
                   "': a commit waits to be confirmed; gponval serve goes on with it");
}

}  // namespace

void ignore_limit_of_files() {
  std::signal(SIGXFSZ, SIG_IGN);
}

FoundState find_state(const std::string& file) {
  ignore_limit_of_files();
  check_exists(file);
  const Clock::time_point give_up = Clock::now() + kLongestWait;
  while (true) {
    try {
      return {owned(file), {}};
    } catch (const state::Failure& failure) {
      if (failure.cause() != state::Failure::Cause::kInUse) throw;
      if (const auto server = server_of(file)) return {nullptr, *server};
      if (Clock::now() > give_up) throw;
    }
    std::this_thread::sleep_for(kBetweenLooks);
  }
}

std::unique_ptr<state::Journal> own_state(const std::string& file) {
  FoundState found = find_state(file);
  if (found.journal != nullptr) return std::move(found.journal);
  throw UsageError("state '" + file +
                   "': a server has it; stop that, or commit with gponval netconf" + " --socket " +
                   found.server.string());
}

void restore_newest(state::Journal& journal, tarnd::store::Datastore& datastore) {
  const auto left = journal.left_unconfirmed();
  state::restore(journal.connection(), datastore,
                 left.has_value() ? left->since : journal.newest());
}

OwnedState::OwnedState(std::unique_ptr<state::Journal> journal, Host& host)
    : journal_(std::move(journal)) {
  restore_newest(*journal_, host.datastore());
  card_.emplace(host.datastore(), host.daemon(), netconf::WarningPolicy::kReject, &print_log);
  card_->journal = journal_.get();
  check_nothing_waits(*card_);
}

void OwnedState::go_back_to(state::Number number) {
  state::check_number(journal_->connection(), number);
  state::take_back(journal_->connection(), transaction(), journal_->newest(), number);
  transaction().prepare();
}

tarnd::CommitReport OwnedState::commit(state::Kind kind, state::Author author,
                                       const tarnd::CommitOptions& options) {
  tarnd::CommitReport report = card_->daemon.check(transaction(), options);
  if (report.result != tarnd::CommitResult::kAccepted) return report;
  journal_->record(netconf::accepted_commit(kind, std::move(author), report, transaction()),
                   std::nullopt);
  transaction().commit();
  journal_->sync();
  netconf::tend_commits(*card_);
  return report;
}

}  // namespace gponval
