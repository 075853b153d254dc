#pragma once

#include <string>

#include "standalone/store/transaction.h"

namespace tarnd::test {

/// What the prepared transaction changes, a line each node; empty when nothing differs.
std::string change_text(const store::Transaction& transaction);
/// The same of the change of `config`, which may be null.
std::string change_text(const store::Change* change);

}  // namespace tarnd::test
