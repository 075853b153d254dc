#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "standalone/card/card_file.h"
#include "standalone/store/transaction.h"
#include "tools/gponval/options.h"

namespace gponval {

/// The format that the ending of a file's name says, in upper or lower case: .xml or .json.
std::optional<tarnd::store::Format> format_named_by(std::string_view file_name);

/// The format of the running configuration.
tarnd::store::Format running_format(const InputOptions& inputs);

/// Refuses a command line that reads standard input more than once, or reads from it and answers
/// from it too. Throws UsageError.
void check_standard_input(const InputOptions& inputs, const RunOptions& run);

/// The card of the card file, or the standard card. Throws UsageError.
tarnd::CardDescription read_card(const InputOptions& inputs);

/// Reads the committed configuration into the datastore; returns its text. Throws UsageError.
std::string load_running(tarnd::store::Datastore& datastore, const InputOptions& inputs);

/// Applies the changes or the candidate and prepares the transaction. Throws UsageError, or
/// tarnd::InputError for what several changes together leave.
void apply_changes(tarnd::store::Transaction& transaction, const InputOptions& inputs);

}  // namespace gponval
