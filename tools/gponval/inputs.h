#pragma once

#include "standalone/store/transaction.h"
#include "tools/gponval/options.h"

namespace gponval {

/// Refuses a command line that reads standard input more than once, or reads a configuration from
/// it and answers from it too. Throws UsageError.
void check_standard_input(const InputOptions& inputs, const RunOptions& run);

/// Reads the committed configuration into the datastore. Throws UsageError or tarnd::InputError,
/// which name the file; so do the others.
void load_running(tarnd::store::Datastore& datastore, const InputOptions& inputs);

/// Applies the changes or the candidate and prepares the transaction.
void apply_changes(tarnd::store::Transaction& transaction, const InputOptions& inputs);

}  // namespace gponval
