#pragma once

#include "standalone/store/edit_log.h"
#include "standalone/store/reader.h"

namespace tarnd::store {

class Datastore;

/// Applies an edit to the datastore through the log. Throws InputError with the line; the log then
/// has what was applied before.
void apply_edit(Datastore& datastore, TreeKeeper& keeper, EditLog& log, const ReadChange& change);

}  // namespace tarnd::store
