#pragma once

#include <chrono>
#include <cstdint>
#include <ctime>
#include <functional>
#include <map>
#include <optional>
#include <string>

#include "netconf/state/journal.h"
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

class YangModules;

struct MessageCounts {
  std::uint64_t rpcs = 0;
  std::uint64_t bad_rpcs = 0;  ///< that could not be read
  std::uint64_t errors = 0;    ///< rpc-errors in replies
};

struct ServerCounts {
  std::time_t start = std::time(nullptr);
  std::uint64_t bad_hellos = 0;
  std::uint64_t sessions = 0;
  std::uint64_t dropped = 0;  ///< sessions that their clients did not close
  MessageCounts messages;     ///< of all sessions
};

/// A session as the other sessions see it.
struct SessionInfo {
  std::string user;
  bool is_killed = false;
  std::time_t login = std::time(nullptr);
  MessageCounts counts;
};

/// A commit that is taken back unless another one confirms it (RFC 6241, section 8.4).
struct PendingCommit {
  SessionId session = 0;
  std::string persist;  ///< empty: the commit ends with its session
  std::chrono::steady_clock::time_point deadline;
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
  std::optional<PendingCommit> pending;
  /// Where commits are kept; null if everything is in memory only.
  state::Journal* journal = nullptr;
  /// What get-schema returns; null if the server does without.
  const YangModules* modules = nullptr;
  std::time_t running_locked = 0;
  std::time_t candidate_locked = 0;
  ServerCounts counts;
};

/// Forgets the session. A confirmed commit of its own is taken back, its locks are free again, and
/// the changes of a candidate that it had locked are gone.
void end_session(Card& card, SessionId id);

}  // namespace tarnd::netconf
