#pragma once

#include <string>
#include <string_view>

#include "standalone/store/schema.h"

namespace tarnd::store {

/// Why the model refuses this text as the value of the leaf or leaf-list, and what it takes, for
/// the user: "'5000' is not a number from 1 to 4094". The text of an encrypted leaf is not shown.
std::string why_refused(const SchemaNode& leaf, std::string_view text);

/// What the leaf takes: "a number from 0 to 7 or one of any".
std::string what_it_takes(const SchemaNode& leaf);

}  // namespace tarnd::store
