#pragma once

#include <cstdint>

#include "cl_elapsed_time.h"
#include "confd_maapi.h"

/// Guards that several validators share, for what must be closed again.
namespace valid {

/// The trace bracket of a validator. Open it first, leave with `return trace.end(result);`. A
/// validator that traces another figure than it returns writes `trace.end(0); return -1;`. An
/// exception that leaves the validator writes no end record.
class ValidationTrace {
 public:
  /// Starts the time and writes the begin record. The name is the validator's; it is not copied.
  explicit ValidationTrace(const char* name);

  /// Writes the end record with the milliseconds so far and returns the result.
  std::int32_t end(std::int32_t result) const;

 private:
  cl_ElapsedTime timer_;
  const char* name_;
};

/// A walk over a list of the transaction:
///   Cursor mappings(sock, tctx, "/config/profile/gpon/service-profile{%s}/vlan-mapping", name);
///   while (mappings.next()) { ... mappings.entry().keys[0] ... }
class Cursor {
 public:
  /// The path is a MAAPI path format with its arguments. Pass a text from outside as an argument
  /// for "%s".
  template <typename... Args>
  Cursor(int sock, const confd_trans_ctx* tctx, const char* path, Args... args)
      : open_(maapi_init_cursor(sock, tctx->thandle, &cursor_, path, args...) == CONFD_OK) {}
  Cursor(const Cursor&) = delete;
  Cursor& operator=(const Cursor&) = delete;
  ~Cursor();

  /// Steps to the next entry. Returns false at the end of the list, and if it cannot be read.
  bool next();

  /// The current entry: `n` keys in `keys`, which ConfD owns; they are valid until the next step.
  maapi_cursor& entry() { return cursor_; }

  /// Keeps the destructor from closing the cursor; ConfD frees it with the transaction.
  void release() { open_ = false; }

 private:
  maapi_cursor cursor_{};
  bool open_;
};

/// A query over the transaction that selects one node of each entry, with results as tagged values:
///   Query onus(sock, tctx, xpath, chunk_size, "rg-profile");
///   while (const confd_query_result* chunk = onus.next_chunk()) { ... chunk->results[i].tv ... }
///   if (onus.failed()) ...
class Query {
 public:
  /// chunk_size 0 leaves the size of a chunk to ConfD.
  Query(int sock, const confd_trans_ctx* tctx, const char* xpath, int chunk_size,
        const char* selection);
  Query(const Query&) = delete;
  Query& operator=(const Query&) = delete;
  ~Query();

  /// The next chunk with results; it lives until the next call or the query's end. Null at the end,
  /// and after a failure.
  const confd_query_result* next_chunk();

  /// True if the last call of next_chunk() found no chunk because the query could not be started or
  /// read.
  [[nodiscard]] bool failed() const { return failed_; }

 private:
  [[nodiscard]] bool started() const { return handle_ >= 0; }
  void free_chunk();

  int sock_;
  int handle_;
  bool failed_ = false;
  confd_query_result* chunk_ = nullptr;
};

/// A read session on the committed configuration.
class ConfigSession {
 public:
  /// Whether the session is closed even if it could not be opened.
  enum class AfterFailedStart { kEnd, kLeave };

  ConfigSession(const confd_trans_ctx* tctx, AfterFailedStart after_failed_start);
  ConfigSession(const ConfigSession&) = delete;
  ConfigSession& operator=(const ConfigSession&) = delete;
  ~ConfigSession();

  [[nodiscard]] bool open() const { return socket_ > 0; }
  /// The CDB socket; 0 or less if the session is not open.
  [[nodiscard]] int socket() const { return socket_; }
  /// Closes the session before the guard's scope ends.
  void end();

 private:
  void* handle_;
  int socket_;
};

}  // namespace valid
