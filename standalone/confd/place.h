#pragma once

#include <cstdarg>
#include <optional>

#include "standalone/platform_calls.h"
#include "standalone/session/session_state.h"
#include "standalone/store/path.h"

namespace tarnd::confd {

/// Where a path leads in the transaction.
struct Place {
  const store::SchemaNode* schema = nullptr;
  lyd_node* node = nullptr;    ///< what stands there, or null
  lyd_node* parent = nullptr;  ///< what the last element stands in, or null where that is missing
  bool keyed = false;          ///< the last element names one entry of a list or leaf-list
  /// The place exists: the node stands, or it is a container without presence whose parent exists.
  bool exists = false;
};

/// Follows a path in the tree.
Place find_place(const store::Datastore& datastore, const store::Path& path);

/// The path of a format and its arguments; a list without keys may only be its last element. Where
/// it is none, the call has failed.
std::optional<store::Path> read_path(const Model& model, const char* format,
                                     std::va_list arguments);

/// How every call on a transaction begins: counts it, finds the session. Null where the call has
/// failed.
SessionState* enter_session(PlatformCall call, int sock, int thandle);

/// The same for a call with a path: also finds the place.
struct PlaceInSession {
  SessionState* session = nullptr;
  Place place;
};
std::optional<PlaceInSession> enter_place(PlatformCall call, int sock, int thandle,
                                          const char* format, std::va_list arguments);

/// "'onu' is no list", for the calls that a node's kind does not suit. Gives CONFD_ERR.
int fail_kind(int code, const store::SchemaNode& node, const char* what);

}  // namespace tarnd::confd
