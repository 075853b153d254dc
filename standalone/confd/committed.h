#pragma once

#include "standalone/confd/session_state.h"
#include "standalone/store/path.h"

namespace tarnd::confd {

/// Whether the committed configuration has the node of the path. A list or leaf-list without keys
/// exists if it has an entry or value.
bool is_committed(const SessionState& session, const store::Path& path);

}  // namespace tarnd::confd
