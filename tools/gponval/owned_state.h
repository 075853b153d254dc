#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "netconf/card.h"
#include "netconf/state/journal.h"
#include "tools/gponval/host.h"

namespace gponval {

/// A file that may not grow is an error of what writes it, and no end of the process.
void ignore_limit_of_files();

/// A state to commit to: itself, which no other process writes to meanwhile, or its server.
struct FoundState {
  std::unique_ptr<tarnd::netconf::state::Journal> journal;  ///< null: a server has it
  std::filesystem::path server;                             ///< the server's socket
};

/// Waits a while for another command that commits to the state. Throws UsageError if the state does
/// not exist or is empty, and state::Failure.
FoundState find_state(const std::string& file);

/// The state itself. Throws UsageError if a server has it, too.
std::unique_ptr<tarnd::netconf::state::Journal> own_state(const std::string& file);

/// Makes the datastore the newest configuration, or the one that an unconfirmed commit goes back
/// to, as netconf::resume_pending() wants it. Throws state::Failure.
void restore_newest(tarnd::netconf::state::Journal& journal, tarnd::store::Datastore& datastore);

/// A state that this command commits to, as a server does for its clients.
class OwnedState {
 public:
  /// Loads the newest configuration. Throws UsageError if a commit waits to be confirmed, and
  /// state::Failure.
  OwnedState(std::unique_ptr<tarnd::netconf::state::Journal> journal, Host& host);

  /// The edits of the newest configuration.
  [[nodiscard]] tarnd::store::Transaction& transaction() { return card_->candidate; }

  /// Whether a commit would store nothing. A leaf that is set to its default is stored.
  [[nodiscard]] bool changes_nothing() const { return card_->candidate.item_changes().empty(); }

  /// Edits it into the configuration as it was after a commit. Throws state::Failure.
  void go_back_to(tarnd::netconf::state::Number number);

  /// Validates the prepared transaction; what is accepted is stored, and then done. Throws
  /// state::Failure, and has changed nothing then.
  tarnd::CommitReport commit(tarnd::netconf::state::Kind kind, tarnd::netconf::state::Author author,
                             const tarnd::CommitOptions& options);

 private:
  std::unique_ptr<tarnd::netconf::state::Journal> journal_;
  std::optional<tarnd::netconf::Card> card_;
};

}  // namespace gponval
