#include <gmock/gmock.h>

#include "tests/cli/gponval_run.h"

namespace gponval::test {
namespace {

using nlohmann::json;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

using CommitTest = CommandTest;

// The change is one line.
constexpr const char* kInChange = "at change.xml:1\n";

// Two service ports that match the same traffic, and a GEM port that does not exist.
const std::string kTwoErrors = service_port(3, 1, 10) + service_port(4, 9, 10);

constexpr const char* kConflict =
    "ERROR /config/service-port (service_port_global_validation)\n"
    "Service-port 1 and 3 have conflicting matches.\n";
constexpr const char* kMissingGem =
    "ERROR /config/service-port (sp_gem_check)\n"
    "Service-port [4] gem [9] was not configured to onu [1]\n";
constexpr const char* kFecWarning =
    "WARNING /config/interface/gpon{1 1 3}/downstream-fec (fec_confirmation_warning)\n"
    "The change in FEC configuration will result in temporary data loss for all users of this PON "
    "link.\n";

std::vector<std::string> requests_of(const json& report) {
  std::vector<std::string> requests;
  for (const json& answer : report.at("answers")) requests.push_back(answer.at("request"));
  return requests;
}

TEST_F(CommitTest, AGoodChangeIsAccepted) {
  const Outcome run = commit(service_port(3, 1, 20));
  EXPECT_EQ(run.status, 0);
  EXPECT_EQ(run.out, "Commit accepted.\n");
  EXPECT_THAT(run.err, IsEmpty());
}

TEST_F(CommitTest, ACommitWithoutAChangeIsAcceptedAndSaysSo) {
  config("same.xml", service_port(1, 1, 10));
  const std::vector<std::string> cases[] = {
      {}, {"--change", "same.xml"}, {"--candidate", "card.xml"}, {"--all", "--confirm", "no"}};
  for (const std::vector<std::string>& more : cases) {
    std::vector<std::string> line = {"commit", "--running", "card.xml"};
    line.insert(line.end(), more.begin(), more.end());
    const Outcome text = gponval(line);
    EXPECT_EQ(text.status, 0) << text.err;
    EXPECT_EQ(text.out, "Nothing to commit.\n");
    line.insert(line.end(), {"--format", "json"});
    const Outcome run = gponval(line);
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_EQ(
        run.json(),
        json({{"result", "accepted"}, {"answers", json::array()}, {"messages", json::array()}}));
  }
}

TEST_F(CommitTest, AChangeThatNoValidatorSeesIsCommitted) {
  EXPECT_EQ(commit(service_port(3, 1, 20), {"--only", "vlan_limit_check"}).out,
            "Commit accepted.\n");
}

TEST_F(CommitTest, TheFirstErrorEndsIt) {
  const Outcome run = commit(kTwoErrors);
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out, std::string("Commit rejected.\n\n") + kConflict);
  EXPECT_THAT(run.err, IsEmpty());
}

TEST_F(CommitTest, AllListsEveryErrorAndWarning) {
  const Outcome run = commit(kTwoErrors + fec_change(), {"--all"});
  EXPECT_EQ(run.status, 1);
  EXPECT_EQ(run.out, std::string("Commit rejected.\n\n") + kFecWarning + kInChange + "\n" +
                         kConflict + "\n" + kMissingGem);
}

TEST_F(CommitTest, OnlyCallsTheNamedRequests) {
  const Outcome one = commit(kTwoErrors, {"--only", "sp_gem_check", "--format", "json"});
  EXPECT_EQ(one.status, 1);
  EXPECT_THAT(requests_of(one.json()), ElementsAre("sp_gem_check"));

  const Outcome two = commit(
      kTwoErrors, {"--all", "--only", "sp_gem_check,config_modified_check", "--format", "json"});
  EXPECT_THAT(requests_of(two.json()), ElementsAre("config_modified_check", "sp_gem_check"));

  const Outcome none = commit(kTwoErrors, {"--only", "vlan_limit_check"});
  EXPECT_EQ(none.status, 0);
}

TEST_F(CommitTest, AWarningIsNotConfirmedAwayFromATerminal) {
  const Outcome run = commit(fec_change());
  EXPECT_EQ(run.status, 3);
  EXPECT_EQ(run.out, std::string("Commit not confirmed.\n\n") + kFecWarning + kInChange);
}

TEST_F(CommitTest, ConfirmAnswersTheWarning) {
  const struct {
    std::string confirm;
    std::string input;
    int status;
  } cases[] = {
      {"yes", "", 0},     {"no", "yes\n", 3}, {"ask", "yes\n", 0}, {"ask", "y\n", 0},
      {"ask", "no\n", 3}, {"ask", "\n", 3},   {"ask", "", 3},      {"ask", "maybe\nyes\n", 3},
  };
  config("change.xml", fec_change());
  for (const auto& [confirm, input, status] : cases) {
    const Outcome run = gponval(
        {"commit", "--running", "card.xml", "--change", "change.xml", "--confirm", confirm}, input);
    EXPECT_EQ(run.status, status) << confirm << ' ' << input;
    EXPECT_EQ(run.err.find("Proceed?") != std::string::npos, confirm == "ask") << confirm;
    EXPECT_EQ(run.err.find(kFecWarning) != std::string::npos, confirm == "ask") << confirm;
    EXPECT_THAT(run.out, StartsWith(status == 0 ? "Commit accepted." : "Commit not confirmed."));
  }
}

TEST_F(CommitTest, NothingIsAskedWithoutAWarningOrAfterAnError) {
  for (const std::string& change : {service_port(3, 1, 20), kTwoErrors + fec_change()}) {
    const Outcome run = commit(change, {"--confirm", "ask"});
    EXPECT_THAT(run.err, IsEmpty()) << change;
  }
}

TEST_F(CommitTest, ATerminalIsAsked) {
  config("change.xml", fec_change());
  const std::vector<std::string> line = {"commit", "--running", "card.xml", "--change",
                                         "change.xml"};
  const Outcome confirmed = run_at_terminal(folder_, line, "yes\n");
  EXPECT_EQ(confirmed.status, 0);
  EXPECT_THAT(confirmed.out, HasSubstr("Proceed? [yes,no]"));
  EXPECT_EQ(run_at_terminal(folder_, line, "no\n").status, 3);
}

TEST_F(CommitTest, ColoursAreForTerminals) {
  config("change.xml", kTwoErrors);
  const std::vector<std::string> line = {"commit", "--running", "card.xml", "--change",
                                         "change.xml"};
  EXPECT_THAT(run_at_terminal(folder_, line).out, HasSubstr("\033[31mERROR\033[0m"));
  EXPECT_THAT(gponval(line).out, Not(HasSubstr("\033")));
}

TEST_F(CommitTest, TheJsonReportHasEveryAnswerInCallOrder) {
  const Outcome run = commit(service_port(3, 9, 10), {"--format", "json"});
  EXPECT_EQ(run.status, 1);
  const json report = run.json();
  EXPECT_EQ(report.at("result"), "rejected");
  EXPECT_EQ(report.at("messages"), json::array());
  EXPECT_FALSE(report.contains("platform-calls"));
  ASSERT_THAT(requests_of(report), ElementsAre("config_modified_check",
                                               "service_port_global_validation", "sp_gem_check"));
  for (std::size_t i = 0; i < 3; ++i) {
    const json& answer = report.at("answers").at(i);
    EXPECT_EQ(answer.size(), i < 2 ? 5U : 6U);
    EXPECT_EQ(answer.contains("source"), i == 2);
    EXPECT_EQ(answer.at("path"), "/config/service-port");
    EXPECT_EQ(answer.at("result"), i < 2 ? "OK" : "ERROR");
    EXPECT_EQ(answer.at("text"),
              i < 2 ? "" : "Service-port [3] gem [9] was not configured to onu [1]");
    EXPECT_TRUE(answer.at("msecs").is_number());
    EXPECT_GE(answer.at("msecs"), 0);
  }
}

TEST_F(CommitTest, TheJsonReportShowsAWarning) {
  const Outcome unconfirmed = commit(fec_change(), {"--format", "json"});
  EXPECT_EQ(unconfirmed.status, 3);
  EXPECT_EQ(unconfirmed.json().at("result"), "unconfirmed");
  const Outcome accepted = commit(fec_change(), {"--format", "json", "--confirm", "yes"});
  EXPECT_EQ(accepted.status, 0);
  const json report = accepted.json();
  EXPECT_EQ(report.at("result"), "accepted");
  bool warned = false;
  for (const json& answer : report.at("answers")) {
    if (answer.at("request") != "fec_confirmation_warning") continue;
    warned = true;
    EXPECT_EQ(answer.at("result"), "WARNING");
    EXPECT_EQ(answer.at("path"), "/config/interface/gpon{1 1 3}/downstream-fec");
  }
  EXPECT_TRUE(warned);
}

TEST_F(CommitTest, MessagesToTheUserAreShown) {
  const std::string change =
      "<interface><xgspon><chassis-id>1</chassis-id><slot-id>1</slot-id><port-id>5</port-id>"
      "<operation-mode>combo</operation-mode></xgspon></interface>";
  const std::string message =
      "WARNING: combo mode configured for all ONUs belonging to PON 1 1 5. Only ONUs operating in "
      "this mode will work properly.\n";
  const Outcome text = commit(change);
  EXPECT_EQ(text.status, 0);
  EXPECT_EQ(text.out, "Commit accepted.\n\nMessage to the user\n" + message);
  EXPECT_EQ(commit(change, {"--format", "json"}).json().at("messages"), json::array({message}));
}

TEST_F(CommitTest, AnAnswerWithoutTextReadsValidationFailed) {
  const std::string change = "<service-port><id>3</id><gpon><id>1/1/3</id></gpon></service-port>";
  const Outcome text = commit(change, {"--only", "sp_gem_check"});
  EXPECT_EQ(text.status, 1);
  EXPECT_EQ(text.out, std::string("Commit rejected.\n\nERROR /config/service-port (sp_gem_check)\n"
                                  "validation failed\n") +
                          kInChange);
  const Outcome in_json = commit(change, {"--only", "sp_gem_check", "--format", "json"});
  EXPECT_EQ(in_json.json().at("answers").at(0).at("text"), "");
}

TEST_F(CommitTest, TextsAreShownAsTheyAreAndNeverAsAFormat) {
  const auto onu = [](const std::string& id) {
    return "<onu><id>" + id + "</id><auth-method><password>%s%n%d</password></auth-method></onu>";
  };
  const std::string change =
      "<gpon><slot>1/1</slot><onu-auth-method>password</onu-auth-method></gpon>"
      "<interface><gpon><chassis-id>1</chassis-id><slot-id>1</slot-id><port-id>1</port-id>" +
      onu("7") + onu("8") + "</gpon></interface>";
  const std::string head =
      "The ONU password must be unique per PON interface.\n"
      " Repeated passwords:\n";
  const Outcome in_json = commit(change, {"--only", "onu_pwd_sn_unique_check", "--format", "json"});
  const std::string text = in_json.json().at("answers").at(0).at("text");
  EXPECT_THAT(text, StartsWith(head));
  EXPECT_THAT(text, HasSubstr("interface gpon 1 onu 7 password: [%s%n%d]\n"
                              "interface gpon 1 onu 8 password: [%s%n%d]\n"));
  const Outcome run = commit(change, {"--only", "onu_pwd_sn_unique_check"});
  EXPECT_THAT(run.out, StartsWith("Commit rejected.\n\nERROR /config/interface/gpon{1 1 1}/onu "
                                  "(onu_pwd_sn_unique_check)\n" +
                                  text));
}

TEST_F(CommitTest, ChangesApplyInOrderInOneTransaction) {
  config("add.xml", service_port(3, 9, 30));
  config("drop.xml", "<service-port nc:operation=\"delete\"><id>3</id></service-port>");
  const Outcome good =
      gponval({"commit", "--running", "card.xml", "--change", "add.xml", "--change", "drop.xml"});
  EXPECT_EQ(good.status, 0) << good.out << good.err;
  const Outcome wrong =
      gponval({"commit", "--running", "card.xml", "--change", "drop.xml", "--change", "add.xml"});
  EXPECT_EQ(wrong.status, 2);
  EXPECT_THAT(wrong.err, StartsWith("gponval: drop.xml:"));
}

TEST_F(CommitTest, ACandidateIsTheWholeNewConfiguration) {
  config("empty.xml", "");
  const Outcome same =
      gponval({"commit", "--running", "card.xml", "--candidate", "card.xml", "--format", "json"});
  EXPECT_EQ(same.status, 0);
  EXPECT_EQ(same.json().at("answers"), json::array());
  const Outcome first = gponval({"commit", "--running", "empty.xml", "--candidate", "card.xml"});
  EXPECT_EQ(first.status, 0) << first.out << first.err;
}

TEST_F(CommitTest, JsonIsReadByTheEndingOfTheName) {
  file("change.json",
       R"({"base:config": {"service-port": [{"id": 3, "gpon": {"id": "1/1/3",
           "onu": {"id": 1, "gem": {"gem-id": 9}}}}]}})");
  const Outcome run = gponval({"commit", "--running", "card.xml", "--change", "change.json"});
  EXPECT_EQ(run.status, 1) << run.err;
  EXPECT_THAT(run.out, HasSubstr("Service-port [3] gem [9] was not configured to onu [1]"));
}

TEST_F(CommitTest, TheEndingSaysTheFormatAndElseTheOption) {
  const std::string in_json = R"({"base:config": {}})";
  const std::string in_xml = in_config("");
  const struct {
    std::string name;
    std::string format;  // empty: none given
    std::string text;
    bool read;
  } cases[] = {
      {"a.json", "", in_json, true},     {"a.JSON", "", in_json, true},
      {"a.Json", "", in_json, true},     {"a.json", "xml", in_json, true},
      {"a.json", "", in_xml, false},     {"a.xml", "", in_xml, true},
      {"a.XML", "json", in_xml, true},   {"a.xml", "json", in_json, false},
      {"a", "", in_xml, true},           {"a", "", in_json, false},
      {"a", "json", in_json, true},      {"a", "xml", in_xml, true},
      {"a.conf", "json", in_json, true}, {"json", "", in_xml, true},
      {"a.json.bak", "", in_xml, true},  {"a.json.bak", "json", in_json, true},
      {".json", "", in_json, true},      {"-", "", in_xml, true},
      {"-", "json", in_json, true},      {"-", "json", in_xml, false},
  };
  for (const auto& [name, format, text, read] : cases) {
    if (name != "-") file(name, text);
    for (const std::string option : {"--running", "--change", "--candidate"}) {
      std::vector<std::string> line = {"commit", option, name};
      if (option != "--running") line.insert(line.end(), {"--running", "card.xml"});
      if (!format.empty()) line.insert(line.end(), {"--input-format", format});
      const Outcome run = gponval(line, name == "-" ? text : "");
      EXPECT_EQ(run.status != 2, read) << option << ' ' << name << ' ' << format << run.err;
    }
  }
}

TEST_F(CommitTest, ADashIsStandardInput) {
  const Outcome change = gponval({"commit", "--running", "card.xml", "--change", "-"},
                                 in_config(service_port(3, 9, 30)));
  EXPECT_EQ(change.status, 1) << change.err;
  const Outcome running = gponval({"commit", "--running", "-"}, text_of("card.xml"));
  EXPECT_EQ(running.status, 0) << running.err;
}

TEST_F(CommitTest, TheCardFileSaysWhatTheCardCanDo) {
  file("card.txt", "max-service-ports = 2\n");
  const Outcome full = commit(service_port(3, 1, 30), {"--card", "card.txt"});
  EXPECT_EQ(full.status, 1);
  EXPECT_THAT(full.out, HasSubstr("Service-port limit exceeded: Installed 3 of 2 allowed\n"));
}

TEST_F(CommitTest, TheTraceGoesToStandardError) {
  const std::string change = service_port(3, 1, 30);
  EXPECT_THAT(commit(change, {"--trace", "off"}).err, IsEmpty());
  const Outcome flow = commit(change, {"--trace", "flow"});
  EXPECT_EQ(flow.out, "Commit accepted.\n");
  EXPECT_THAT(flow.err, HasSubstr("FLOW "));
  EXPECT_THAT(flow.err, HasSubstr("service_port_global_validation begin\n"));
  EXPECT_THAT(flow.err, HasSubstr("service_port_global_validation end - OK - elapsed time"));
  EXPECT_THAT(flow.err, HasSubstr("src/validation/"));
  EXPECT_THAT(flow.err, Not(HasSubstr("ENTRY ")));
  const Outcome entry = commit(change, {"--trace", "entry"});
  EXPECT_THAT(entry.err, HasSubstr("Validate SP 3 end."));
  EXPECT_THAT(entry.err, Not(HasSubstr("DETAIL ")));
  EXPECT_THAT(commit(change, {"--trace", "detail"}).err, HasSubstr("DETAIL "));
}

TEST_F(CommitTest, StatsShowTheCallsMade) {
  const std::string change = service_port(3, 1, 30);
  const json calls = commit(change, {"--stats", "--format", "json"}).json().at("platform-calls");
  EXPECT_GE(calls.at("maapi_get_objects"), 1);
  EXPECT_EQ(calls.at("maapi_get_values"), 1);
  EXPECT_FALSE(calls.contains("maapi_query_start"));
  EXPECT_THAT(commit(change, {"--stats"}).out, HasSubstr("\nPlatform calls\n"));
}

}  // namespace
}  // namespace gponval::test
