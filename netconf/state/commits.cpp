#include "netconf/state/commits.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>

#include "netconf/state/failure.h"

namespace tarnd::netconf::state {
namespace {

using nlohmann::json;
using store::ItemChange;

struct KindName {
  Kind kind;
  std::string_view name;
};

constexpr std::array kKinds{KindName{Kind::kImport, "import"}, KindName{Kind::kCommit, "commit"},
                            KindName{Kind::kReturn, "return"},
                            KindName{Kind::kRollback, "rollback"}};

constexpr std::array kVerdicts{Verdict::kOk, Verdict::kError, Verdict::kWarning};

[[noreturn]] void damaged(const Connection& connection, const std::string& what) {
  throw Failure("state '" + connection.name() + "': " + what + "; it is damaged");
}

Kind kind_named(const Connection& connection, const std::string& name) {
  const auto* found = std::find_if(kKinds.begin(), kKinds.end(),
                                   [&name](const KindName& known) { return known.name == name; });
  if (found == kKinds.end()) damaged(connection, "a commit is of the kind '" + name + "'");
  return found->kind;
}

// A text that is no UTF-8, such as a validator's, must not keep a commit from being stored.
std::string text_of(const json& value) {
  return value.dump(-1, ' ', false, json::error_handler_t::replace);
}

json json_of(const std::optional<std::string>& item) {
  return item.has_value() ? json(*item) : json(nullptr);
}

std::optional<std::string> item_in(const json& value) {
  if (value.is_null()) return std::nullopt;
  return value.get<std::string>();
}

// [["PATH", BEFORE, AFTER], ...], null for what is not there.
std::string text_of(const std::vector<ItemChange>& changes) {
  json array = json::array();
  for (const ItemChange& change : changes) {
    array.push_back({change.path, json_of(change.before), json_of(change.after)});
  }
  return text_of(array);
}

// [["REQUEST", "PATH", "RESULT", "TEXT"], ...]
std::string text_of(const std::vector<Answer>& answers) {
  json array = json::array();
  for (const Answer& answer : answers) {
    array.push_back({answer.request, answer.path, to_string(answer.result), answer.text});
  }
  return text_of(array);
}

Verdict verdict_named(const std::string& name) {
  const auto* found = std::find_if(kVerdicts.begin(), kVerdicts.end(),
                                   [&name](Verdict verdict) { return to_string(verdict) == name; });
  return found != kVerdicts.end() ? *found : Verdict::kOk;
}

std::vector<ItemChange> changes_in(const Connection& connection, const std::string& text) {
  std::vector<ItemChange> changes;
  try {
    for (const json& one : json::parse(text)) {
      changes.push_back({one.at(0).get<std::string>(), item_in(one.at(1)), item_in(one.at(2))});
    }
  } catch (const json::exception& error) {
    damaged(connection, std::string("a commit's changes cannot be read: ") + error.what());
  }
  return changes;
}

std::vector<Answer> answers_in(const Connection& connection, const std::string& text) {
  std::vector<Answer> answers;
  try {
    for (const json& one : json::parse(text)) {
      Answer& answer = answers.emplace_back();
      answer.request = one.at(0).get<std::string>();
      answer.path = one.at(1).get<std::string>();
      answer.result = verdict_named(one.at(2).get<std::string>());
      answer.text = one.at(3).get<std::string>();
    }
  } catch (const json::exception& error) {
    damaged(connection, std::string("a commit's answers cannot be read: ") + error.what());
  }
  return answers;
}

std::vector<std::string> notices_in(const Connection& connection, const std::string& text) {
  try {
    return json::parse(text).get<std::vector<std::string>>();
  } catch (const json::exception& error) {
    damaged(connection, std::string("a commit's notices cannot be read: ") + error.what());
  }
}

}  // namespace

std::string_view to_string(Kind kind) {
  return std::find_if(kKinds.begin(), kKinds.end(),
                      [kind](const KindName& known) { return known.kind == kind; })
      ->name;
}

Number append(Connection& connection, const Commit& commit, std::size_t& size) {
  const std::string changes = text_of(commit.changes);
  const std::string answers = text_of(commit.answers);
  const std::string notices = text_of(json(commit.notices));
  Statement insert(connection,
                   "INSERT INTO commits (time, kind, user, session, label, comment, changes,"
                   " answers, notices) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?)");
  insert.bind(1, commit.time)
      .bind(2, to_string(commit.kind))
      .bind(3, std::string_view(commit.author.user))
      .bind(4, std::int64_t{commit.author.session})
      .bind(5, commit.author.label)
      .bind(6, commit.author.comment)
      .bind(7, std::string_view(changes))
      .bind(8, std::string_view(answers))
      .bind(9, std::string_view(notices))
      .run();
  size += changes.size();
  return connection.last_row();
}

Number newest(Connection& connection) {
  return connection.number("SELECT max(number) FROM commits");
}

Number oldest(Connection& connection) {
  return connection.number("SELECT min(number) FROM commits");
}

std::size_t size_after(Connection& connection, Number number) {
  Statement sum(connection, "SELECT total(length(changes)) FROM commits WHERE number > ?");
  sum.bind(1, number).step();
  return static_cast<std::size_t>(sum.integer(0));
}

std::vector<CommitLine> list(Connection& connection, std::int64_t most) {
  Statement select(connection,
                   "SELECT number, time, kind, user, session, label, comment,"
                   " json_array_length(changes) FROM commits ORDER BY number DESC LIMIT ?");
  select.bind(1, most);
  std::vector<CommitLine> lines;
  while (select.step()) {
    CommitLine& line = lines.emplace_back();
    line.number = select.integer(0);
    line.time = select.integer(1);
    line.kind = kind_named(connection, select.text(2));
    line.author = {select.text(3), static_cast<std::uint32_t>(select.integer(4)),
                   select.optional_text(5), select.optional_text(6)};
    line.changes = select.integer(7);
  }
  return lines;
}

void check_number(Connection& connection, Number number) {
  const Number first = oldest(connection);
  const Number last = newest(connection);
  if (number >= first && number <= last) return;
  throw Failure("state '" + connection.name() + "': there is no commit " + std::to_string(number) +
                ", but " + std::to_string(first) + " to " + std::to_string(last));
}

Commit read(Connection& connection, Number number) {
  check_number(connection, number);
  Statement select(connection,
                   "SELECT time, kind, user, session, label, comment, changes, answers, notices"
                   " FROM commits WHERE number = ?");
  select.bind(1, number);
  if (!select.step()) damaged(connection, "commit " + std::to_string(number) + " is missing");
  Commit commit;
  commit.number = number;
  commit.time = select.integer(0);
  commit.kind = kind_named(connection, select.text(1));
  commit.author = {select.text(2), static_cast<std::uint32_t>(select.integer(3)),
                   select.optional_text(4), select.optional_text(5)};
  commit.changes = changes_in(connection, select.text(6));
  commit.answers = answers_in(connection, select.text(7));
  commit.notices = notices_in(connection, select.text(8));
  return commit;
}

void for_each_change(Connection& connection, Number from, Number to,
                     const std::function<void(Number, std::vector<ItemChange>)>& take) {
  Statement select(connection,
                   std::string("SELECT number, changes FROM commits WHERE number BETWEEN ? AND ?"
                               " ORDER BY number ") +
                       (from <= to ? "ASC" : "DESC"));
  select.bind(1, std::min(from, to)).bind(2, std::max(from, to));
  Number expected = from;
  while (select.step()) {
    const Number number = select.integer(0);
    if (number != expected) break;
    take(number, changes_in(connection, select.text(1)));
    expected += from <= to ? 1 : -1;
  }
  const Number after_last = from <= to ? to + 1 : to - 1;
  if (expected != after_last)
    damaged(connection, "commit " + std::to_string(expected) + " is missing");
}

}  // namespace tarnd::netconf::state
