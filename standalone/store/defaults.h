#pragma once

#include <libyang/libyang.h>

namespace tarnd::store {

/// Adds what the model has in effect at and below the node although nobody gave it: leaves with
/// their defaults and containers without presence. Containers that hold nothing given count as
/// defaults afterwards, as libyang has it.
void bring_defaults(lyd_node* tree);

/// The same for the node alone, when the nodes below it have their defaults already.
void bring_own_defaults(lyd_node* node);

}  // namespace tarnd::store
