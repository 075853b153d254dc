#pragma once

#include <optional>
#include <string>
#include <vector>

#include "standalone/store/transaction.h"

// The header of CLI11 takes seconds to compile.
namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace gponval {

/// One edit of the command line.
struct Edit {
  std::string option;                              ///< "--set"
  std::optional<tarnd::store::Operation> by_path;  ///< none: the argument is a file
  std::string argument;
};

/// Adds --change and the edits by path, which may be mixed. Returns them.
std::vector<CLI::Option*> add_edit_options(CLI::App& app, const std::string& group);

/// The edits of a parsed command line, in its order.
std::vector<Edit> edits_given(const CLI::App& app);

}  // namespace gponval
