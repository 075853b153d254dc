#pragma once

#include <string>

#include "standalone/store/edit_log.h"

namespace tarnd::store {

/// Applies edit-config content to the datastore through the log. Throws InputError; what was
/// applied until then is in the log.
void apply_edit(Datastore& datastore, TreeKeeper& keeper, EditLog& log, const std::string& text,
                Format format);

}  // namespace tarnd::store
