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
#include "standalone/confd/place_finder.h"
#include "standalone/confd/query.h"
#include "standalone/store/transaction.h"

namespace tarnd {

/// What the platform keeps for one validation session. Sockets, handles and all other numbers come
/// from one counter, so a socket passed as a handle, for example, is found out.
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

  std::string path_text;  ///< of the call that is being answered
  confd::PlaceFinder places;
  std::unordered_map<std::uintptr_t, confd::Cursor> cursors;
  std::unordered_map<int, confd::Query> queries;
  std::vector<int> cdb_sockets;  ///< of the open configuration sessions, in order of opening
  bool crypto_keys_installed = false;
};

/// A number greater than 0 that was not returned before.
int next_number();

/// The live session with that socket and handle, or null. The others find it by another of its
/// numbers.
SessionState* find_session(int maapi_socket, int thandle);
SessionState* find_session_by_socket(int maapi_socket);
SessionState* find_session_by_handle(int thandle);
SessionState* find_session_by_cdb_socket(int cdb_socket);
SessionState* find_session_by_opaque(const void* vcb_opaque);
SessionState* find_session_by_user(int usid);
SessionState* find_session_with_cursor(std::uintptr_t cursor);
/// A live session that has installed the keys of encrypted leaves, or null.
SessionState* find_session_with_crypto_keys();

}  // namespace tarnd
