#pragma once

#include <string>

#include "standalone/store/transaction.h"

namespace tarnd::test {

/// The changes of the prepared transaction, a line for each node; empty if nothing changed.
std::string change_text(const store::Transaction& transaction);
/// The same of the change of `config`, which may be null.
std::string change_text(const store::Change* change);

}  // namespace tarnd::test
