#include "netconf/rolling_back.h"

#include <charconv>
#include <string_view>

#include "netconf/committing.h"
#include "netconf/recording.h"
#include "netconf/state/snapshots.h"
#include "netconf/verdicts.h"
#include "netconf/xml_text.h"

namespace tarnd::netconf {
namespace {

state::Number number_asked_for(const Run& run) {
  const std::string_view text = trimmed(parameter(run, "to").text);
  state::Connection& connection = run.card.journal->connection();
  const state::Number oldest = state::oldest(connection);
  const state::Number newest = run.card.journal->newest();
  state::Number number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  const bool is_number = error == std::errc() && end == text.data() + text.size();
  if (is_number && number >= oldest && number <= newest) return number;
  refuse(invalid_value("to is '" + std::string(text) + "'; a commit from " +
                       std::to_string(oldest) + " to " + std::to_string(newest) + " is needed"));
}

}  // namespace

std::string roll_back(const Run& run) {
  try {
    const state::Number number = number_asked_for(run);
    state::Journal& journal = *run.card.journal;
    return commit_at_once(run, [&] {
      state::take_back(journal.connection(), run.card.candidate, journal.newest(), number);
    });
  } catch (const state::Failure& failure) {
    refuse(rpc_error(failure));
  } catch (const InputError& error) {
    refuse(rpc_error(run.card.datastore.schema(), error));
  }
}

}  // namespace tarnd::netconf
