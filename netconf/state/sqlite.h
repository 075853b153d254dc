#pragma once

#include <sqlite3.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace tarnd::netconf::state {

enum class Access { kRead, kWrite };

using StatementHandle = std::unique_ptr<sqlite3_stmt, int (*)(sqlite3_stmt*)>;
using PreparedStatements = std::map<std::string, StatementHandle>;
using PreparedStatement = PreparedStatements::node_type;

/// An open SQLite database. Every function throws Failure, whose text names the file.
class Connection {
 public:
  /// With kWrite the file is made if it does not exist.
  Connection(const std::filesystem::path& file, Access access);

  /// Runs statements that return nothing.
  void run(const std::string& statements);
  /// The number that a statement such as "PRAGMA user_version" returns.
  [[nodiscard]] std::int64_t number(const std::string& statement);
  [[nodiscard]] std::int64_t last_row() const { return sqlite3_last_insert_rowid(handle()); }
  /// Whether statements run inside a transaction.
  [[nodiscard]] bool is_within_transaction() const { return sqlite3_get_autocommit(handle()) == 0; }

  [[nodiscard]] sqlite3* handle() const { return handle_.get(); }
  [[nodiscard]] const std::string& name() const { return name_; }
  /// Waits until the disk has what was committed in the write-ahead log.
  void sync_log();
  /// Moves what the log has into the database itself, as far as no reader needs it there.
  void empty_log();

  /// Throws what the last call failed with.
  [[noreturn]] void fail() const;

 private:
  friend class Statement;
  PreparedStatement take_prepared(const std::string& text);
  void keep_prepared(PreparedStatement statement);

  std::string name_;
  std::unique_ptr<sqlite3, int (*)(sqlite3*)> handle_;
  PreparedStatements prepared_;  // those that no Statement uses
};

/// A prepared statement, which the connection keeps for the next one of the same text. Parameters
/// and columns count from 1 and 0, as SQLite has them.
class Statement {
 public:
  Statement(Connection& connection, const std::string& text);
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;
  ~Statement();

  Statement& bind(int parameter, std::int64_t value);
  /// The text must live until the statement has run.
  Statement& bind(int parameter, std::string_view text);
  Statement& bind(int parameter, const std::optional<std::string>& text);

  /// Runs up to the next row. Returns false after the last one.
  bool step();
  /// Runs a statement that returns no rows.
  void run();

  [[nodiscard]] std::int64_t integer(int column) const;
  [[nodiscard]] std::string text(int column) const;
  /// No value for null.
  [[nodiscard]] std::optional<std::string> optional_text(int column) const;
  [[nodiscard]] bool is_null(int column) const;

 private:
  void check(int result) const;
  [[nodiscard]] sqlite3_stmt* handle() const { return prepared_.mapped().get(); }

  Connection& connection_;
  PreparedStatement prepared_;
};

/// A transaction that writes. It is rolled back unless commit() returns.
class Writing {
 public:
  explicit Writing(Connection& connection);
  Writing(const Writing&) = delete;
  Writing& operator=(const Writing&) = delete;
  ~Writing();

  /// When it returns, what was written outlives the process; after Connection::sync_log() also the
  /// machine's power.
  void commit();

 private:
  Connection& connection_;
};

/// A transaction that reads: what others write meanwhile is not seen.
class Reading {
 public:
  explicit Reading(Connection& connection);
  Reading(const Reading&) = delete;
  Reading& operator=(const Reading&) = delete;
  ~Reading();

 private:
  Connection& connection_;
};

}  // namespace tarnd::netconf::state
