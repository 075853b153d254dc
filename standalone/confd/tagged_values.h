#pragma once

#include <span>

#include "confd_lib.h"
#include "standalone/confd/session_state.h"

namespace tarnd::confd {

/// Reads several leaves below a container or entry. The array is the structure to read: C_XMLBEGIN
/// and C_XMLEND enclose a container, and each C_NOEXISTS names a leaf and gets its value, which
/// owns its memory. A leaf that does not exist stays C_NOEXISTS. `instance` is null if the
/// container is not in the tree. Returns CONFD_OK, or fails the call and changes nothing.
int read_tagged_values(const SessionState& session, const store::SchemaNode& schema,
                       const lyd_node* instance, std::span<confd_tag_value_t> values);

}  // namespace tarnd::confd
