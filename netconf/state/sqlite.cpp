#include "netconf/state/sqlite.h"

#include <cerrno>
#include <cstring>
#include <utility>

#include "netconf/state/failure.h"

namespace tarnd::netconf::state {
namespace {

// Another process holds the file for an instant only, such as at the end of its last connection.
constexpr int kPatience = 10'000;  // milliseconds

constexpr const char* kDamaged = "it is damaged";

bool is_without_room(int code, int error_number) {
  if (code == SQLITE_FULL) return true;
  return code == SQLITE_IOERR &&
         (error_number == ENOSPC || error_number == EDQUOT || error_number == EFBIG);
}

Failure::Cause cause_of(int code, int error_number) {
  if (is_without_room(code, error_number)) return Failure::Cause::kNoRoom;
  return code == SQLITE_CORRUPT ? Failure::Cause::kDamaged : Failure::Cause::kOther;
}

std::string reason(sqlite3* handle, int code, int error_number) {
  switch (code) {
    case SQLITE_NOTADB:
      return "it is no state of gponval";
    case SQLITE_CORRUPT:
      return kDamaged;
    case SQLITE_READONLY:
      return "it cannot be written to";
    case SQLITE_BUSY:
      return "another process is using it";
    case SQLITE_FULL:
      return "the disk is full";
    case SQLITE_IOERR:
    case SQLITE_CANTOPEN:
      if (error_number != 0) return std::strerror(error_number);
      break;
    default:
      break;
  }
  return sqlite3_errmsg(handle);
}

}  // namespace

Connection::Connection(const std::filesystem::path& file, Access access)
    : name_(file.string()), handle_(nullptr, &sqlite3_close) {
  const int flags =
      access == Access::kRead ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
  sqlite3* opened = nullptr;
  const int result = sqlite3_open_v2(name_.c_str(), &opened, flags, nullptr);
  handle_.reset(opened);
  if (result != SQLITE_OK) fail();
  sqlite3_busy_timeout(opened, kPatience);
  run("PRAGMA foreign_keys = ON");
}

void Connection::fail() const {
  // SQLite keeps the number of an error for some calls only.
  const int last_error = errno;
  const int code = sqlite3_errcode(handle());
  const int kept = sqlite3_system_errno(handle());
  const int error_number = kept != 0 ? kept : last_error;
  throw Failure("state '" + name_ + "': " + reason(handle(), code, error_number),
                cause_of(code, error_number));
}

// It changes the database.
// NOLINTNEXTLINE(readability-make-member-function-const)
void Connection::run(const std::string& statements) {
  errno = 0;
  if (sqlite3_exec(handle(), statements.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) fail();
}

void Connection::sync_log() {
  sqlite3_file* log = nullptr;
  errno = 0;
  if (sqlite3_file_control(handle(), "main", SQLITE_FCNTL_JOURNAL_POINTER, &log) != SQLITE_OK) {
    fail();
  }
  if (log == nullptr || log->pMethods == nullptr) return;  // nothing was written yet
  if (log->pMethods->xSync(log, SQLITE_SYNC_NORMAL) == SQLITE_OK) return;
  throw Failure("state '" + name_ + "': its log cannot be synced: " + std::strerror(errno));
}

// It changes the file, if not the connection.
// NOLINTNEXTLINE(readability-make-member-function-const)
void Connection::empty_log() {
  errno = 0;
  const int result =
      sqlite3_wal_checkpoint_v2(handle(), "main", SQLITE_CHECKPOINT_PASSIVE, nullptr, nullptr);
  if (result != SQLITE_OK && result != SQLITE_BUSY) fail();
}

std::int64_t Connection::number(const std::string& statement) {
  Statement prepared(*this, statement);
  return prepared.step() ? prepared.integer(0) : 0;
}

PreparedStatement Connection::take_prepared(const std::string& text) {
  const auto kept = prepared_.find(text);
  if (kept != prepared_.end()) return prepared_.extract(kept);
  sqlite3_stmt* made = nullptr;
  const int result = sqlite3_prepare_v3(handle(), text.data(), static_cast<int>(text.size()),
                                        SQLITE_PREPARE_PERSISTENT, &made, nullptr);
  StatementHandle statement(made, &sqlite3_finalize);
  if (result != SQLITE_OK) fail();
  return prepared_.extract(prepared_.try_emplace(text, std::move(statement)).first);
}

void Connection::keep_prepared(PreparedStatement statement) {
  sqlite3_reset(statement.mapped().get());
  sqlite3_clear_bindings(statement.mapped().get());
  prepared_.insert(std::move(statement));
}

Statement::Statement(Connection& connection, const std::string& text)
    : connection_(connection), prepared_(connection.take_prepared(text)) {}

Statement::~Statement() {
  connection_.keep_prepared(std::move(prepared_));
}

void Statement::check(int result) const {
  if (result != SQLITE_OK) connection_.fail();
}

Statement& Statement::bind(int parameter, std::int64_t value) {
  check(sqlite3_bind_int64(handle(), parameter, value));
  return *this;
}

Statement& Statement::bind(int parameter, std::string_view text) {
  // A null pointer would be a null.
  const char* bytes = text.data() != nullptr ? text.data() : "";
  check(sqlite3_bind_text64(handle(), parameter, bytes, text.size(), SQLITE_STATIC, SQLITE_UTF8));
  return *this;
}

Statement& Statement::bind(int parameter, const std::optional<std::string>& text) {
  if (text.has_value()) return bind(parameter, std::string_view(*text));
  check(sqlite3_bind_null(handle(), parameter));
  return *this;
}

bool Statement::step() {
  errno = 0;
  switch (sqlite3_step(handle())) {
    case SQLITE_ROW:
      return true;
    case SQLITE_DONE:
      return false;
    default:
      connection_.fail();
  }
}

void Statement::run() {
  while (step()) {
  }
}

std::int64_t Statement::integer(int column) const {
  return sqlite3_column_int64(handle(), column);
}

std::string Statement::text(int column) const {
  const auto* bytes = reinterpret_cast<const char*>(sqlite3_column_text(handle(), column));
  if (bytes == nullptr) return "";
  return {bytes, static_cast<std::size_t>(sqlite3_column_bytes(handle(), column))};
}

std::optional<std::string> Statement::optional_text(int column) const {
  if (is_null(column)) return std::nullopt;
  return text(column);
}

bool Statement::is_null(int column) const {
  return sqlite3_column_type(handle(), column) == SQLITE_NULL;
}

namespace {

// SQLite itself has rolled back after some failures.
void roll_back(Connection& connection) {
  if (!connection.is_within_transaction()) return;
  sqlite3_exec(connection.handle(), "ROLLBACK", nullptr, nullptr, nullptr);
}

}  // namespace

Reading::Reading(Connection& connection) : connection_(connection) {
  Statement(connection, "BEGIN").run();
}

Reading::~Reading() {
  roll_back(connection_);
}

Writing::Writing(Connection& connection) : connection_(connection) {
  Statement(connection, "BEGIN IMMEDIATE").run();
}

Writing::~Writing() {
  roll_back(connection_);
}

void Writing::commit() {
  Statement(connection_, "COMMIT").run();
}

}  // namespace tarnd::netconf::state
