#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>

#include "standalone/daemon/daemon.h"
#include "standalone/store/transaction.h"

namespace tarnd::netconf {

using SessionId = std::uint32_t;

/// What a commit does when validators warn.
enum class WarningPolicy {
  kAccept,  ///< confirm: the warnings are logged
  kReject,  ///< commit nothing, reply with errors that say what has to be confirmed
  kReport   ///< commit nothing, reply with the warnings
};

enum class LogLevel { kError, kWarning, kInfo };
using Log = std::function<void(LogLevel, const std::string&)>;

/// A session as the other sessions see it.
struct SessionInfo {
  std::string user;
  bool is_killed = false;
};

/// What all sessions share: the configuration, whose open transaction is the candidate, who has
/// locked what, and the sessions themselves.
struct Card {
  Card(store::Datastore& datastore_, Daemon& daemon_, WarningPolicy warnings_, Log log_)
      : datastore(datastore_),
        daemon(daemon_),
        warnings(warnings_),
        log(std::move(log_)),
        candidate(datastore_) {}

  store::Datastore& datastore;
  Daemon& daemon;
  WarningPolicy warnings;
  Log log;
  store::Transaction candidate;
  std::optional<SessionId> running_lock;
  std::optional<SessionId> candidate_lock;
  std::map<SessionId, SessionInfo> sessions;
};

/// Forgets the session. Its locks are free again; the changes of a candidate that it had locked
/// are gone.
void end_session(Card& card, SessionId id);

}  // namespace tarnd::netconf
