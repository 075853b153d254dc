#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "standalone/daemon/daemon.h"
#include "standalone/store/transaction.h"

namespace tarnd::report {

/// An edit that was applied to a transaction, with its text.
struct AppliedEdit {
  std::string file;  ///< as the user named it; empty for an edit by path
  std::optional<store::Operation> by_path;
  std::string text;
  store::Format format = store::Format::kXml;  ///< of a file
};

/// The place in a file that an answer is about.
struct Source {
  std::string file;
  std::size_t line = 0;
};

/// For each answer the place of the only edit that touched the validated node, or the only entry of
/// a validated list that changed; none if there are several, if the edit is one by path, and for an
/// answer that accepts. The transaction is still open. The edits are read again.
std::vector<std::optional<Source>> sources_of(const store::Transaction& transaction,
                                              const std::vector<AppliedEdit>& edits,
                                              const std::vector<Answer>& answers);

}  // namespace tarnd::report
