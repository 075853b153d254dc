// The file of a state: what it keeps, and what it refuses.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "netconf/state/database.h"
#include "netconf/state/failure.h"
#include "netconf/state/journal.h"
#include "netconf/state/keeping.h"
#include "netconf/state/net_changes.h"
#include "netconf/state/schema_version.h"
#include "netconf/state/snapshots.h"
#include "tests/netconf/state_file.h"
#include "tests/support/model.h"

namespace tarnd::netconf::state {
namespace {

using store::Datastore;
using store::Format;
using ::testing::HasSubstr;

std::string port(int id) {
  return "<service-port><id>" + std::to_string(id) + "</id></service-port>";
}

Commit port_comes(int id) {
  Commit commit;
  commit.changes = {{"/config/service-port{" + std::to_string(id) + "}", std::nullopt, ""}};
  return commit;
}

class StateTest : public ::testing::Test {
 protected:
  StateTest() { begun_.load(test::config(port(1)), Format::kXml); }

  // A state with so many commits after the first one.
  void make(int commits) {
    Journal journal(file_.name());
    journal.begin(begun_, {"somebody", 0, std::nullopt, "card.xml"});
    for (int i = 0; i < commits; ++i) journal.record(port_comes(i + 2), std::nullopt);
  }

  std::string restored(Number number) {
    Connection connection = open_to_read(file_.name());
    Datastore datastore(test::model());
    restore(connection, datastore, number);
    return datastore.print(Format::kXml);
  }

  [[nodiscard]] std::string why_not_served() const {
    try {
      Journal journal(file_.name());
    } catch (const Failure& failure) {
      return failure.what();
    }
    return "it is served";
  }

  StateFile file_;
  Datastore begun_{test::model()};
};

TEST_F(StateTest, KeepsCommitsWithAllThatIsKnownOfThem) {
  make(1);
  Commit commit = port_comes(7);
  commit.author = {"anna", 3, "ticket 17", std::nullopt};
  commit.answers = {{"sp_check", "/config/service-port{7}", Verdict::kWarning, "a \xff text", 1}};
  commit.notices = {"a notice"};
  {
    Journal journal(file_.name());
    EXPECT_FALSE(journal.is_new());
    journal.record(commit, std::nullopt);
    EXPECT_EQ(journal.newest(), 3);
  }
  Connection connection = open_to_read(file_.name());
  const Commit kept = read(connection, 3);
  EXPECT_EQ(kept.number, 3);
  EXPECT_GT(kept.time, 1'700'000'000);
  EXPECT_EQ(kept.kind, Kind::kCommit);
  EXPECT_EQ(kept.author.user, "anna");
  EXPECT_EQ(kept.author.session, 3U);
  EXPECT_EQ(kept.author.label, "ticket 17");
  EXPECT_EQ(kept.author.comment, std::nullopt);
  EXPECT_EQ(kept.changes, commit.changes);
  ASSERT_EQ(kept.answers.size(), 1U);
  EXPECT_EQ(kept.answers[0].request, "sp_check");
  EXPECT_EQ(kept.answers[0].result, Verdict::kWarning);
  EXPECT_EQ(kept.answers[0].text, "a \xef\xbf\xbd text");
  EXPECT_EQ(kept.notices, commit.notices);
  const auto lines = list(connection, 2);
  ASSERT_EQ(lines.size(), 2U);
  EXPECT_EQ(lines[0].number, 3);
  EXPECT_EQ(lines[0].changes, 1);
  EXPECT_EQ(lines[1].number, 2);
  EXPECT_EQ(list(connection, -1).back().kind, Kind::kImport);
  EXPECT_THROW(read(connection, 4), Failure);
  EXPECT_THROW(read(connection, 0), Failure);
}

TEST_F(StateTest, ACommitThatChangesNothingHasNoNumber) {
  make(0);
  Journal journal(file_.name());
  journal.record({}, std::nullopt);
  EXPECT_EQ(journal.newest(), 1);
}

TEST_F(StateTest, SnapshotsKeepTheWayToTheNewestCommitShort) {
  make(0);
  const store::Transaction candidate(begun_);
  Journal journal(file_.name());
  Commit large = port_comes(2);
  large.changes.push_back(
      {"/config/service-port{2}/description", std::nullopt, std::string(20'000, 'x')});
  for (int i = 0; i < 20; ++i) {
    journal.record(large, std::nullopt);
    journal.tend(candidate);
  }
  EXPECT_EQ(journal.connection().number("SELECT count(*) FROM snapshots"), 2);
  EXPECT_EQ(journal.connection().number("SELECT min(number) FROM snapshots"), 1);
  EXPECT_GT(newest_snapshot(journal.connection()).number, 15);
}

// A candidate that is being edited must not get into a snapshot.
TEST_F(StateTest, ASnapshotHasWhatIsCommittedOnly) {
  make(0);
  store::Transaction candidate(begun_);
  candidate.edit(test::config(port(77)), Format::kXml);
  Journal journal(file_.name(), {1, std::nullopt});
  journal.record(port_comes(2), std::nullopt);
  journal.tend(candidate);
  EXPECT_EQ(newest_snapshot(journal.connection()).number, 2);
  EXPECT_THAT(restored(2), ::testing::Not(HasSubstr("<id>77</id>")));
}

TEST_F(StateTest, WhatLeadsFromOneCommitToAnotherHasEachItemOnce) {
  using Changes = std::vector<store::ItemChange>;
  const std::optional<std::string> none;
  make(0);
  Journal journal(file_.name());
  const Changes commits[] = {
      {{"/a", none, ""}, {"/a-b", none, "1"}, {"/c", "old", "x"}},
      {{"/a/d", none, "2"}, {"/c", "x", "y"}, {"/gone", "3", none}},
      {{"/a-b", "1", none}, {"/gone", none, "3"}},
  };
  for (const Changes& changes : commits) {
    Commit commit;
    commit.changes = changes;
    journal.record(commit, std::nullopt);
  }
  // What is in /a follows it, before /a-b.
  EXPECT_EQ(changes_between(journal.connection(), 1, 3), (Changes{{"/a", none, ""},
                                                                  {"/a/d", none, "2"},
                                                                  {"/a-b", none, "1"},
                                                                  {"/c", "old", "y"},
                                                                  {"/gone", "3", none}}));
  EXPECT_EQ(changes_between(journal.connection(), 4, 1),
            (Changes{{"/a", "", none}, {"/a/d", "2", none}, {"/c", "y", "old"}}));
  EXPECT_EQ(changes_between(journal.connection(), 4, 4), Changes());
  // Two changes of one item in a commit are one, in both directions.
  Commit twice;
  twice.changes = {{"/t", "5", none}, {"/t", none, "2"}};
  journal.record(twice, std::nullopt);
  EXPECT_EQ(changes_between(journal.connection(), 4, 5), (Changes{{"/t", "5", "2"}}));
  EXPECT_EQ(changes_between(journal.connection(), 5, 4), (Changes{{"/t", "2", "5"}}));
}

struct KeepCase {
  const char* name;
  Keep keep;
  Number number;
  std::time_t time;
  bool may_begin;
};

void PrintTo(const KeepCase& keep, std::ostream* out) {
  *out << keep.name;
}

class KeepTest : public ::testing::TestWithParam<KeepCase> {};

// The newest commit is 100, and it is 100,000 seconds past.
TEST_P(KeepTest, HistoryMayBeginWithACommit) {
  const KeepCase& given = GetParam();
  EXPECT_EQ(may_begin_with(given.keep, given.number, given.time, 100, 100'000), given.may_begin);
}

constexpr std::chrono::seconds kAge{1000};

INSTANTIATE_TEST_SUITE_P(
    All, KeepTest,
    ::testing::Values(KeepCase{"Everything", {}, 1, 0, false},
                      KeepCase{"EnoughCommits", {10, std::nullopt}, 90, 100'000, true},
                      KeepCase{"OneCommitTooFew", {10, std::nullopt}, 91, 0, false},
                      KeepCase{"OldEnough", {std::nullopt, kAge}, 99, 99'000, true},
                      KeepCase{"OneSecondTooYoung", {std::nullopt, kAge}, 1, 99'001, false}),
    [](const auto& given) { return std::string(given.param.name); });

TEST_F(StateTest, OldCommitsGoInBatchesButNeverOneThatIsToBeKept) {
  make(0);
  store::Transaction candidate(begun_);
  constexpr Number kKept = 4;
  Journal journal(file_.name(), {kKept, std::nullopt});
  Number first = 1;
  for (int id = 2; id < 40; ++id) {
    candidate.edit(test::config(port(id)), Format::kXml);
    candidate.prepare();
    journal.record(port_comes(id), std::nullopt);
    candidate.commit();
    journal.tend(candidate);
    const Number kept = journal.newest() - oldest(journal.connection());
    EXPECT_GE(kept, std::min(kKept, journal.newest() - 1));
    EXPECT_LE(kept, 3 * kKept);
    first = oldest(journal.connection());
  }
  EXPECT_GT(first, 25);
  EXPECT_THAT(restored(first), HasSubstr("<id>" + std::to_string(first) + "</id>"));
  EXPECT_THAT(restored(first), ::testing::Not(HasSubstr("<id>" + std::to_string(first + 1) + "<")));
  EXPECT_EQ(restored(journal.newest()), begun_.print(Format::kXml));
}

TEST_F(StateTest, WhatAConfirmedCommitGoesBackToIsKept) {
  make(0);
  const store::Transaction candidate(begun_);
  Journal journal(file_.name(), {1, std::nullopt});
  for (int id = 2; id < 10; ++id) {
    journal.record(port_comes(id), Unconfirmed{"id", std::chrono::seconds(100)});
    journal.tend(candidate);
  }
  EXPECT_EQ(oldest(journal.connection()), 1);
  journal.record(port_comes(10), std::nullopt);
  journal.tend(candidate);
  EXPECT_GT(oldest(journal.connection()), 1);
}

TEST_F(StateTest, WhatWaitsToBeConfirmedOutlivesTheProcess) {
  make(2);
  {
    Journal journal(file_.name());
    EXPECT_FALSE(journal.left_unconfirmed().has_value());
    journal.record(port_comes(8), Unconfirmed{"id", std::chrono::seconds(10)});
    journal.record(port_comes(9), Unconfirmed{"again", std::chrono::seconds(1000)});
  }
  {
    Journal journal(file_.name());
    const auto left = journal.left_unconfirmed();
    ASSERT_TRUE(left.has_value());
    EXPECT_EQ(left->since, 3);
    EXPECT_EQ(left->persist, "again");
    EXPECT_GT(left->left, std::chrono::seconds(500));
    EXPECT_LE(left->left, std::chrono::seconds(1000));
    EXPECT_TRUE(left->same_boot);
    journal.connection().run("UPDATE pending SET boot = 'another'");
    EXPECT_FALSE(journal.left_unconfirmed()->same_boot);
    journal.record({}, std::nullopt);
  }
  EXPECT_FALSE(Journal(file_.name()).left_unconfirmed().has_value());
}

TEST_F(StateTest, AFullDiskRefusesTheCommitOnly) {
  make(1);
  Journal journal(file_.name());
  const auto pages = journal.connection().number("PRAGMA page_count");
  journal.connection().run("PRAGMA max_page_count = " + std::to_string(pages));
  Commit large = port_comes(5);
  large.author.comment = std::string(100'000, 'x');
  try {
    journal.record(large, Unconfirmed{"id", std::chrono::seconds(10)});
    FAIL() << "it was stored";
  } catch (const Failure& failure) {
    EXPECT_EQ(failure.cause(), Failure::Cause::kNoRoom);
    EXPECT_EQ(failure.what(), "state '" + file_.name().string() + "': the disk is full");
  }
  EXPECT_EQ(journal.newest(), 2);
  EXPECT_FALSE(journal.left_unconfirmed().has_value());
  journal.connection().run("PRAGMA max_page_count = 1000000");
  journal.record(large, std::nullopt);
  EXPECT_EQ(journal.newest(), 3);
  EXPECT_EQ(list(journal.connection(), 1).at(0).author.comment, large.author.comment);
}

TEST_F(StateTest, OnlyOneProcessServesAState) {
  make(1);
  {
    Journal journal(file_.name());
    EXPECT_THAT(why_not_served(), HasSubstr("another process serves it"));
    EXPECT_THAT(restored(2), HasSubstr("<id>2</id>"));  // readers may read
    journal.record(port_comes(3), std::nullopt);
  }
  EXPECT_EQ(why_not_served(), "it is served");
}

TEST_F(StateTest, AStateThatWasNotBegunIsNew) {
  EXPECT_TRUE(Journal(file_.name()).is_new());
  EXPECT_THROW(open_to_read(file_.name()), Failure);
  EXPECT_TRUE(Journal(file_.name()).is_new());
  make(0);
  EXPECT_FALSE(Journal(file_.name()).is_new());
}

struct WrongFile {
  const char* name;
  void (*make)(const std::filesystem::path& file);
  const char* why;
};

void PrintTo(const WrongFile& file, std::ostream* out) {
  *out << file.name;
}

void run(const std::filesystem::path& file, const std::string& statements) {
  Connection(file, Access::kWrite).run(statements);
}

void write(const std::filesystem::path& file, const std::string& text) {
  std::ofstream(file, std::ios::binary) << text;
}

class WrongStateTest : public StateTest, public ::testing::WithParamInterface<WrongFile> {};

TEST_P(WrongStateTest, IsRefusedWithTheReason) {
  make(300);
  GetParam().make(file_.name());
  EXPECT_THAT(why_not_served(), HasSubstr("state '" + file_.name().string() + "': "));
  EXPECT_THAT(why_not_served(), HasSubstr(GetParam().why));
  EXPECT_THROW(restored(1), Failure);
}

INSTANTIATE_TEST_SUITE_P(
    Files, WrongStateTest,
    ::testing::Values(
        WrongFile{"AnXmlFile",
                  [](const std::filesystem::path& file) { write(file, "<config/>\n"); },
                  "it is no state of gponval"},
        WrongFile{"AnotherDatabase",
                  [](const std::filesystem::path& file) {
                    std::filesystem::remove(file);
                    run(file, "CREATE TABLE songs (name TEXT)");
                  },
                  "it is no state of gponval"},
        WrongFile{"OfANewerVersion",
                  [](const std::filesystem::path& file) { run(file, "PRAGMA user_version = 9"); },
                  "it is of a newer gponval (version 9 of the tables, this one knows 2)"},
        WrongFile{"Truncated",
                  [](const std::filesystem::path& file) {
                    std::filesystem::resize_file(file, std::filesystem::file_size(file) / 2);
                  },
                  "it is damaged"},
        WrongFile{"TruncatedWithinTheHeader",
                  [](const std::filesystem::path& file) { std::filesystem::resize_file(file, 60); },
                  "it is damaged"}),
    [](const auto& row) { return row.param.name; });

TEST_F(StateTest, AFolderIsNoState) {
  std::filesystem::create_directory(file_.name());
  EXPECT_THAT(why_not_served(), HasSubstr("Is a directory"));
}

TEST_F(StateTest, AMissingCommitIsDamage) {
  make(5);
  run(file_.name(), "DELETE FROM commits WHERE number = 4");
  EXPECT_THAT(restored(3), HasSubstr("<id>3</id>"));
  EXPECT_THROW(restored(6), Failure);
}

TEST_F(StateTest, ChangesThatCannotBeReplayedAreDamage) {
  for (const char* changes : {"", "[[1]]", R"([["/config/nothing",null,"1"]])",
                              R"([["/config/service-port{a}",null,""]])"}) {
    SCOPED_TRACE(changes);
    make(2);
    run(file_.name(), "UPDATE commits SET changes = '" + std::string(changes) + "' WHERE number=3");
    EXPECT_THROW(restored(3), Failure);
    std::filesystem::remove(file_.name());
  }
}

TEST_F(StateTest, AnOlderVersionIsBroughtUpToDateStepByStep) {
  constexpr const char* kOld[] = {"CREATE TABLE a (x)"};
  constexpr const char* kNew[] = {"CREATE TABLE a (x)", "ALTER TABLE a ADD COLUMN y",
                                  "INSERT INTO a VALUES (1, 2)"};
  Connection connection(file_.name(), Access::kWrite);
  EXPECT_TRUE(is_new(connection));
  migrate(connection, kOld);
  EXPECT_FALSE(is_new(connection));
  migrate(connection, kNew);
  migrate(connection, kNew);
  EXPECT_EQ(connection.number("SELECT count(*) FROM a WHERE y = 2"), 1);
  EXPECT_EQ(connection.number("PRAGMA user_version"), 3);
  check_version(connection, kNew);
  EXPECT_THROW(check_version(connection, kOld), Failure);
}

}  // namespace
}  // namespace tarnd::netconf::state
