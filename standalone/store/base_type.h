#pragma once

#include <libyang/libyang.h>

#include "standalone/store/schema.h"

namespace tarnd::store {

/// The kind of values that a built-in type has; kString for those that have none of their own.
ValueKind kind_of_base_type(LY_DATA_TYPE type);

}  // namespace tarnd::store
