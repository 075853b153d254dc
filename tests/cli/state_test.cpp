// Commits to a state, and the way back, while no server runs on it.

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

#include "tests/cli/gponval_run.h"
#include "tools/gponval/current_user.h"

namespace gponval::test {
namespace {

using nlohmann::json;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::StartsWith;

using Words = std::vector<std::string>;

class StoredCommitTest : public CommandTest {
 protected:
  StoredCommitTest() { create(); }

  void create(const std::string& name = "card.state", const std::string& running = "card.xml") {
    const Outcome run = gponval({"state", "create", name, "--running", running});
    EXPECT_EQ(run.status, 0) << run.err;
  }

  [[nodiscard]] Outcome commit_to_state(const std::string& change, const Words& more = {}) const {
    return with({"commit", "--state", "card.state", "--change", config("change.xml", change)},
                more);
  }

  [[nodiscard]] Outcome roll_back(int number, const Words& more = {}) const {
    return with({"rollback", "card.state", std::to_string(number)}, more);
  }

  [[nodiscard]] json history() const {
    return gponval({"history", "card.state", "--format", "json"}).json().at("commits");
  }
  [[nodiscard]] json stored(int number) const {
    return gponval({"history", "card.state", std::to_string(number), "--format", "json"}).json();
  }
  [[nodiscard]] std::string exported(int number) const {
    return gponval({"export", "card.state", "--at", std::to_string(number)}).out;
  }

  const std::string good_ = service_port(3, 1, 30);

 private:
  [[nodiscard]] Outcome with(Words line, const Words& more) const {
    line.insert(line.end(), more.begin(), more.end());
    return gponval(line);
  }
};

// Without the times.
json answers_of(const json& report) {
  json answers = report.at("answers");
  for (json& answer : answers) answer.erase("msecs");
  return answers;
}

TEST_F(StoredCommitTest, BeginsWithAConfiguration) {
  const Outcome run = gponval({"state", "create", "new.state", "--running", "card.xml"});
  EXPECT_EQ(run.out, "State new.state begins with the configuration of card.xml.\n");
  ASSERT_EQ(history().size(), 1U);
  const json first = history().at(0);
  EXPECT_EQ(first.at("kind"), "import");
  EXPECT_EQ(first.at("user"), current_user());
  EXPECT_EQ(first.at("comment"), "card.xml");
  file("again.xml", exported(1));
  EXPECT_EQ(gponval({"diff", "--running", "card.xml", "--candidate", "again.xml"}).status, 0);
}

TEST_F(StoredCommitTest, ACommitIsStoredWithWhoMadeItAndWhatTheySay) {
  const Outcome run = commit_to_state(good_, {"--label", "ticket 17", "--comment", "why"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out, "Commit accepted.\n");
  const json commit = stored(2);
  EXPECT_EQ(commit.at("kind"), "commit");
  EXPECT_EQ(commit.at("user"), current_user());
  EXPECT_EQ(commit.at("session"), 0);
  EXPECT_EQ(commit.at("label"), "ticket 17");
  EXPECT_EQ(commit.at("comment"), "why");
  EXPECT_FALSE(commit.at("changes").empty());
  EXPECT_THAT(exported(2), HasSubstr("<id>3</id>"));
}

TEST_F(StoredCommitTest, TheVerdictIsThatOfACommitToAFile) {
  const struct {
    std::string change;
    Words more;
    int status;
  } cases[] = {
      {good_, {}, 0},
      {service_port(3, 9, 30), {}, 1},
      {service_port(3, 9, 30) + service_port(4, 9, 30), {"--all"}, 1},
      {fec_change(), {}, 3},
      {fec_change(), {"--confirm", "yes", "--changes"}, 0},
      {"<service-port><id>1</id></service-port>", {}, 0},
      {"<nothing/>", {}, 2},
  };
  for (const auto& [change, more, status] : cases) {
    SCOPED_TRACE(change);
    std::filesystem::remove(folder_ / "card.state");
    create();
    const Outcome to_file = commit(change, more);
    const Outcome to_state = commit_to_state(change, more);
    EXPECT_EQ(to_state.status, status) << to_state.err;
    EXPECT_EQ(to_state.status, to_file.status);
    EXPECT_EQ(to_state.out, to_file.out);
    EXPECT_EQ(to_state.err, to_file.err);
  }
}

TEST_F(StoredCommitTest, WarningsThatWereConfirmedAreInTheHistory) {
  const Outcome run = commit_to_state(fec_change(), {"--confirm", "yes", "--format", "json"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(stored(2).at("answers"), answers_of(run.json()));
  const std::string shown = gponval({"history", "card.state", "2"}).out;
  EXPECT_THAT(shown, HasSubstr("WARNING /config/interface/gpon{1 1 3}/downstream-fec "
                               "(fec_confirmation_warning)\n"));
  EXPECT_EQ(roll_back(1, {"--confirm", "yes"}).status, 0);
  EXPECT_THAT(gponval({"history", "card.state", "3"}).out, HasSubstr("WARNING /config/"));
}

TEST_F(StoredCommitTest, WhatIsNotAcceptedIsNotStored) {
  EXPECT_EQ(commit_to_state(service_port(3, 9, 30)).status, 1);
  EXPECT_EQ(commit_to_state(fec_change()).status, 3);
  EXPECT_EQ(commit_to_state("<nothing/>").status, 2);
  EXPECT_EQ(commit_to_state("").out, "Nothing to commit.\n");
  EXPECT_EQ(history().size(), 1U);
}

TEST_F(StoredCommitTest, ARollbackIsACommitOfItsOwn) {
  for (const int id : {3, 4, 5}) EXPECT_EQ(commit_to_state(service_port(id, 1, 30 + id)).status, 0);
  const Outcome run = roll_back(2, {"--label", "back", "--comment", "it was wrong"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out, "Commit accepted.\n");
  EXPECT_EQ(exported(5), exported(2));
  const json newest = history().at(0);
  EXPECT_EQ(newest.at("kind"), "rollback");
  EXPECT_EQ(newest.at("label"), "back");
  EXPECT_EQ(newest.at("comment"), "it was wrong");
  EXPECT_EQ(newest.at("user"), current_user());
  EXPECT_EQ(roll_back(4).status, 0);
  EXPECT_EQ(exported(6), exported(4));
  EXPECT_EQ(roll_back(6).out, "Nothing to commit.\n");
  EXPECT_EQ(history().size(), 6U);
}

TEST_F(StoredCommitTest, TheValidatorsSeeARollback) {
  // No validator sees the configuration of commit 1: two service ports that match the same traffic,
  // one of them with a GEM port that no profile has.
  std::string bad = text_of("card.xml");
  bad.insert(bad.rfind("</config>"), service_port(3, 1, 10) + service_port(4, 9, 10));
  file("bad.xml", bad);
  std::filesystem::remove(folder_ / "card.state");
  create("card.state", "bad.xml");
  ASSERT_EQ(commit_to_state("<service-port nc:operation=\"delete\"><id>3</id></service-port>"
                            "<service-port nc:operation=\"delete\"><id>4</id></service-port>")
                .status,
            0);
  const std::string conflict =
      "ERROR /config/service-port (service_port_global_validation)\n"
      "Service-port 1 and 3 have conflicting matches.\n";
  const Outcome first = roll_back(1);
  EXPECT_EQ(first.status, 1);
  EXPECT_EQ(first.out, "Commit rejected.\n\n" + conflict);
  const Outcome all = roll_back(1, {"--all"});
  EXPECT_EQ(all.status, 1);
  EXPECT_THAT(all.out, StartsWith("Commit rejected.\n\n" + conflict + "\nERROR "));
  EXPECT_EQ(roll_back(1, {"--format", "json"}).json().at("result"), "rejected");
  EXPECT_EQ(history().size(), 2U);
}

TEST_F(StoredCommitTest, WarningsOfARollbackAreConfirmedAsThoseOfACommit) {
  ASSERT_EQ(commit_to_state(fec_change(), {"--confirm", "yes"}).status, 0);
  const Outcome refused = roll_back(1, {"--confirm", "no"});
  EXPECT_EQ(refused.status, 3);
  EXPECT_THAT(refused.out, StartsWith("Commit not confirmed.\n\nWARNING "));
  const Words line = {"rollback", "card.state", "1", "--confirm", "ask"};
  EXPECT_EQ(run_gponval(folder_, line, "no\n").status, 3);
  EXPECT_EQ(history().size(), 2U);
  const Outcome confirmed = run_gponval(folder_, line, "yes\n");
  EXPECT_EQ(confirmed.status, 0);
  EXPECT_THAT(confirmed.err, HasSubstr("Proceed? [yes,no] "));
  EXPECT_EQ(history().size(), 3U);
}

TEST_F(StoredCommitTest, WrongUseIsOneLineAndChangesNothing) {
  file("empty.state", "");
  file("card.txt",
       "no state at all, but a text that is as long as the head of a database has to "
       "be, which is one hundred bytes");
  const struct {
    Words line;
    const char* told;
  } cases[] = {
      {{"commit"}, "--running or --state is required (see gponval commit --help)"},
      {{"commit", "--state", "card.state", "--running", "card.xml"}, "excludes --"},
      {{"commit", "--state", "card.state", "--save", "new.xml"}, "excludes --"},
      {{"commit", "--state", "card.state", "--only", "sp_gem_check"}, "excludes --"},
      {{"commit", "--running", "card.xml", "--label", "x"}, "--label requires --state"},
      {{"commit", "--running", "card.xml", "--comment", "x"}, "--comment requires --state"},
      {{"commit", "--state"}, "--state needs a value (FILE)"},
      {{"commit", "--state", "none.state"},
       "state 'none.state': there is no such file; gponval state create makes one"},
      {{"commit", "--state", "empty.state"},
       "state 'empty.state': nothing was stored in it; gponval state create makes one"},
      {{"commit", "--state", "card.txt"}, "it is no state of gponval"},
      {{"commit", "--state", "."}, "Is a directory"},
      {{"commit", "--state", "card.xml/x"}, "there is no such file"},
      {{"rollback"}, "STATE is required (see gponval rollback --help)"},
      {{"rollback", "card.state"}, "N is required"},
      {{"rollback", "card.state", "0"}, "N: "},
      {{"rollback", "card.state", "x"}, "N: "},
      {{"rollback", "card.state", "2"}, "there is no commit 2, but 1 to 1"},
      {{"rollback", "none.state", "1"}, "there is no such file"},
      {{"state"}, "(see gponval state --help)"},
      {{"state", "crate"}, "unexpected argument 'crate' (see gponval state --help)"},
      {{"state", "create"}, "STATE is required (see gponval state create --help)"},
      {{"state", "create", "new.state"}, "--running is required"},
      {{"state", "create", "card.state", "--running", "card.xml"},
       "has a configuration already; gponval commit --state changes it"},
      {{"state", "create", "new.state", "--running", "none.xml"}, "cannot read 'none.xml'"},
      {{"state", "create", "none/new.state", "--running", "card.xml"}, "No such file"},
  };
  const std::string before = text_of("card.state");
  for (const auto& [line, told] : cases) {
    const Outcome run = gponval(line);
    EXPECT_EQ(run.status, 2) << told;
    EXPECT_THAT(run.out, IsEmpty()) << told;
    EXPECT_THAT(run.err, StartsWith("gponval: "));
    EXPECT_THAT(run.err, HasSubstr(told));
    EXPECT_EQ(std::count(run.err.begin(), run.err.end(), '\n'), 1) << run.err;
  }
  EXPECT_EQ(text_of("card.state"), before);
  EXPECT_FALSE(std::filesystem::exists(folder_ / "none.state"));
  EXPECT_FALSE(std::filesystem::exists(folder_ / "new.state"));
}

TEST_F(StoredCommitTest, AFileThatCannotBeCommittedToIsRefusedAndStaysAsItIs) {
  ASSERT_EQ(commit_to_state(good_).status, 0);
  const std::string good = text_of("card.state");
  std::string newer = good;
  // The last byte of SQLite's user version.
  newer.at(63) = 99;
  const struct {
    std::string text;
    const char* told;
  } cases[] = {
      {newer, "it is of a newer gponval"},
      {good.substr(0, good.size() / 2), "it is damaged"},
  };
  for (const auto& [text, told] : cases) {
    file("card.state", text);
    for (const Outcome& run : {commit_to_state(service_port(4, 1, 40)), roll_back(1)}) {
      EXPECT_EQ(run.status, 2) << told;
      EXPECT_THAT(run.err, HasSubstr(told));
      EXPECT_THAT(run.out, IsEmpty()) << told;
    }
    EXPECT_EQ(text_of("card.state"), text) << told;
  }
  file("card.state", good);
  EXPECT_EQ(roll_back(1).status, 0);
}

TEST_F(StoredCommitTest, AFileThatMayNotBeWrittenIsRefused) {
  ASSERT_EQ(commit_to_state(good_).status, 0);
  chmod((folder_ / "card.state").c_str(), 0444);
  Words line = {gponval_command(), "rollback", "card.state", "1"};
  // root may write to it all the same, but not without this capability.
  const Words without = {"/usr/bin/setpriv", "--inh-caps=-dac_override",
                         "--bounding-set=-dac_override", "--"};
  if (geteuid() == 0) line.insert(line.begin(), without.begin(), without.end());
  const Outcome run = run_program(folder_, line);
  EXPECT_EQ(run.status, 2);
  EXPECT_EQ(run.err, "gponval: state 'card.state': Permission denied\n");
  EXPECT_EQ(history().size(), 2U);
}

TEST_F(StoredCommitTest, ACommitThatFindsNoRoomChangesNothing) {
  ASSERT_EQ(commit_to_state(good_).status, 0);
  // The comment alone needs more than the file may grow to.
  const std::string limited = "ulimit -f 100; exec \"$0\" \"$@\"";
  const std::string comment(100'000, 'x');
  for (const Words& what : {Words{"rollback", "card.state", "1"},
                            Words{"commit", "--state", "card.state", "--change", "change.xml"}}) {
    config("change.xml", service_port(4, 1, 40));
    Words line = {"/bin/sh", "-c", limited, gponval_command()};
    line.insert(line.end(), what.begin(), what.end());
    line.insert(line.end(), {"--comment", comment});
    const Outcome run = run_program(folder_, line);
    EXPECT_EQ(run.status, 2);
    EXPECT_EQ(run.err, "gponval: state 'card.state': File too large\n");
    EXPECT_THAT(run.out, IsEmpty());
    EXPECT_EQ(history().size(), 2U);
  }
  EXPECT_EQ(roll_back(1).status, 0);
}

}  // namespace
}  // namespace gponval::test
