#pragma once

#include "confd_lib.h"
#include "standalone/confd/model.h"

namespace tarnd::confd {

/// Writes the value array of an entry, depth first: at most `room` values, which own their memory.
/// Returns the number of values that the whole array has.
int write_value_array(const Model& model, const lyd_node* entry, confd_value_t* values, int room);

/// The highest number of values that an instance of the node has.
int max_value_array_size(const store::SchemaNode& node);

}  // namespace tarnd::confd
