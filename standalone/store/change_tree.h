#pragma once

#include <optional>

#include "standalone/store/edit_log.h"
#include "standalone/store/transaction.h"

namespace tarnd::store {

/// The differences between the configurations before and after, regardless of the edits in between;
/// empty if there are none.
std::optional<Change> change_tree(const EditRecord& record);

}  // namespace tarnd::store
