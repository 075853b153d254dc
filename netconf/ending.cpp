#include "netconf/ending.h"

#include <algorithm>

#include "netconf/xml_text.h"

namespace tarnd::netconf {

std::string close_session(const Run& run) {
  run.caller.closes = true;
  return kOk;
}

std::string kill_session(const Run& run) {
  const std::string id(trimmed(parameter(run, "session-id").text));
  const auto is_it = [&id](const auto& session) { return std::to_string(session.first) == id; };
  auto& sessions = run.card.sessions;
  const auto found = std::find_if(sessions.begin(), sessions.end(), is_it);
  if (found == sessions.end()) refuse(invalid_value("there is no session '" + id + "'"));
  if (found->first == run.caller.id) {
    refuse(invalid_value("a session ends itself with close-session"));
  }
  found->second.is_killed = true;
  return kOk;
}

}  // namespace tarnd::netconf
