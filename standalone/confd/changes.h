#pragma once

#include <span>

#include "standalone/store/path.h"
#include "standalone/store/transaction.h"

namespace tarnd::confd {

/// A node of the change, after it or else before it; for a leaf-list any of its values.
const lyd_node* node_of(const store::Change& change);

/// Whether the step names the node. A step without keys names every entry of its list.
bool names(const store::PathStep& step, const lyd_node* node);

/// The change that the steps lead to from another one, or null.
const store::Change* find_change(const store::Change& change,
                                 std::span<const store::PathStep> steps);

}  // namespace tarnd::confd
