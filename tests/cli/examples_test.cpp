#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>

#include "tests/cli/gponval_run.h"

namespace gponval::test {
namespace {

namespace fs = std::filesystem;

const fs::path kExamples = GPONVAL_EXAMPLES;

// One row of the tables in the examples' README: a change, and the answer of its commit.
struct Row {
  std::string change;
  std::string card;
  int status = 0;
  std::string request;  // empty if the commit is accepted
  std::string text;

  friend std::ostream& operator<<(std::ostream& out, const Row& row) {
    return out << row.change << " on " << row.card;
  }
};

std::vector<std::string> cells_of(const std::string& line) {
  std::vector<std::string> cells;
  for (std::size_t at = 1, bar = line.find('|', at); bar != std::string::npos;
       at = bar + 1, bar = line.find('|', at)) {
    cells.push_back(line.substr(at + 1, bar - at - 2));
  }
  return cells;
}

std::string without_quotes(const std::string& cell) {
  return cell.substr(1, cell.size() - 2);
}

std::vector<Row> rows_of_readme() {
  std::ifstream readme(kExamples / "README.md");
  std::vector<Row> rows;
  Row section;
  // The last table has no verdicts.
  const auto tells_verdict = [&section] { return section.status >= 0; };
  for (std::string line; std::getline(readme, line);) {
    std::smatch match;
    if (line.substr(0, 2) == "##") {
      section = Row{"", "town.card", -1, "", ""};
      if (std::regex_search(line, match, std::regex("exit status ([0-9])"))) {
        section.status = std::stoi(match[1]);
      }
      if (std::regex_search(line, match, std::regex("`([^`]*\\.card)`"))) section.card = match[1];
    } else if (line.substr(0, 3) == "| `" && tells_verdict()) {
      const auto cells = cells_of(line);
      Row row = section;
      row.change = without_quotes(cells.at(0));
      if (row.status != 0) {
        row.request = without_quotes(cells.at(1));
        row.text = std::regex_replace(cells.at(2), std::regex("<br>"), "\n");
      }
      rows.push_back(row);
    }
  }
  return rows;
}

// A row of the table of changes by hand: a change, and the options with the same effect.
struct ByHand {
  std::string change;
  std::vector<std::string> options;

  friend std::ostream& operator<<(std::ostream& out, const ByHand& row) {
    return out << row.change << " by hand";
  }
};

std::vector<ByHand> rows_by_hand() {
  std::ifstream readme(kExamples / "README.md");
  std::vector<ByHand> rows;
  const std::regex option("`(--[a-z]+) '([^']+)'`");
  for (std::string line; std::getline(readme, line);) {
    if (line.substr(0, 3) != "| `") continue;
    const auto cells = cells_of(line);
    ByHand row{without_quotes(cells.at(0)), {}};
    for (std::sregex_iterator at(cells.at(1).begin(), cells.at(1).end(), option), end; at != end;
         ++at) {
      row.options.insert(row.options.end(), {(*at)[1], (*at)[2]});
    }
    if (!row.options.empty()) rows.push_back(row);
  }
  return rows;
}

std::string name_of_test(const std::string& change, const std::string& more) {
  std::string name = change + "_" + more;
  std::replace_if(
      name.begin(), name.end(), [](char c) { return !std::isalnum(c); }, '_');
  return name;
}

// The answer that decided: the error of a rejected commit, else the first warning.
nlohmann::json deciding_answer(const nlohmann::json& report) {
  const char* result = report.at("result") == "rejected" ? "ERROR" : "WARNING";
  for (const auto& answer : report.at("answers")) {
    if (answer.at("result") == result) return answer;
  }
  return nullptr;
}

std::string without_last_newline(std::string text) {
  if (!text.empty() && text.back() == '\n') text.pop_back();
  return text;
}

class Examples : public ::testing::TestWithParam<Row> {};

TEST_P(Examples, AnswerAsTheirReadmeSays) {
  const Row& row = GetParam();
  const Outcome outcome =
      run_gponval(kExamples, {"commit", "--running", "town.xml", "--card", row.card, "--change",
                              "changes/" + row.change, "--confirm", "no", "--format", "json"});
  ASSERT_EQ(outcome.status, row.status) << outcome.err << outcome.out;
  const nlohmann::json decision = deciding_answer(outcome.json());
  if (row.status == 0) {
    EXPECT_TRUE(decision.is_null()) << decision;
    return;
  }
  EXPECT_EQ(decision.at("request"), row.request);
  EXPECT_EQ(without_last_newline(decision.at("text")), row.text);
}

INSTANTIATE_TEST_SUITE_P(Readme, Examples, ::testing::ValuesIn(rows_of_readme()),
                         [](const auto& row) {
                           return name_of_test(row.param.change, row.param.card);
                         });

// The lines of a section of the README that are indented, as a shell runs them.
std::string commands_of(const std::string& section) {
  std::ifstream readme(kExamples / "README.md");
  std::string commands;
  bool is_inside = false;
  for (std::string line; std::getline(readme, line);) {
    if (line.substr(0, 3) == "## ") is_inside = line == "## " + section;
    if (is_inside && line.substr(0, 4) == "    ") commands += line + "\n";
  }
  return commands;
}

class ExampleOfState : public CommandTest {};

TEST_F(ExampleOfState, RunsAsItIsWritten) {
  fs::create_directory_symlink(kExamples, folder_ / "examples");
  const std::string commands = commands_of("Who changed what, and the way back");
  const Outcome run = run_program(
      folder_, {"/bin/sh", "-ec", "gponval() { \"$0\" \"$@\"; }\n" + commands, gponval_command()});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_NE(run.out.find("ticket 17"), std::string::npos) << run.out;
  EXPECT_NE(run.out.find("town.state is sound: 4 commits replayed"), std::string::npos) << run.out;
  EXPECT_EQ(gponval({"export", "town.state"}).out,
            gponval({"export", "town.state", "--at", "2"}).out);
}

class ExamplesByHand : public ::testing::TestWithParam<ByHand> {};

// Only a file has lines.
nlohmann::json without_times_and_sources(nlohmann::json report) {
  for (auto& answer : report.at("answers")) {
    answer.erase("msecs");
    answer.erase("source");
  }
  return report;
}

// The answers, and with --save the configuration that is left.
TEST_P(ExamplesByHand, HaveTheEffectOfTheirFile) {
  const ByHand& row = GetParam();
  const std::vector<std::string> town = {"commit",    "--running", "town.xml", "--card",
                                         "town.card", "--confirm", "yes"};
  for (const std::vector<std::string>& shown :
       {std::vector<std::string>{"--format", "json"}, std::vector<std::string>{"--save", "-"}}) {
    std::vector<std::string> from_file = town;
    from_file.insert(from_file.end(), shown.begin(), shown.end());
    std::vector<std::string> by_hand = from_file;
    from_file.insert(from_file.end(), {"--change", "changes/" + row.change});
    by_hand.insert(by_hand.end(), row.options.begin(), row.options.end());
    const Outcome expected = run_gponval(kExamples, from_file);
    const Outcome outcome = run_gponval(kExamples, by_hand);
    EXPECT_EQ(outcome.status, expected.status) << outcome.err;
    if (shown.front() == "--save") {
      EXPECT_EQ(outcome.out, expected.out);
    } else {
      EXPECT_EQ(without_times_and_sources(outcome.json()),
                without_times_and_sources(expected.json()));
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Readme, ExamplesByHand, ::testing::ValuesIn(rows_by_hand()),
                         [](const auto& row) { return name_of_test(row.param.change, "by_hand"); });

TEST(ExamplesTest, EveryChangeIsInTheReadme) {
  std::set<std::string> told;
  for (const Row& row : rows_of_readme()) told.insert(row.change);
  // Shown together with another change below the tables.
  told.insert("onu-other-gateway-profile.xml");
  for (const auto& entry : fs::directory_iterator(kExamples / "changes")) {
    EXPECT_EQ(told.count(entry.path().filename()), 1U) << entry.path();
  }
}

// The number of nodes that the change gives or takes away.
std::size_t nodes_in(const std::string& change) {
  const Outcome diff = run_gponval(kExamples, {"diff", "--running", "town.xml", "--change",
                                               "changes/" + change, "--format", "json"});
  const nlohmann::json changes = diff.json().at("changes");
  std::size_t nodes = 0;
  for (const auto& of : changes) {
    const bool has_content = of.at("new").is_object() && !of.at("new").empty();
    nodes += has_content ? of.at("new").size() : 1;
  }
  return nodes;
}

TEST(ExamplesTest, EachChangeOfALeafOrTwoIsShownByHand) {
  std::set<std::string> by_hand;
  for (const ByHand& row : rows_by_hand()) by_hand.insert(row.change);
  for (const auto& entry : fs::directory_iterator(kExamples / "changes")) {
    const std::string change = entry.path().filename();
    EXPECT_EQ(by_hand.count(change), nodes_in(change) <= 2 ? 1U : 0U) << change;
  }
}

TEST(ExamplesTest, TheWholeTownIsAcceptedOnAnEmptyCard) {
  const Outcome outcome = run_gponval(kExamples, {"commit", "--running", "empty.xml", "--card",
                                                  "town.card", "--candidate", "town.xml"});
  EXPECT_EQ(outcome.status, 0) << outcome.err << outcome.out;
}

TEST(ExamplesTest, AnExchangedGatewayProfileWarnsUnderOneShotProvisioning) {
  const std::vector<std::string> exchange = {"commit",
                                             "--running",
                                             "town.xml",
                                             "--card",
                                             "town.card",
                                             "--change",
                                             "changes/onu-other-gateway-profile.xml",
                                             "--format",
                                             "json"};
  EXPECT_EQ(run_gponval(kExamples, exchange).status, 0);
  std::vector<std::string> with_one_shot = exchange;
  with_one_shot.insert(with_one_shot.end(), {"--change", "changes/one-shot-on.xml"});
  const Outcome outcome = run_gponval(kExamples, with_one_shot);
  EXPECT_EQ(outcome.status, 3);
  const auto answers = outcome.json().at("answers");
  const auto warned = std::count_if(answers.begin(), answers.end(), [](const auto& answer) {
    return answer.at("request") == "rg_prof_one_shot_check" && answer.at("result") == "WARNING";
  });
  EXPECT_EQ(warned, 1);
}

}  // namespace
}  // namespace gponval::test
