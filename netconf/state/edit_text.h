#pragma once

#include <span>
#include <string>
#include <vector>

#include "standalone/store/item_changes.h"
#include "standalone/store/schema.h"

namespace tarnd::netconf::state {

/// The edits, in XML, that make these changes, one after the other: what goes, and then all else,
/// since no edit may name nodes of two cases of a choice. Throws InputError for a path that the
/// model does not have.
std::vector<std::string> edit_texts(const store::Schema& schema,
                                    std::span<const store::ItemChange> changes);

}  // namespace tarnd::netconf::state
