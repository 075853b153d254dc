#pragma once

#include <libyang/libyang.h>

namespace tarnd::store {

/// Adds the model's defaults at and below the node: leaves with a default value, and containers
/// without presence. Afterwards a container with nothing but defaults is marked as a default
/// itself, as libyang expects.
void bring_defaults(lyd_node* tree);

}  // namespace tarnd::store
