#pragma once

#include <vector>

#include "netconf/state/commits.h"
#include "netconf/state/sqlite.h"
#include "standalone/store/item_changes.h"

namespace tarnd::netconf::state {

/// What leads from the configuration after one commit to that after another one, forwards or
/// backwards: each item once, however often commits between them changed it. Throws Failure.
std::vector<store::ItemChange> changes_between(Connection& connection, Number from, Number to);

}  // namespace tarnd::netconf::state
