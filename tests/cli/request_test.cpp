#include <gmock/gmock.h>

#include "tests/cli/gponval_run.h"

namespace gponval::test {
namespace {

using nlohmann::json;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

class RequestTest : public CommandTest {
 protected:
  [[nodiscard]] Outcome request(const std::string& name, const std::string& keypath,
                                const std::vector<std::string>& more = {}) const {
    std::vector<std::string> line = {"request", name, keypath, "--running", "card.xml"};
    line.insert(line.end(), more.begin(), more.end());
    return gponval(line);
  }
};

TEST_F(RequestTest, AnOkAnswerIsShown) {
  const Outcome run = request("onu_bw_check", "/config/interface/gpon{1 1 3}/onu");
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.out, "Request accepted.\n\nOK /config/interface/gpon{1 1 3}/onu (onu_bw_check)\n");
}

TEST_F(RequestTest, TheAnswerHasTheFormOfACommit) {
  const Outcome run =
      request("onu_bw_check", "/config/interface/gpon{1 1 3}/onu", {"--format", "json"});
  json report = run.json();
  ASSERT_EQ(report.at("answers").size(), 1U);
  EXPECT_TRUE(report.at("answers").at(0).at("msecs").is_number());
  report.at("answers").at(0).erase("msecs");
  EXPECT_EQ(report, json({{"result", "accepted"},
                          {"answers",
                           {{{"request", "onu_bw_check"},
                             {"path", "/config/interface/gpon{1 1 3}/onu"},
                             {"result", "OK"},
                             {"text", ""}}}},
                          {"messages", json::array()}}));
}

TEST_F(RequestTest, TheNameGoesToThePluginAsItIs) {
  const struct {
    const char* name;
    const char* traced;  // the validator that the name selects
  } cases[] = {
      {"onu", "validate_max_bandwidth_ponlink begin"},
      {"", "validate_max_bandwidth_ponlink begin"},
      {"onu_p", "validate_onu_pwd_sn_unique begin"},
      {"ponlink_bw_check", "validate_max_bandwidth_global begin"},
  };
  for (const auto& [name, traced] : cases) {
    const Outcome run =
        request(name, "/config/interface/gpon{1 1 3}/onu", {"--trace", "flow", "--format", "json"});
    EXPECT_EQ(run.status, 0) << name << run.err;
    EXPECT_THAT(run.err, HasSubstr(traced)) << name;
    EXPECT_THAT(run.err, Not(HasSubstr("no request"))) << name;
    EXPECT_EQ(run.json().at("answers").at(0).at("request"), name);
  }
}

TEST_F(RequestTest, AnUnknownNameIsAcceptedAndReported) {
  for (const std::string name : {"sp_gem_check_x", "%s%n", "commit", "[a,b]", "nothing known"}) {
    const Outcome run =
        request(name, "/config/service-port", {"--trace", "flow", "--format", "json"});
    EXPECT_EQ(run.status, 0) << name << run.err;
    EXPECT_THAT(run.err, StartsWith("gponval: no request of the model begins with '" + name + "'"));
    EXPECT_EQ(run.err.find('\n'), run.err.size() - 1) << run.err;
    EXPECT_EQ(run.json().at("answers").at(0).at("request"), name);
  }
}

TEST_F(RequestTest, AnUnknownNameIsReportedWithTheNearestKnown) {
  EXPECT_EQ(request("sp_gem_chek", "/config/service-port").err,
            "gponval: no request of the model begins with 'sp_gem_chek', did you mean "
            "'sp_gem_check'?\n");
  EXPECT_EQ(request("\xff", "/config/service-port").err,
            "gponval: no request of the model begins with '\\xff'\n");
}

TEST_F(RequestTest, ANameThatIsNoProperTextStillMakesProperJson) {
  const Outcome run = request("\xff\xfe", "/config/service-port", {"--format", "json"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(run.json().at("answers").at(0).at("request"), "\ufffd\ufffd");
}

TEST_F(RequestTest, TheInstanceNeedNotExist) {
  const Outcome run = request("onu_bw_check", "/config/interface/gpon{1 1 77}/onu");
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_THAT(run.out, HasSubstr("OK /config/interface/gpon{1 1 77}/onu (onu_bw_check)"));
}

TEST_F(RequestTest, ItSeesTheChanges) {
  config("change.xml", service_port(3, 9, 30));
  const Outcome run = request("sp_gem_check", "/config/service-port", {"--change", "change.xml"});
  EXPECT_EQ(run.status, 1) << run.err;
  EXPECT_EQ(run.out,
            "Request rejected.\n\nERROR /config/service-port (sp_gem_check)\n"
            "Service-port [3] gem [9] was not configured to onu [1]\n"
            "at change.xml:1\n");
}

TEST_F(RequestTest, TheValueIsTheGivenOneOrTheTransactions) {
  const std::string leaf = "/config/interface/gpon{1 1 3}/downstream-fec";
  EXPECT_EQ(request("fec_confirmation_warning", leaf).status, 0);
  EXPECT_EQ(request("fec_confirmation_warning", leaf, {"--value", "true"}).status, 0);
  const Outcome run = request("fec_confirmation_warning", leaf, {"--value", "false"});
  EXPECT_EQ(run.status, 3) << run.err;
  EXPECT_THAT(run.out, StartsWith("Request not confirmed.\n\nWARNING " + leaf));
  EXPECT_EQ(
      request("fec_confirmation_warning", leaf, {"--value", "false", "--confirm", "yes"}).status,
      0);
  config("change.xml", fec_change());
  EXPECT_EQ(request("fec_confirmation_warning", leaf, {"--change", "change.xml"}).status, 3);
}

TEST_F(RequestTest, AValueMayBeEmpty) {
  // An empty text is a value of a string, and none of a boolean.
  const std::string onu = "/config/interface/gpon{1 1 3}/onu{1}";
  for (const std::vector<std::string>& empty :
       {std::vector<std::string>{"--value="}, std::vector<std::string>{"--value", ""}}) {
    EXPECT_EQ(request("rg_prof_one_shot_check", onu + "/rg-profile", empty).status, 0);
    const Outcome run =
        request("fec_confirmation_warning", "/config/interface/gpon{1 1 3}/upstream-fec", empty);
    EXPECT_EQ(run.status, 2);
    EXPECT_THAT(run.err, HasSubstr("'' is no value of "));
  }
}

TEST_F(RequestTest, NothingIsWritten) {
  const std::string before = text_of("card.xml");
  config("change.xml", service_port(3, 1, 30));
  const Outcome run = request("sp_gem_check", "/config/service-port", {"--change", "change.xml"});
  EXPECT_EQ(run.status, 0) << run.err;
  EXPECT_EQ(text_of("card.xml"), before);
  EXPECT_EQ(request("sp_gem_check", "/config/service-port", {"--save", "new.xml"}).status, 2);
}

TEST_F(RequestTest, WhatTheModelDoesNotKnowIsWrongUse) {
  const struct {
    std::string keypath;
    std::vector<std::string> more;
  } cases[] = {
      {"/config/nothing", {}},
      {"config", {}},
      {"", {}},
      {"/config/interface/gpon{1 1", {}},
      {"/config/interface/gpon{1 1 3}/downstream-fec", {"--value", "perhaps"}},
      {"/config/interface/gpon{1 1 3}/onu", {"--value", "1"}},
  };
  for (const auto& [keypath, more] : cases) {
    const Outcome run = request("fec_confirmation_warning", keypath, more);
    EXPECT_EQ(run.status, 2) << keypath;
    EXPECT_THAT(run.out, IsEmpty()) << keypath;
    EXPECT_THAT(run.err, StartsWith("gponval: ")) << keypath;
  }
}

}  // namespace
}  // namespace gponval::test
