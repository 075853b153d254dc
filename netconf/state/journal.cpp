#include "netconf/state/journal.h"

#include <algorithm>
#include <ctime>
#include <fstream>
#include <utility>

#include "netconf/state/schema_version.h"
#include "netconf/state/snapshots.h"

namespace tarnd::netconf::state {
namespace {

// To begin with a snapshot must cost little more than with the file of which it was made, and
// snapshots themselves little more than the changes.
constexpr std::size_t kPartOfSnapshot = 16;
constexpr std::size_t kLeastOfChanges = std::size_t{1} << 16;

// Another one after each start of the machine.
std::string this_boot() {
  std::string boot;
  std::ifstream("/proc/sys/kernel/random/boot_id") >> boot;
  return boot;
}

}  // namespace

Journal::Journal(const std::filesystem::path& file) : database_(file) {
  if (database_.is_new()) return;
  newest_ = state::newest(connection());
  has_unconfirmed_ = connection().number("SELECT count(*) FROM pending") != 0;
  snapshot_size_ = static_cast<std::size_t>(connection().number(
      "SELECT length(configuration) FROM snapshots ORDER BY number DESC LIMIT 1"));
  size_since_ = size_after(connection(), newest_snapshot(connection()));
}

void Journal::begin(const store::Datastore& datastore, const Author& author) {
  const std::string configuration = datastore.print(store::Format::kXml);
  Commit first;
  first.kind = Kind::kImport;
  first.author = author;
  Writing writing(connection());
  migrate(connection());
  const Number number = append(connection(), first, size_since_);
  keep_snapshot(connection(), number, configuration);
  writing.commit();
  newest_ = number;
  snapshot_size_ = configuration.size();
  size_since_ = 0;
}

std::optional<LeftUnconfirmed> Journal::left_unconfirmed() {
  if (!has_unconfirmed_) return std::nullopt;
  Statement select(connection(), "SELECT since, persist, deadline, boot FROM pending");
  if (!select.step()) return std::nullopt;
  return LeftUnconfirmed{select.integer(0), select.text(1),
                         std::chrono::seconds(select.integer(2) - std::time(nullptr)),
                         select.text(3) == this_boot()};
}

void Journal::keep(const std::optional<Unconfirmed>& unconfirmed) {
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

bool Journal::is_snapshot_due(std::size_t size) const {
  return size > std::max(kLeastOfChanges, snapshot_size_ / kPartOfSnapshot);
}

void Journal::record(const Commit& commit, const std::optional<Unconfirmed>& unconfirmed,
                     const store::Datastore* after) {
  const bool is_there_anything =
      !commit.changes.empty() || unconfirmed.has_value() || has_unconfirmed_;
  if (!is_there_anything) return;
  Number number = newest_;
  std::size_t size = size_since_;
  std::size_t snapshot_size = snapshot_size_;
  Writing writing(connection());
  keep(unconfirmed);
  if (!commit.changes.empty()) number = append(connection(), commit, size);
  if (after != nullptr && is_snapshot_due(size)) {
    const std::string configuration = after->print(store::Format::kXml);
    keep_snapshot(connection(), number, configuration);
    snapshot_size = configuration.size();
    size = 0;
  }
  writing.commit();
  newest_ = number;
  has_unconfirmed_ = unconfirmed.has_value();
  size_since_ = size;
  snapshot_size_ = snapshot_size;
}

}  // namespace tarnd::netconf::state
