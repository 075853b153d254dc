// gponval state check: what it finds, and how a user goes on.

#include <gmock/gmock.h>
#include <sqlite3.h>

#include <algorithm>

#include "tests/cli/gponval_run.h"

namespace gponval::test {
namespace {

using nlohmann::json;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

class StateCheckTest : public CommandTest {
 protected:
  // Seven commits: an import, five service ports, and the way back to the first two.
  StateCheckTest() {
    EXPECT_EQ(gponval({"state", "create", "card.state", "--running", "card.xml"}).status, 0);
    for (int id = 3; id <= 7; ++id) {
      config("change.xml", service_port(id, 1, 30 + id));
      EXPECT_EQ(gponval({"commit", "--state", "card.state", "--change", "change.xml"}).status, 0);
    }
    EXPECT_EQ(gponval({"rollback", "card.state", "3"}).status, 0);
  }

  void change(const std::string& sql) const {
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open((folder_ / "card.state").c_str(), &database), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(database, sql.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
        << sqlite3_errmsg(database);
    sqlite3_close(database);
  }

  [[nodiscard]] Outcome check(const std::vector<std::string>& more = {}) const {
    std::vector<std::string> line = {"state", "check", "card.state"};
    line.insert(line.end(), more.begin(), more.end());
    return gponval(line);
  }

  // The snapshot of a commit, as it should be.
  void keep_snapshot(int number) const {
    const std::string name = std::to_string(number);
    std::string text = gponval({"export", "card.state", "--at", name}).out;
    change("INSERT INTO snapshots VALUES (" + name + ", '" + text + "')");
  }
};

TEST_F(StateCheckTest, ASoundStateIsReplayed) {
  EXPECT_EQ(check().out,
            "card.state is sound: 7 commits replayed (1 to 7), compared with 1 snapshot.\n");
  keep_snapshot(5);
  const Outcome run = check({"--format", "json"});
  EXPECT_EQ(run.status, 0);
  const json report = run.json();
  EXPECT_EQ(report.at("result"), "sound");
  EXPECT_EQ(report.at("snapshots"), json({1, 5}));
  EXPECT_EQ(report.at("newest"), 7);
  EXPECT_EQ(report.at("unconfirmed"), false);
  EXPECT_EQ(report.at("problems"), json::array());
  EXPECT_EQ(report.at("readable"), json::array({{{"from", 1}, {"to", 7}}}));
}

TEST_F(StateCheckTest, ACommitThatWaitsIsNamed) {
  change("INSERT INTO pending VALUES (1, 6, 'id', 0, 'boot')");
  EXPECT_THAT(check().out, HasSubstr("sound"));
  EXPECT_THAT(check().out, HasSubstr("\nA commit waits to be confirmed.\n"));
}

TEST_F(StateCheckTest, DamageIsNamedWithWhatCanStillBeRead) {
  const std::string good = text_of("card.state");
  const struct {
    const char* damage;
    const char* told;
    const char* readable;  // of the seven
  } cases[] = {
      {"UPDATE commits SET changes = '[[' WHERE number = 4", "commit 4 cannot be read", "1 to 3"},
      {"DELETE FROM commits WHERE number = 4", "commit 4 is missing", "1 to 3"},
      {"UPDATE commits SET answers = 'x' WHERE number = 4", "commit 4 cannot be read", "1 to 7"},
      {"UPDATE commits SET kind = 'x' WHERE number = 4", "commit 4 cannot be read", "1 to 7"},
      {"UPDATE commits SET changes = '[]' WHERE number = 4", "commit 4 changes nothing", "1 to 6"},
      {"UPDATE commits SET changes = replace(changes, '{5}', '{2}') WHERE number = 4",
       "commit 4 does not fit the configuration before it", "1 to 3"},
      {"UPDATE commits SET changes = replace(changes, '/config/', '/none/') WHERE number = 4",
       "commit 4 cannot be replayed", "1 to 3"},
      {"INSERT INTO snapshots SELECT 5, configuration FROM snapshots",
       "the snapshot of commit 5 is not what the commits before it lead to", "1 to 3, 5 to 6"},
      {"UPDATE snapshots SET configuration = '<config/>'", "the snapshot of commit 1", ""},
      {"DELETE FROM snapshots", "there is no snapshot to begin with", ""},
      {"INSERT INTO pending VALUES (1, 99, 'id', 0, 'boot')", "the table pending: row 1", "1 to 7"},
  };
  for (const auto& [damage, told, readable] : cases) {
    SCOPED_TRACE(damage);
    file("card.state", good);
    change(damage);
    const Outcome run = check();
    EXPECT_EQ(run.status, 1);
    EXPECT_THAT(run.err, IsEmpty());
    EXPECT_THAT(run.out, StartsWith("card.state is damaged:\n  "));
    EXPECT_THAT(run.out, HasSubstr(told));
    const std::string way_on =
        *readable != '\0' ? "Commits that can be read: " + std::string(readable) + ". To go"
                          : "No commit can be read: go on with a copy ";
    EXPECT_THAT(run.out, HasSubstr(way_on));
    EXPECT_EQ(check({"--format", "json"}).json().at("result"), "damaged");
  }
}

TEST_F(StateCheckTest, WhatItAdvisesWorks) {
  const std::string before = gponval({"export", "card.state", "--at", "7"}).out;
  keep_snapshot(7);
  change("UPDATE commits SET changes = '[[' WHERE number = 4");
  const Outcome run = check();
  EXPECT_THAT(run.out, HasSubstr("Commits that can be read: 1 to 3, 5 to 7."));
  const std::size_t advice = run.out.find("  gponval export");
  ASSERT_NE(advice, std::string::npos);
  const Outcome done = run_program(
      folder_, {"/bin/sh", "-ec", "gponval() { \"$0\" \"$@\"; }\n" + run.out.substr(advice),
                gponval_command()});
  EXPECT_EQ(done.status, 0) << done.err;
  EXPECT_EQ(gponval({"export", "new.state"}).out, before);
}

TEST_F(StateCheckTest, ATruncatedFileIsDamaged) {
  const std::string good = text_of("card.state");
  for (const std::size_t size : {std::size_t{100}, good.size() / 2, good.size() - 4096}) {
    file("card.state", good.substr(0, size));
    const Outcome run = check();
    EXPECT_EQ(run.status, 1) << size;
    EXPECT_THAT(run.out, StartsWith("card.state is damaged:\n")) << size;
  }
}

TEST_F(StateCheckTest, WhatIsNoStateIsWrongUse) {
  file("empty.state", "");
  file("newer.state", text_of("card.state").replace(63, 1, "\x63"));
  const struct {
    std::vector<std::string> arguments;
    const char* told;
  } cases[] = {
      {{}, "STATE is required (see gponval state check --help)"},
      {{"none.state"}, "No such file or directory"},
      {{"empty.state"}, "nothing was stored in it"},
      {{"newer.state"}, "it is of a newer gponval"},
      {{"card.xml"}, "it is no state of gponval"},
      {{"card.state", "--format", "xml"}, "--format: 'xml' is none of text, json"},
      {{"card.state", "7"}, "unexpected argument '7'"},
  };
  for (const auto& [arguments, told] : cases) {
    std::vector<std::string> line = {"state", "check"};
    line.insert(line.end(), arguments.begin(), arguments.end());
    const Outcome run = gponval(line);
    EXPECT_EQ(run.status, 2) << told;
    EXPECT_THAT(run.out, IsEmpty()) << told;
    EXPECT_THAT(run.err, HasSubstr(told));
    EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
  }
}

}  // namespace
}  // namespace gponval::test
