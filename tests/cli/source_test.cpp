#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/cli/gponval_run.h"

namespace gponval::test {
namespace {

using nlohmann::json;

// Of which file and line the only error or warning of a commit is; empty if none is named.
class SourceTest : public CommandTest {
 protected:
  [[nodiscard]] std::string source(const std::vector<std::string>& edits,
                                   const std::string& input = "") const {
    std::vector<std::string> line = {"commit", "--running", "card.xml", "--confirm", "no"};
    line.insert(line.end(), edits.begin(), edits.end());
    const std::string in_text = source_in_text(gponval(line, input).out);
    line.insert(line.end(), {"--format", "json"});
    EXPECT_EQ(source_in_json(gponval(line, input).json()), in_text);
    return in_text;
  }

 private:
  static std::string source_in_text(const std::string& report) {
    const std::size_t at = report.find("\nat ");
    return at == std::string::npos ? "" : report.substr(at + 4, report.size() - at - 5);
  }

  static std::string source_in_json(const json& report) {
    for (const json& answer : report.at("answers")) {
      if (!answer.contains("source")) continue;
      const json& of = answer.at("source");
      const std::string name = of.at("file") == "-" ? "standard input" : of.at("file");
      return name + ":" + std::to_string(of.at("line").get<int>());
    }
    return "";
  }
};

const std::string kNoSuchGem = service_port(3, 9, 30);
const std::string kFec =
    "<interface>\n<gpon><chassis-id>1</chassis-id><slot-id>1</slot-id><port-id>3</port-id>\n"
    "<downstream-fec>false</downstream-fec>\n</gpon>\n</interface>\n";

TEST_F(SourceTest, OfAListTheOnlyEntryThatChanged) {
  config("bad.xml", "\n" + kNoSuchGem);
  EXPECT_EQ(source({"--change", "bad.xml"}), "bad.xml:2");
  config("with-another-as-it-is.xml", "\n" + service_port(1, 1, 10) + "\n" + kNoSuchGem);
  EXPECT_EQ(source({"--change", "with-another-as-it-is.xml"}), "with-another-as-it-is.xml:3");
  config("with-another.xml", "\n" + service_port(4, 1, 20) + "\n" + kNoSuchGem);
  EXPECT_EQ(source({"--change", "with-another.xml"}), "");
}

TEST_F(SourceTest, OfADeletedEntryItsDeletion) {
  const Outcome run =
      run_gponval(GPONVAL_EXAMPLES, {"commit", "--running", "town.xml", "--card", "town.card",
                                     "--change", "changes/onu-remove-in-use.xml"});
  EXPECT_NE(run.out.find("\nat changes/onu-remove-in-use.xml:8\n"), std::string::npos) << run.out;
}

TEST_F(SourceTest, OfALeafItsLine) {
  config("fec.xml", "\n" + kFec);
  EXPECT_EQ(source({"--change", "fec.xml"}), "fec.xml:4");
  file("fec.json",
       "{\"base:config\": {\"interface\": {\"gpon\": [\n"
       "{\"chassis-id\": 1, \"slot-id\": 1, \"port-id\": 3,\n\"downstream-fec\": false}]}}}");
  EXPECT_EQ(source({"--change", "fec.json"}), "fec.json:3");
}

TEST_F(SourceTest, OfSeveralEditsTheOnlyOneThatTouchedTheNode) {
  config("fec.xml", "\n" + kFec);
  config("profile.xml",
         "<profile><gpon><line-profile><name>new</name></line-profile></gpon></profile>");
  const std::string leaf = "/config/interface/gpon{1 1 3}/downstream-fec=false";
  const struct {
    std::vector<std::string> edits;
    std::string source;
  } cases[] = {
      {{"--change", "profile.xml", "--change", "fec.xml"}, "fec.xml:4"},
      {{"--change", "fec.xml", "--change", "profile.xml"}, "fec.xml:4"},
      {{"--change", "fec.xml", "--set", "/config/profile/gpon/line-profile{new}"}, "fec.xml:4"},
      {{"--change", "fec.xml", "--change", "fec.xml"}, ""},
      {{"--change", "fec.xml", "--set", leaf}, ""},
      {{"--set", leaf}, ""},
      {{"--change", "profile.xml", "--set", leaf}, ""},
  };
  for (const auto& [edits, wanted] : cases) EXPECT_EQ(source(edits), wanted) << json(edits);
}

TEST_F(SourceTest, StandardInputHasLines) {
  EXPECT_EQ(source({"--change", "-"}, in_config("\n" + kFec)), "standard input:4");
}

// Only the changed entry counts, although the file has all.
TEST_F(SourceTest, OfACandidateThePlaceOfTheNode) {
  const std::string card = text_of("card.xml");
  const std::size_t end = card.rfind("</config>");
  ASSERT_NE(end, std::string::npos);
  file("new.xml", card.substr(0, end) + "\n\n" + kNoSuchGem + card.substr(end));
  const auto line = 2 + std::count(card.begin(), card.begin() + end, '\n') + 1;
  EXPECT_EQ(source({"--candidate", "new.xml"}), "new.xml:" + std::to_string(line));
}

TEST_F(SourceTest, OfARequestTheEditOfItsNode) {
  config("fec.xml", "\n" + kFec);
  const std::string leaf = "/config/interface/gpon{1 1 3}/downstream-fec";
  const Outcome run = gponval({"request", "fec_confirmation_warning", leaf, "--running", "card.xml",
                               "--change", "fec.xml", "--format", "json"});
  EXPECT_EQ(run.json().at("answers").at(0).at("source"), json({{"file", "fec.xml"}, {"line", 4}}));
}

TEST_F(SourceTest, AnAcceptedCommitHasNone) {
  config("fec.xml", "\n" + kFec);
  const Outcome run = gponval({"commit", "--running", "card.xml", "--change", "fec.xml",
                               "--confirm", "yes", "--format", "json"});
  EXPECT_EQ(run.status, 0);
  const json report = run.json();
  for (const json& answer : report.at("answers")) EXPECT_FALSE(answer.contains("source"));
}

}  // namespace
}  // namespace gponval::test
