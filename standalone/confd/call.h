#pragma once

#include <cstdarg>
#include <optional>

#include "standalone/confd/place.h"
#include "standalone/confd/session_state.h"
#include "standalone/platform_calls.h"
#include "standalone/store/path.h"

namespace tarnd::confd {

// What a call does first. If one of these functions returns false, null or nothing, the call has
// failed: confd_errno and the text of confd_lasterr are set, and the caller returns CONFD_ERR.

/// Counts the call and asks the hook; if the hook refuses the call, it has failed with
/// CONFD_ERR_UNAVAILABLE.
bool enter(PlatformCall call);

/// Enters a call on a transaction and finds its session, by socket and handle or by socket alone.
SessionState* enter_session(PlatformCall call, int sock, int thandle);
SessionState* enter_session(PlatformCall call, int sock);

/// The path of a format and its arguments. Only its last element may be a list without keys.
std::optional<store::Path> read_path(const Model& model, const char* format,
                                     std::va_list arguments);

struct PlaceInSession {
  SessionState* session = nullptr;
  Place place;
};

/// Enters a call on a transaction with a path, and finds the place that the path leads to.
std::optional<PlaceInSession> enter_place(PlatformCall call, int sock, int thandle,
                                          const char* format, std::va_list arguments);

struct PathInSession {
  const SessionState* session = nullptr;
  store::Path path;
};

/// Enters a call with a path on the committed configuration; `sock` is that of a read session.
std::optional<PathInSession> enter_committed(PlatformCall call, int sock, const char* format,
                                             std::va_list arguments);

}  // namespace tarnd::confd
