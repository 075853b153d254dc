#include <algorithm>
#include <cstddef>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>

#include "netconf/state/checking.h"
#include "netconf/state/database.h"
#include "netconf/state/failure.h"
#include "tools/gponval/commands.h"
#include "tools/gponval/error_line.h"
#include "tools/gponval/output.h"
#include "tools/gponval/plugin_location.h"

namespace gponval {
namespace {

namespace state = tarnd::netconf::state;
using nlohmann::ordered_json;

constexpr const char* kHelp =
    "Checks the file of a state.\n"
    "\n"
    "Checks the file itself, and replays every commit from the oldest one on: each has to\n"
    "change what it says, and to lead to the configurations that are stored as a whole, byte\n"
    "for byte. Nothing is written. A server may run meanwhile. If the state is damaged, the\n"
    "answer says what can still be read, and how to go on.\n";

constexpr const char* kFooter =
    "Examples:\n"
    "  gponval state check card.state\n"
    "  gponval state check card.state --format json\n"
    "\n"
    "Exit status:\n"
    "  0  the state is sound\n"
    "  1  the state is damaged\n"
    "  2  wrong use, or no state that can be read; one line on standard error says why\n";

constexpr int kJsonIndent = 2;
// Damage to a page may make very many commits unreadable.
constexpr std::size_t kMostShown = 20;

struct CheckArguments {
  std::string state;
  RunOptions run;
};

std::string counted(std::size_t number, const std::string& what) {
  return std::to_string(number) + " " + what + (number == 1 ? "" : "s");
}

std::string text_of(const state::CommitRange& range) {
  if (range.first == range.last) return std::to_string(range.first);
  return std::to_string(range.first) + " to " + std::to_string(range.last);
}

void print_sound(const std::string& name, const state::CheckReport& report) {
  const auto commits = static_cast<std::size_t>(report.newest - report.oldest + 1);
  std::cout << name << " is sound: " << counted(commits, "commit") << " replayed ("
            << text_of({report.oldest, report.newest}) << "), compared with "
            << counted(report.snapshots.size(), "snapshot") << ".\n";
  if (report.has_unconfirmed) std::cout << "A commit waits to be confirmed.\n";
}

void print_way_on(const std::string& name, const state::CheckReport& report) {
  if (report.readable.empty()) {
    std::cout << "No commit can be read: go on with a copy of the file or of the configuration.\n";
    return;
  }
  std::cout << "Commits that can be read: ";
  for (const state::CommitRange& range : report.readable) {
    std::cout << (&range == &report.readable.front() ? "" : ", ") << text_of(range);
  }
  std::cout << ". To go on with the newest one:\n  gponval export " << name << " --at "
            << report.readable.back().last
            << " > card.xml\n  gponval state create new.state --running card.xml\n";
}

void print_damaged(const std::string& name, const state::CheckReport& report) {
  std::cout << name << " is damaged:\n";
  const std::size_t shown = std::min(report.problems.size(), kMostShown);
  for (std::size_t i = 0; i < shown; ++i) {
    std::cout << "  " << printable(report.problems[i]) << '\n';
  }
  if (report.problems.size() > shown) {
    std::cout << "  and " << report.problems.size() - shown << " more\n";
  }
  print_way_on(name, report);
}

void print_json(const std::string& name, const state::CheckReport& report) {
  ordered_json readable = ordered_json::array();
  for (const state::CommitRange& range : report.readable) {
    readable.push_back({{"from", range.first}, {"to", range.last}});
  }
  const ordered_json object = {{"state", name},
                               {"result", report.problems.empty() ? "sound" : "damaged"},
                               {"version", report.version},
                               {"oldest", report.oldest},
                               {"newest", report.newest},
                               {"snapshots", report.snapshots},
                               {"unconfirmed", report.has_unconfirmed},
                               {"problems", report.problems},
                               {"readable", readable}};
  std::cout << object.dump(kJsonIndent, ' ', false, ordered_json::error_handler_t::replace) << '\n';
}

// A file may be so damaged that it cannot even be opened as a state.
state::CheckReport checked(const std::string& file) {
  try {
    state::Connection connection = state::open_to_read(file);
    const state::Reading reading(connection);
    return state::check(connection, tarnd::store::Schema(find_model()));
  } catch (const state::Failure& failure) {
    if (failure.cause() != state::Failure::Cause::kDamaged) throw;
    state::CheckReport report;
    report.problems.emplace_back(failure.what());
    return report;
  }
}

ExitStatus check(const CheckArguments& arguments) {
  const state::CheckReport report = checked(arguments.state);
  const bool is_sound = report.problems.empty();
  if (arguments.run.format == "json") {
    print_json(arguments.state, report);
  } else if (is_sound) {
    print_sound(arguments.state, report);
  } else {
    print_damaged(arguments.state, report);
  }
  finish_output();
  return is_sound ? ExitStatus::kSound : ExitStatus::kDamaged;
}

}  // namespace

Command add_state_check(CLI::App& state) {
  CLI::App* app = state.add_subcommand("check", kHelp);
  auto arguments = std::make_shared<CheckArguments>();
  app->footer(kFooter);
  app->add_option("STATE", arguments->state, "The state")->required();
  add_format_option(*app, arguments->run);
  return {app, [arguments] { return check(*arguments); }};
}

}  // namespace gponval
