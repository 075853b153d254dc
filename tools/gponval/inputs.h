#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "standalone/card/card_file.h"
#include "standalone/report/answer_source.h"
#include "standalone/store/transaction.h"
#include "tools/gponval/options.h"

namespace gponval {

/// The format by the ending of a file's name, .xml or .json in upper or lower case.
std::optional<tarnd::store::Format> format_named_by(std::string_view file_name);

/// The format of the running configuration.
tarnd::store::Format running_format(const InputOptions& inputs);

/// Throws UsageError if a command line reads standard input more than once, or reads both a file
/// and the user's answers from it.
void check_standard_input(const InputOptions& inputs, const RunOptions& run);

/// The card of the card file, or the default card. Throws UsageError.
tarnd::CardDescription read_card(const InputOptions& inputs);

/// Reads the committed configuration into the datastore. Throws UsageError.
void load_running(tarnd::store::Datastore& datastore, const InputOptions& inputs);
/// The same; returns its text.
std::string load_and_keep_running(tarnd::store::Datastore& datastore, const InputOptions& inputs);

/// Makes the running configuration the prepared content of a transaction. Throws UsageError.
void replace_by_running(tarnd::store::Transaction& transaction, const InputOptions& inputs);

/// Applies the changes or the candidate, prepares the transaction, and returns what was applied.
/// Throws UsageError, or tarnd::InputError if the result of several changes is invalid.
std::vector<tarnd::report::AppliedEdit> apply_changes(tarnd::store::Transaction& transaction,
                                                      const InputOptions& inputs);

/// A file of the command line as messages name it.
std::string_view name_in_message(std::string_view file);

}  // namespace gponval
