#include <algorithm>
#include <array>
#include <cstdint>
#include <iomanip>
#include <iostream>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "netconf/state/database.h"
#include "netconf/state/snapshots.h"
#include "netconf/utc_time.h"
#include "standalone/report/changes.h"
#include "standalone/report/verdict_text.h"
#include "tools/gponval/commands.h"
#include "tools/gponval/error_line.h"
#include "tools/gponval/output.h"
#include "tools/gponval/plugin_location.h"
#include "tools/gponval/terminal.h"
#include "tools/gponval/whole_number.h"

namespace gponval {
namespace {

namespace state = tarnd::netconf::state;
namespace store = tarnd::store;
using nlohmann::ordered_json;

constexpr const char* kHelp =
    "Lists the commits of a state, or shows one.\n"
    "\n"
    "Lists the commits that gponval serve stored in its --state, the newest first; with a\n"
    "number shows that commit: who made it, what it changed, as gponval diff does, and what\n"
    "the validators said. It may be used while the server runs.\n";

constexpr const char* kExamples =
    "Examples:\n"
    "  gponval history card.state\n"
    "  gponval history card.state --last 10\n"
    "  gponval history card.state 12 --format json\n"
    "\n";

constexpr int kJsonIndent = 2;

struct HistoryArguments {
  std::string state;
  std::optional<std::int64_t> number;
  std::optional<std::int64_t> last;
  RunOptions run;
};

ordered_json json_of(const std::optional<std::string>& text) {
  return text.has_value() ? ordered_json(*text) : ordered_json(nullptr);
}

ordered_json json_of(std::int64_t number, std::int64_t time, state::Kind kind,
                     const state::Author& author) {
  return {{"number", number},
          {"time", tarnd::netconf::utc_time(time)},
          {"kind", state::to_string(kind)},
          {"user", author.user},
          {"session", author.session},
          {"label", json_of(author.label)},
          {"comment", json_of(author.comment)}};
}

std::string dumped(const ordered_json& json) {
  return json.dump(kJsonIndent, ' ', false, ordered_json::error_handler_t::replace);
}

void print_list_json(const std::vector<state::CommitLine>& lines) {
  ordered_json list = ordered_json::array();
  for (const state::CommitLine& line : lines) {
    list.push_back(json_of(line.number, line.time, line.kind, line.author));
    list.back()["changes"] = line.changes;
  }
  std::cout << dumped({{"commits", list}}) << '\n';
}

// What a user wrote must not look like another line.
std::string shown(const std::optional<std::string>& text) {
  return text.has_value() && !text->empty() ? "  " + printable(*text) : "";
}

void print_list_text(const std::vector<state::CommitLine>& lines) {
  std::size_t number_width = 0;
  std::size_t user_width = 0;
  std::size_t count_width = 0;
  for (const state::CommitLine& line : lines) {
    number_width = std::max(number_width, std::to_string(line.number).size());
    user_width = std::max(user_width, line.author.user.size());
    count_width = std::max(count_width, std::to_string(line.changes).size());
  }
  for (const state::CommitLine& line : lines) {
    std::cout << std::right << std::setw(static_cast<int>(number_width)) << line.number << "  "
              << tarnd::netconf::utc_time(line.time) << "  " << std::left << std::setw(8)
              << state::to_string(line.kind) << "  " << std::setw(static_cast<int>(user_width))
              << line.author.user << "  " << std::right << std::setw(static_cast<int>(count_width))
              << line.changes << (line.changes == 1 ? " change " : " changes")
              << shown(line.author.label) << shown(line.author.comment) << '\n';
  }
}

void print_head(const state::Commit& commit) {
  std::cout << "Commit " << commit.number << " (" << state::to_string(commit.kind) << "), "
            << tarnd::netconf::utc_time(commit.time);
  if (!commit.author.user.empty()) std::cout << ", by " << printable(commit.author.user);
  if (commit.author.session != 0) std::cout << " in session " << commit.author.session;
  std::cout << '\n';
  if (commit.author.label.has_value()) {
    std::cout << "Label: " << printable(*commit.author.label) << '\n';
  }
  if (commit.author.comment.has_value()) {
    std::cout << "Comment: " << printable(*commit.author.comment) << '\n';
  }
}

void print_commit_text(const state::Commit& commit, const store::Change* changes) {
  print_head(commit);
  tarnd::report::print_changes_text(std::cout, changes, has_colours(std::cout));
  for (const tarnd::Answer& answer : commit.answers) {
    if (answer.result != tarnd::Verdict::kOk) tarnd::report::print_answer(std::cout, answer, false);
  }
  for (const std::string& notice : commit.notices) {
    std::cout << "Notice: " << printable(notice) << '\n';
  }
}

// The changes may be very many, so they are written as they are found.
void print_commit_json(const state::Commit& commit, const store::Change* changes) {
  ordered_json object = json_of(commit.number, commit.time, commit.kind, commit.author);
  ordered_json& answers = object["answers"] = ordered_json::array();
  for (const tarnd::Answer& answer : commit.answers) {
    answers.push_back({{"request", answer.request},
                       {"path", answer.path},
                       {"result", tarnd::to_string(answer.result)},
                       {"text", answer.text}});
  }
  object["messages"] = commit.notices;
  std::string text = dumped(object);
  text.resize(text.rfind("\n}"));
  std::cout << text << ",\n  \"changes\": ";
  tarnd::report::print_changes_json(std::cout, changes);
  std::cout << "\n}\n";
}

void show(state::Connection& connection, std::int64_t number, bool as_json) {
  const state::Commit commit = state::read(connection, number);
  const store::Schema schema(find_model());
  store::Datastore datastore(schema);
  if (!commit.changes.empty()) state::restore(connection, datastore, number - 1);
  store::Transaction transaction(datastore);
  state::apply_changes(transaction, commit.changes);
  transaction.prepare();
  if (as_json) {
    print_commit_json(commit, transaction.changes());
  } else {
    print_commit_text(commit, transaction.changes());
  }
}

ExitStatus history(const HistoryArguments& arguments) {
  state::Connection connection = state::open_to_read(arguments.state);
  const state::Reading reading(connection);
  const bool as_json = arguments.run.format == "json";
  if (arguments.number.has_value()) {
    show(connection, *arguments.number, as_json);
  } else {
    const auto lines = state::list(connection, arguments.last.value_or(-1));
    as_json ? print_list_json(lines) : print_list_text(lines);
  }
  finish_output();
  return ExitStatus::kAccepted;
}

}  // namespace

Command add_history(CLI::App& gponval) {
  CLI::App* app = gponval.add_subcommand("history", kHelp);
  auto arguments = std::make_shared<HistoryArguments>();
  app->footer(std::string(kExamples) + kExitStatusHelp);
  app->add_option("STATE", arguments->state, "The state of gponval serve")->required();
  CLI::Option* number =
      app->add_option("N", arguments->number, "The number of a commit")->transform(whole_number(1));
  app->add_option("--last", arguments->last, "List so many commits only, the newest ones")
      ->type_name("N")
      ->transform(whole_number(1))
      ->excludes(number);
  add_format_option(*app, arguments->run);
  return {app, [arguments] { return history(*arguments); }};
}

}  // namespace gponval
