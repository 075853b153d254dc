#pragma once

#include <span>

#include "confd_maapi.h"
#include "standalone/confd/model.h"
#include "standalone/store/path.h"
#include "standalone/store/transaction.h"

namespace tarnd::confd {

/// The callback of maapi_keypath_diff_iterate.
using DiffIterator = maapi_iter_ret (*)(confd_hkeypath_t*, maapi_iter_op, confd_value_t*,
                                        confd_value_t*, void*);

/// Calls the iterator for each changed node at and below the place that the steps lead to from the
/// root, parents first, in the order of the model and the keys. Returns false if the iterator's
/// answer is none of ITER_STOP, ITER_RECURSE and ITER_CONTINUE; the walk ends there.
bool walk_changes(const Model& model, const store::Change& changes,
                  std::span<const store::PathStep> steps, DiffIterator iterator, void* state);

}  // namespace tarnd::confd
