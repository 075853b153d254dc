#pragma once

#include <CLI/CLI.hpp>
#include <optional>
#include <string>

#include "netconf/state/commits.h"

namespace gponval {

/// What the history says of a commit of the command line.
struct Remarks {
  std::optional<std::string> label;
  std::optional<std::string> comment;
};

/// --label and --comment.
void add_remark_options(CLI::App& app, Remarks& remarks);

/// The user of this command, in no session.
tarnd::netconf::state::Author author_with(const Remarks& remarks);

/// The same for what a file had, which is its comment.
tarnd::netconf::state::Author importer_of(const std::string& file);

}  // namespace gponval
