#include "netconf/state/database.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>

#include "netconf/state/failure.h"
#include "netconf/state/schema_version.h"

namespace tarnd::netconf::state {
namespace {

constexpr mode_t kOwnersOnly = 0600;

// As many as SQLite has by itself.
constexpr int kMostLogPages = 1000;

// With a hook of one's own SQLite leaves the log alone.
int note_pages(void* pages, sqlite3* /*handle*/, const char* /*name*/, int now) {
  *static_cast<int*>(pages) = now;
  return SQLITE_OK;
}

[[noreturn]] void fail(const std::filesystem::path& file, const std::string& why,
                       Failure::Cause cause = Failure::Cause::kOther) {
  throw Failure("state '" + file.string() + "': " + why, cause);
}

// A command that read the file while it was read-only has left SQLite's other two read-only, too.
// What cannot be changed is reported when SQLite opens them.
void make_writable_again(const std::filesystem::path& file, mode_t mode) {
  for (const char* suffix : {"-wal", "-shm"}) {
    const std::string name = file.string() + suffix;
    if (access(name.c_str(), W_OK) == 0) continue;
    const Descriptor left(open(name.c_str(), O_RDONLY | O_NOFOLLOW | O_CLOEXEC));
    if (left.get() >= 0) fchmod(left.get(), mode);
  }
}

// SQLite opens a file that it must not write to for reading, and a folder not at all.
Descriptor locked(const std::filesystem::path& file) {
  Descriptor lock(open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, kOwnersOnly));
  if (lock.get() < 0) fail(file, std::strerror(errno));
  if (flock(lock.get(), LOCK_EX | LOCK_NB) == 0) {
    struct stat status = {};
    if (fstat(lock.get(), &status) == 0) make_writable_again(file, status.st_mode);
    return lock;
  }
  if (errno != EWOULDBLOCK) fail(file, std::strerror(errno));
  fail(file, "another process serves it", Failure::Cause::kInUse);
}

}  // namespace

OwnedDatabase::OwnedDatabase(const std::filesystem::path& file)
    : lock_(locked(file)), connection_(file, Access::kWrite) {
  is_new_ = state::is_new(connection_);
  if (!is_new_) check_version(connection_);
  // A commit appends to a log. The owner syncs the log, once for several commits, and empties it
  // when nobody waits for an answer.
  connection_.run("PRAGMA journal_mode = WAL; PRAGMA synchronous = NORMAL");
  sqlite3_wal_hook(connection_.handle(), &note_pages, &log_pages_);
  if (is_new_) return;
  Writing writing(connection_);
  migrate(connection_);
  writing.commit();
}

void OwnedDatabase::empty_log() {
  log_pages_left_ = std::min(log_pages_left_, log_pages_);
  if (log_pages_ - log_pages_left_ < kMostLogPages) return;
  // A reader may need all of it still.
  log_pages_left_ = log_pages_;
  connection_.empty_log();
}

Connection open_to_read(const std::filesystem::path& file) {
  Connection connection(file, Access::kRead);
  if (is_new(connection)) fail(file, "nothing was stored in it");
  check_version(connection);
  return connection;
}

}  // namespace tarnd::netconf::state
