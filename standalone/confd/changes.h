#pragma once

#include <span>

#include "standalone/store/path.h"
#include "standalone/store/transaction.h"

namespace tarnd::confd {

/// A node that tells where the change is; of a leaf-list any value.
const lyd_node* node_of(const store::Change& change);

/// True where the step names the node: an entry with its keys, or any node where it has none.
bool names(const store::PathStep& step, const lyd_node* node);

/// The change that the steps below another one lead to, or null.
const store::Change* find_change(const store::Change& change,
                                 std::span<const store::PathStep> steps);

}  // namespace tarnd::confd
