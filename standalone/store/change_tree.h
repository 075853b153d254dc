#pragma once

#include <optional>

#include "standalone/store/edit_log.h"
#include "standalone/store/transaction.h"

namespace tarnd::store {

/// What differs between before and after, whatever edits led there; empty when nothing does.
std::optional<Change> change_tree(const EditRecord& record);

}  // namespace tarnd::store
