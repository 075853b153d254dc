#include "netconf/editing.h"

#include "netconf/locks.h"
#include "netconf/verdicts.h"

namespace tarnd::netconf {

std::string discard_changes(const Run& run) {
  check_not_locked_by_another(run, Target::kCandidate);
  run.card.candidate.discard();
  return kOk;
}

std::string edit_config(const Run& run) {
  if (datastore_in(run, "target") == Target::kRunning) {
    refuse(error_of("protocol", "operation-not-supported",
                    "the running configuration changes by a commit of the candidate only"));
  }
  const Element& config = parameter(run, "config");
  check_not_locked_by_another(run, Target::kCandidate);
  try {
    if (config.has_unread_content) run.card.candidate.edit(run.message, store::Format::kXml);
  } catch (const InputError& error) {
    refuse(rpc_error(error));
  }
  return kOk;
}

}  // namespace tarnd::netconf
