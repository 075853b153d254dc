#pragma once

#include <optional>
#include <string>

#include "confd_lib.h"
#include "standalone/store/schema.h"

namespace tarnd::confd {

/// A value as confd_pp_value prints it.
std::string value_text(const confd_value_t& value);

/// A value by the type of its leaf, as confd_val2str prints it; nothing if it is not of that type.
std::optional<std::string> value_text(const store::SchemaNode& leaf, const confd_value_t& value);

/// A key as a path has it between braces.
std::string key_text(const confd_value_t& key);

/// A keypath from the root to the element `innermost`, as confd_pp_kpath prints it.
std::string keypath_text(const confd_hkeypath_t& keypath, int innermost = 0);

}  // namespace tarnd::confd
