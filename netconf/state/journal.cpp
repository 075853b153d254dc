#include "netconf/state/journal.h"

#include <algorithm>
#include <ctime>
#include <fstream>
#include <utility>

#include "netconf/state/failure.h"
#include "netconf/state/schema_version.h"
#include "netconf/state/snapshots.h"

namespace tarnd::netconf::state {
namespace {

// To begin with a snapshot must cost little more than with the file of which it was made, and
// snapshots themselves little more than the changes.
constexpr std::size_t kPartOfSnapshot = 32;
constexpr std::size_t kMostLatest = 1000;
constexpr std::size_t kLeastOfChanges = std::size_t{1} << 16;

// Another one after each start of the machine.
std::string this_boot() {
  std::string boot;
  std::ifstream("/proc/sys/kernel/random/boot_id") >> boot;
  return boot;
}

}  // namespace

Journal::Journal(const std::filesystem::path& file, Keep keep) : database_(file), keep_(keep) {
  if (database_.is_new()) return;
  newest_ = state::newest(connection());
  for (CommitLine& line : list(connection(), kMostLatest)) latest_.push_back(std::move(line));
  has_unconfirmed_ = connection().number("SELECT count(*) FROM pending") != 0;
  snapshot_ = newest_snapshot(connection());
  size_since_ = size_after(connection(), snapshot_.number);
}

void Journal::begin(const store::Datastore& datastore, const Author& author) {
  const std::string configuration = snapshot_text(datastore);
  Commit first;
  first.kind = Kind::kImport;
  first.author = author;
  Writing writing(connection());
  migrate(connection());
  const Number number = append(connection(), first, size_since_);
  keep_snapshot(connection(), number, configuration, 1);
  writing.commit();
  newest_ = number;
  note(first);
  snapshot_ = newest_snapshot(connection());
  size_since_ = 0;
  sync();
}

std::optional<LeftUnconfirmed> Journal::left_unconfirmed() {
  if (!has_unconfirmed_) return std::nullopt;
  Statement select(connection(), "SELECT since, persist, deadline, boot FROM pending");
  if (!select.step()) return std::nullopt;
  return LeftUnconfirmed{select.integer(0), select.text(1),
                         std::chrono::seconds(select.integer(2) - std::time(nullptr)),
                         select.text(3) == this_boot()};
}

void Journal::keep_unconfirmed(const std::optional<Unconfirmed>& unconfirmed) {
  if (!unconfirmed.has_value()) {
    if (has_unconfirmed_) connection().run("DELETE FROM pending");
    return;
  }
  // The commits that follow a confirmed one go back to where that one does.
  const std::string boot = this_boot();
  Statement(connection(),
            "INSERT INTO pending (one, since, persist, deadline, boot) VALUES (1, ?, ?, ?, ?)"
            " ON CONFLICT (one) DO UPDATE SET persist = excluded.persist,"
            " deadline = excluded.deadline, boot = excluded.boot")
      .bind(1, newest_)
      .bind(2, std::string_view(unconfirmed->persist))
      .bind(3, std::int64_t{std::time(nullptr)} + unconfirmed->left.count())
      .bind(4, std::string_view(boot))
      .run();
}

void Journal::record(const Commit& commit, const std::optional<Unconfirmed>& unconfirmed) {
  const bool is_there_anything =
      !commit.changes.empty() || unconfirmed.has_value() || has_unconfirmed_;
  if (!is_there_anything) return;
  check_disk_is_known();
  Number number = newest_;
  std::size_t size = size_since_;
  Writing writing(connection());
  keep_unconfirmed(unconfirmed);
  if (!commit.changes.empty()) number = append(connection(), commit, size);
  writing.commit();
  newest_ = number;
  if (!commit.changes.empty()) note(commit);
  has_unconfirmed_ = unconfirmed.has_value();
  size_since_ = size;
  is_synced_ = false;
  is_tended_ = false;
}

void Journal::note(const Commit& commit) {
  latest_.push_front({newest_, commit.time, commit.kind, commit.author,
                      static_cast<std::int64_t>(commit.changes.size())});
  if (latest_.size() > kMostLatest) latest_.pop_back();
}

void Journal::check_disk_is_known() {
  if (!is_disk_unknown_) return;
  throw Failure("state '" + connection().name() +
                "': earlier commits may not be on the disk; the server has to be started again");
}

// The kernel may forget what it could not write, and report success the next time.
void Journal::sync() {
  if (is_synced_) return;
  check_disk_is_known();
  is_disk_unknown_ = true;
  connection().sync_log();
  is_disk_unknown_ = false;
  is_synced_ = true;
}

void Journal::tend(const store::Transaction& candidate) {
  if (is_tended_) return;
  is_tended_ = true;
  const std::time_t now = std::time(nullptr);
  if (is_snapshot_due(now)) renew_snapshot(candidate, now);
  database_.empty_log();
}

// History can only begin with a snapshot.
bool Journal::is_snapshot_due(std::time_t now) const {
  if (snapshot_.number == newest_) return false;
  return size_since_ > std::max(kLeastOfChanges, snapshot_.size / kPartOfSnapshot) ||
         may_begin_with(keep_, snapshot_.number, snapshot_.time, newest_, now);
}

void Journal::renew_snapshot(const store::Transaction& candidate, std::time_t now) {
  const store::CommittedSight sight(candidate);
  const std::string configuration = snapshot_text(candidate.datastore());
  Writing writing(connection());
  keep_snapshot(connection(), newest_, configuration, keep_.is_all() ? 1 : 2);
  // What waits to be confirmed may go back to an old one.
  if (!has_unconfirmed_) drop_old_commits(connection(), keep_, newest_, now);
  writing.commit();
  snapshot_ = newest_snapshot(connection());
  size_since_ = 0;
  const Number first = oldest(connection());
  while (latest_.back().number < first) latest_.pop_back();
}

}  // namespace tarnd::netconf::state
