#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "confd_maapi.h"
#include "standalone/confd/cursor.h"
#include "standalone/confd/model.h"
#include "standalone/confd/query.h"
#include "standalone/store/transaction.h"

namespace tarnd {

/// What the platform keeps for one validation session. Sockets, handles and all other numbers come
/// from one counter, so none is ever taken for another.
struct SessionState {
  explicit SessionState(store::Transaction& session_transaction);
  SessionState(const SessionState&) = delete;
  SessionState& operator=(const SessionState&) = delete;
  ~SessionState();

  store::Transaction& transaction;
  const confd::Model& model;
  int maapi_socket;
  confd_user_info user = {};
  confd_trans_ctx context = {};

  std::string request;
  std::optional<std::string> error_text;
  std::vector<std::string> messages;

  std::unordered_map<std::uintptr_t, confd::Cursor> cursors;
  std::unordered_map<int, confd::Query> queries;
  std::vector<int> cdb_sockets;  ///< of the open configuration sessions, the latest last
  bool crypto_keys_installed = false;
};

/// A number that nothing else has, greater than 0.
int next_number();

/// The live session with that socket and handle, or null; likewise by what else names one.
SessionState* find_session(int maapi_socket, int thandle);
SessionState* find_session_by_socket(int maapi_socket);
SessionState* find_session_by_handle(int thandle);
SessionState* find_session_by_cdb_socket(int cdb_socket);
SessionState* find_session_by_opaque(const void* vcb_opaque);
SessionState* find_session_by_user(int usid);
SessionState* find_session_with_cursor(std::uintptr_t cursor);
/// A live session through which the keys of encrypted leaves are known, or null.
SessionState* find_session_with_crypto_keys();

}  // namespace tarnd
