#pragma once

#include <functional>
#include <string>

#include "netconf/operation.h"

namespace tarnd::netconf {

std::string validate(const Run& run);
std::string commit(const Run& run);

/// Validates what was edited, as a commit would.
std::string check_candidate(const Run& run);

/// Commits the candidate, but confirms no commit.
std::string copy_candidate_to_running(const Run& run);

/// Commits what an operation edits in running: `edit` edits the candidate, which is as running is
/// before and, whether the commit is refused or done, afterwards.
std::string commit_at_once(const Run& run, const std::function<void()>& edit);

/// Refuses an operation that edits running without a commit, while another session has locked it,
/// the candidate is edited, or a commit of another session has to be confirmed.
void check_running_may_be_edited(const Run& run);

}  // namespace tarnd::netconf
