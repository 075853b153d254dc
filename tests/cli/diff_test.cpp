#include <gmock/gmock.h>

#include <cstdlib>

#include "tests/cli/gponval_run.h"

namespace gponval::test {
namespace {

using nlohmann::json;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

class DiffTest : public CommandTest {
 protected:
  DiffTest() {
    config("change.xml", service_port(3, 1, 20) + fec_change() +
                             "<service-port nc:operation=\"delete\"><id>2</id></service-port>");
  }
};

const std::string kChanges =
    "~ /config/interface/gpon{1 1 3}/downstream-fec: true -> false\n"
    "- /config/service-port{2}\n"
    "-     gpon/id: 1/1/3\n"
    "-     gpon/onu/id: 1\n"
    "-     gpon/onu/gem/gem-id: 2\n"
    "-     match/vlan/vlan-id: 10\n"
    "+ /config/service-port{3}\n"
    "+     gpon/id: 1/1/3\n"
    "+     gpon/onu/id: 1\n"
    "+     gpon/onu/gem/gem-id: 1\n"
    "+     match/vlan/vlan-id: 20\n";

json changes_as_json() {
  const json two = {{"gpon/id", "1/1/3"},
                    {"gpon/onu/id", "1"},
                    {"gpon/onu/gem/gem-id", "2"},
                    {"match/vlan/vlan-id", "10"}};
  json three = two;
  three["gpon/onu/gem/gem-id"] = "1";
  three["match/vlan/vlan-id"] = "20";
  return json::array(
      {{{"path", "/config/interface/gpon{1 1 3}/downstream-fec"},
        {"op", "change"},
        {"old", "true"},
        {"new", "false"}},
       {{"path", "/config/service-port{2}"}, {"op", "delete"}, {"old", two}, {"new", nullptr}},
       {{"path", "/config/service-port{3}"}, {"op", "create"}, {"old", nullptr}, {"new", three}}});
}

TEST_F(DiffTest, ItPrintsWhatAChangeDoesInTheOrderOfTheModel) {
  const Outcome run = gponval({"diff", "--running", "card.xml", "--change", "change.xml"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out, kChanges);
  EXPECT_THAT(run.err, IsEmpty());
}

TEST_F(DiffTest, AsJsonItIsAListOfObjects) {
  const Outcome run =
      gponval({"diff", "--running", "card.xml", "--change", "change.xml", "--format", "json"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.json(), json({{"changes", changes_as_json()}}));
  const Outcome alike =
      gponval({"diff", "--running", "card.xml", "--candidate", "card.xml", "--format", "json"});
  EXPECT_EQ(alike.json(), json({{"changes", json::array()}}));
}

TEST_F(DiffTest, TheExitStatusIsThatOfDiff) {
  const struct {
    std::vector<std::string> line;
    int status;
  } cases[] = {
      {{"--running", "card.xml", "--candidate", "card.xml"}, 0},
      {{"--running", "card.xml", "--set", "/config/service-port{1}"}, 0},
      {{"--running", "card.xml", "--set", "/config/service-port{1}/upstream-rate=5", "--delete",
        "/config/service-port{1}/upstream-rate"},
       0},
      {{"--running", "card.xml", "--set", "/config/service-port{1}/upstream-rate=5"}, 1},
      {{"--running", "card.xml", "--candidate", "missing.xml"}, 2},
      {{"--running", "card.xml", "--set", "/config/nothing"}, 2},
      {{"--running", "card.xml"}, 2},
      {{"--candidate", "card.xml"}, 2},
  };
  for (const auto& [more, status] : cases) {
    std::vector<std::string> line = {"diff"};
    line.insert(line.end(), more.begin(), more.end());
    const Outcome run = gponval(line);
    EXPECT_EQ(run.status, status) << run.out << run.err;
    EXPECT_EQ(run.out.empty(), status != 1) << run.out;
    EXPECT_EQ(run.err.empty(), status != 2) << run.err;
  }
}

TEST_F(DiffTest, ItNeedsNoPlugin) {
  EXPECT_EQ(gponval({"diff", "--help"}).out.find("--plugin"), std::string::npos);
}

TEST_F(DiffTest, ValuesThatAreHardToReadAreInQuotes) {
  const std::string onu = "/config/interface/gpon{1 1 3}/onu{1}";
  const std::string key = "/config/profile/gpon/tr069-acs-profile{\xc3\xa9}";
  const Outcome run =
      gponval({"diff", "--running", "card.xml", "--set", onu + "/description=a \"b\"", "--set",
               onu + "/snmp/real-time", "--set", onu + "/auth-method/password=", "--set",
               key + "/password=hush", "--set", key + "/url=http://\xc3\xa9"});
  EXPECT_THAT(run.out, HasSubstr("+ " + onu + "/description: \"a \\\"b\\\"\"\n"));
  EXPECT_THAT(run.out, HasSubstr("+ " + onu + "/auth-method/password: \"\"\n"));
  EXPECT_THAT(run.out, HasSubstr("+ " + onu + "/snmp/real-time\n"));
  EXPECT_THAT(run.out, HasSubstr("+     url: http://\xc3\xa9\n"));
  EXPECT_THAT(run.out, HasSubstr("+     password: $8$"));
  EXPECT_THAT(run.out, Not(HasSubstr("hush")));
}

TEST_F(DiffTest, ATerminalShowsColoursUnlessTheUserWantsNone) {
  const std::vector<std::string> line = {"diff", "--running", "card.xml", "--change", "change.xml"};
  const Outcome coloured = run_at_terminal(folder_, line);
  EXPECT_EQ(coloured.status, 1);
  EXPECT_THAT(coloured.out, HasSubstr("\033[33m~ /config/interface"));
  EXPECT_THAT(coloured.out, HasSubstr("\033[31m- /config/service-port{2}\033[0m"));
  EXPECT_THAT(coloured.out, HasSubstr("\033[32m+     gpon/id: 1/1/3\033[0m"));
  setenv("NO_COLOR", "1", 1);
  const Outcome plain = run_at_terminal(folder_, line);
  unsetenv("NO_COLOR");
  EXPECT_THAT(plain.out, Not(HasSubstr("\033")));
}

TEST_F(DiffTest, ACommitPrintsItsChangesBeforeTheVerdict) {
  const std::vector<std::string> line = {"commit",     "--running", "card.xml",  "--change",
                                         "change.xml", "--changes", "--confirm", "no"};
  const Outcome run = gponval(line);
  EXPECT_EQ(run.status, 3);
  EXPECT_THAT(run.out, StartsWith(kChanges + "\nCommit not confirmed.\n"));
  std::vector<std::string> as_json = line;
  as_json.insert(as_json.end(), {"--format", "json"});
  EXPECT_EQ(gponval(as_json).json().at("changes"), changes_as_json());
  EXPECT_EQ(gponval(as_json).json().at("result"), "unconfirmed");
}

TEST_F(DiffTest, ACommitOfNothingHasNoChanges) {
  const std::vector<std::string> line = {"commit", "--running", "card.xml", "--changes"};
  EXPECT_EQ(gponval(line).out, "Nothing to commit.\n");
  std::vector<std::string> as_json = line;
  as_json.insert(as_json.end(), {"--format", "json"});
  EXPECT_EQ(gponval(as_json).json().at("changes"), json::array());
}

TEST_F(DiffTest, WhatIsSavedToStandardOutputIsNotMixedWithTheChanges) {
  const Outcome run = gponval({"commit", "--running", "card.xml", "--set",
                               "/config/service-port{1}/admin-enabled=true", "--only",
                               "sp_gem_check", "--changes", "--save", "-"});
  EXPECT_THAT(run.out, StartsWith("<config"));
  EXPECT_THAT(run.err, StartsWith("+ /config/service-port{1}/admin-enabled: true\n\nCommit "));
}

}  // namespace
}  // namespace gponval::test
