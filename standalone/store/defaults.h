#pragma once

#include <libyang/libyang.h>

namespace tarnd::store {

/// Adds what the model has in effect at and below the node although nobody gave it: leaves with
/// their defaults and containers without presence. Containers that hold nothing given count as
/// defaults afterwards, as libyang has it.
void bring_defaults(lyd_node* tree);

}  // namespace tarnd::store
