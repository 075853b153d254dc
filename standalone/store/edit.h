#pragma once

#include <functional>

#include "standalone/input_error.h"
#include "standalone/store/edit_log.h"
#include "standalone/store/reader.h"

namespace tarnd::store {

class Datastore;

/// Takes an error in one node of an edit, instead of throwing it; the rest of the edit is applied.
using FailureSink = std::function<void(const InputError&)>;

/// Applies an edit to the datastore through the log. Throws InputError with the line; the log then
/// has what was applied before.
void apply_edit(Datastore& datastore, TreeKeeper& keeper, EditLog& log, const ReadChange& change);
/// Applies of the edit what can be applied, and passes on the errors of the other nodes.
void apply_edit(Datastore& datastore, TreeKeeper& keeper, EditLog& log, const ReadChange& change,
                const FailureSink& failed);

}  // namespace tarnd::store
