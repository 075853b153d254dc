// Which validation points a commit calls, on which instances, in which order, and the verdict from
// the answers. The plug-in here only records its calls and returns what the test sets.

#include "standalone/daemon/daemon.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <map>

#include "tests/support/model.h"
#include "tests/support/own_model.h"

namespace tarnd {
namespace {

using store::Format;
using test::config;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

struct Recorder {
  std::vector<std::string> calls;             // "request keypath"
  std::map<std::string, int> results;         // by request, CONFD_OK if none is set
  std::map<std::string, std::string> values;  // the new value of each request's last call
  int init_result = 0;
  int finished = 0;
};
Recorder recorder;

int note_init() {
  return recorder.init_result;
}

int note_point(char* name, int size) {
  std::snprintf(name, static_cast<std::size_t>(size), "gpon_validation_check");
  return 0;
}

int note_validate(confd_trans_ctx* tctx, confd_hkeypath_t* keypath, confd_value_t* newval) {
  char path[1024];
  confd_pp_kpath(path, sizeof path, keypath);
  const std::string request = tctx->validate_opaque;
  recorder.calls.push_back(request + " " + path);
  char value[1024] = "";
  if (newval != nullptr) confd_pp_value(value, sizeof value, newval);
  recorder.values[request] = value;
  const auto result = recorder.results.find(request);
  if (result == recorder.results.end()) return CONFD_OK;
  confd_trans_seterr(tctx, "%s says so", request.c_str());
  return result->second;
}

int note_finish() {
  return ++recorder.finished, 0;
}

class DaemonTest : public ::testing::Test {
 protected:
  DaemonTest() : datastore_(test::model()) {
    recorder = Recorder();
    daemon_ = std::make_unique<Daemon>(datastore_, plugin());
  }

  static PluginEntryPoints plugin() {
    return {&note_init, &note_point, &note_validate, &note_finish};
  }

  void running(const std::string& content) { datastore_.load(config(content), Format::kXml); }

  CommitReport commit(const std::string& change, const CommitOptions& options = {}) {
    recorder.calls.clear();
    store::Transaction transaction(datastore_);
    transaction.edit(config(change), Format::kXml);
    transaction.prepare();
    return daemon_->commit(transaction, options);
  }

  std::vector<std::string> calls(const std::string& change) {
    commit(change);
    return recorder.calls;
  }

  [[nodiscard]] std::string text() const { return datastore_.print(Format::kXml); }

  store::Datastore datastore_;
  std::unique_ptr<Daemon> daemon_;
};

std::string link(int port, const std::string& content, const std::string& op = "") {
  return "<interface><gpon" + (op.empty() ? "" : " nc:operation=\"" + op + "\"") +
         "><chassis-id>1</chassis-id><slot-id>1</slot-id><port-id>" + std::to_string(port) +
         "</port-id>" + content + "</gpon></interface>";
}

std::string profile(const std::string& content) {
  return "<profile><gpon>" + content + "</gpon></profile>";
}

std::string port(int id, const std::string& op = "", const std::string& content = "") {
  return "<service-port" + (op.empty() ? "" : " nc:operation=\"" + op + "\"") + "><id>" +
         std::to_string(id) + "</id>" + content + "</service-port>";
}

const std::vector<std::string> kListCalls = {
    "config_modified_check /config/service-port",
    "service_port_global_validation /config/service-port", "sp_gem_check /config/service-port",
    "service_port_delete_all_warning_check /config/service-port"};

TEST_F(DaemonTest, AListIsCalledOnceHoweverManyEntriesChange) {
  running(port(1) + port(2));
  EXPECT_EQ(calls(port(3) + port(4) + port(1, "delete")), kListCalls);
}

TEST_F(DaemonTest, AListIsCalledWhenItsLastEntryIsDeleted) {
  running(port(1));
  EXPECT_EQ(calls(port(1, "delete")), kListCalls);
}

TEST_F(DaemonTest, AListIsCalledForAChangeInsideAnEntry) {
  running(port(1));
  EXPECT_EQ(calls(port(1, "", "<match><vlan><vlan-id>9</vlan-id></vlan></match>")), kListCalls);
}

TEST_F(DaemonTest, NothingIsCalledWithoutAChange) {
  running(port(1, "", "<upstream-rate>5</upstream-rate>"));
  EXPECT_THAT(calls(port(1, "", "<upstream-rate>5</upstream-rate>")), IsEmpty());
}

TEST_F(DaemonTest, ACheckHasTheVerdictOfACommitAndKeepsNothing) {
  running(port(1));
  const std::string before = text();
  for (const int result : {CONFD_OK, CONFD_VALIDATION_WARN, CONFD_ERR}) {
    recorder.results["sp_gem_check"] = result;
    recorder.calls.clear();
    CommitReport checked;
    {
      store::Transaction transaction(datastore_);
      transaction.edit(config(port(2)), Format::kXml);
      transaction.prepare();
      checked = daemon_->check(transaction, {});
    }
    EXPECT_EQ(text(), before);
    const std::vector<std::string> checked_calls = recorder.calls;
    const CommitReport committed = commit(port(2));
    EXPECT_EQ(checked.result, committed.result);
    EXPECT_EQ(checked.answers.size(), committed.answers.size());
    EXPECT_EQ(checked_calls, recorder.calls);
    commit(port(2, "remove"));
  }
}

TEST_F(DaemonTest, AListInsideAListIsCalledForEachParent) {
  running(
      "<interface><gpon><chassis-id>1</chassis-id><slot-id>1</slot-id><port-id>1</port-id></gpon>"
      "<gpon><chassis-id>1</chassis-id><slot-id>1</slot-id><port-id>2</port-id></gpon>"
      "</interface>");
  EXPECT_THAT(
      calls("<interface><gpon><chassis-id>1</chassis-id><slot-id>1</slot-id><port-id>2</port-id>"
            "<onu><id>1</id></onu></gpon><gpon><chassis-id>1</chassis-id><slot-id>1</slot-id>"
            "<port-id>1</port-id><onu><id>1</id></onu></gpon></interface>"),
      ElementsAre("interface_gpon_validation /config/interface/gpon",
                  "onu_bw_check /config/interface/gpon{1 1 1}/onu",
                  "onu_bw_check /config/interface/gpon{1 1 2}/onu",
                  "onu_pwd_sn_unique_check /config/interface/gpon{1 1 1}/onu",
                  "onu_pwd_sn_unique_check /config/interface/gpon{1 1 2}/onu",
                  "onu_gem_check /config/interface/gpon{1 1 1}/onu",
                  "onu_gem_check /config/interface/gpon{1 1 2}/onu",
                  "onu_snmp_rt_warn /config/interface/gpon{1 1 1}/onu",
                  "onu_snmp_rt_warn /config/interface/gpon{1 1 2}/onu"));
}

TEST_F(DaemonTest, EveryChangedEntryIsCalledInKeyOrderButNoneThatWent) {
  const std::string gone = "<media-profile nc:operation=\"delete\"><name>c</name></media-profile>";
  running(
      profile("<media-profile><name>b</name></media-profile>"
              "<media-profile><name>c</name></media-profile>"));
  EXPECT_THAT(
      calls(profile("<media-profile><name>d</name></media-profile>" + gone +
                    "<media-profile><name>b</name><codec>x</codec></media-profile>"
                    "<media-profile><name>a</name></media-profile>")),
      ElementsAre("voip_media_profile_confirmation_warning /config/profile/gpon/media-profile{a}",
                  "voip_media_profile_confirmation_warning /config/profile/gpon/media-profile{b}",
                  "voip_media_profile_confirmation_warning /config/profile/gpon/media-profile{d}"));
}

TEST_F(DaemonTest, APresenceContainerIsAnInstance) {
  const std::string host =
      "<ip-host><address>10.0.0.1/24</address><default-gateway>10.0.0.2</default-gateway></"
      "ip-host>";
  running(link(1, "<onu><id>1</id></onu>"));
  commit(link(1, "<onu><id>1</id>" + host + "</onu>"));
  EXPECT_THAT(
      recorder.calls,
      testing::Contains("onu_gateway_ip_check /config/interface/gpon{1 1 1}/onu{1}/ip-host"));
  commit(link(1, "<onu><id>1</id><ip-host nc:operation=\"delete\"/></onu>"));
  EXPECT_THAT(recorder.calls,
              testing::Not(testing::Contains(testing::StartsWith("onu_gateway_ip_check"))));
}

TEST_F(DaemonTest, AContainerIsCalledWhenSomethingBelowItChanged) {
  running(link(1, "<onu><id>1</id></onu>"));
  const std::string call =
      "rg_prof_one_shot_check /config/interface/gpon{1 1 1}/onu{1}/rg-override";
  EXPECT_THAT(calls(link(1, "<onu><id>1</id><rg-override><ssid>x</ssid></rg-override></onu>")),
              testing::Contains(call));
  EXPECT_THAT(calls(link(1,
                         "<onu><id>1</id><rg-override><ssid nc:operation=\"delete\"/>"
                         "</rg-override></onu>")),
              testing::Contains(call));
  EXPECT_THAT(calls(link(1, "<onu><id>1</id><description>x</description></onu>")),
              testing::Not(testing::Contains(call)));
}

TEST_F(DaemonTest, PointsInsideANewEntryAreCalled) {
  EXPECT_THAT(
      calls(link(1,
                 "<upstream-fec>false</upstream-fec>"
                 "<onu><id>7</id><rg-profile>r</rg-profile></onu>")),
      ElementsAre("interface_gpon_validation /config/interface/gpon",
                  "fec_confirmation_warning /config/interface/gpon{1 1 1}/upstream-fec",
                  "onu_bw_check /config/interface/gpon{1 1 1}/onu",
                  "onu_pwd_sn_unique_check /config/interface/gpon{1 1 1}/onu",
                  "onu_gem_check /config/interface/gpon{1 1 1}/onu",
                  "onu_snmp_rt_warn /config/interface/gpon{1 1 1}/onu",
                  "rg_prof_one_shot_check /config/interface/gpon{1 1 1}/onu{7}/rg-profile"));
}

TEST_F(DaemonTest, ADefaultThatIsAddedWithItsParentIsNotCalledFor) {
  EXPECT_THAT(calls(link(1, "")), ElementsAre("interface_gpon_validation /config/interface/gpon"));
}

TEST_F(DaemonTest, ALeafThatFallsBackToItsDefaultIsCalledWithIt) {
  running(link(1, "<upstream-fec>false</upstream-fec>"));
  EXPECT_THAT(
      calls(link(1, "<upstream-fec nc:operation=\"delete\"/>")),
      testing::Contains("fec_confirmation_warning /config/interface/gpon{1 1 1}/upstream-fec"));
  EXPECT_EQ(recorder.values["fec_confirmation_warning"], "true");
}

TEST_F(DaemonTest, ALeafsNewValueIsHandedOver) {
  running(link(1, ""));
  commit(link(1, "<upstream-fec>false</upstream-fec>"));
  EXPECT_EQ(recorder.values["fec_confirmation_warning"], "false");
  EXPECT_EQ(recorder.values["interface_gpon_validation"], "gpon");
}

TEST_F(DaemonTest, TheFirstErrorEndsTheCommitAndNothingStays) {
  running(port(1));
  const std::string before = text();
  recorder.results["service_port_global_validation"] = CONFD_ERR;
  const CommitReport report = commit(port(2));
  EXPECT_EQ(report.result, CommitResult::kRejected);
  EXPECT_EQ(report.answers.size(), 2U);
  EXPECT_EQ(report.answers.back().result, Verdict::kError);
  EXPECT_EQ(report.answers.back().text, "service_port_global_validation says so");
  EXPECT_EQ(text(), before);
}

TEST_F(DaemonTest, AllGoesOnAfterAnError) {
  recorder.results["service_port_global_validation"] = CONFD_ERR;
  CommitOptions options;
  options.all = true;
  const CommitReport report = commit(port(2), options);
  EXPECT_EQ(report.result, CommitResult::kRejected);
  EXPECT_EQ(report.answers.size(), 4U);
}

TEST_F(DaemonTest, OnlyTheNamedRequestsAreCalled) {
  CommitOptions options;
  options.only = {"sp_gem_check"};
  commit(port(2), options);
  EXPECT_THAT(recorder.calls, ElementsAre("sp_gem_check /config/service-port"));
}

TEST_F(DaemonTest, WarningsAreConfirmedTogetherAfterTheLastCall) {
  recorder.results["config_modified_check"] = CONFD_VALIDATION_WARN;
  recorder.results["sp_gem_check"] = CONFD_VALIDATION_WARN;
  std::vector<std::size_t> asked;
  CommitOptions options;
  options.confirm = [&asked](const std::vector<Answer>& warnings) {
    asked.push_back(warnings.size());
    return asked.size() > 1;
  };
  EXPECT_EQ(commit(port(2), options).result, CommitResult::kUnconfirmed);
  EXPECT_EQ(text().find("<id>2</id>"), std::string::npos);
  EXPECT_EQ(commit(port(2), options).result, CommitResult::kAccepted);
  EXPECT_NE(text().find("<id>2</id>"), std::string::npos);
  EXPECT_THAT(asked, ElementsAre(2U, 2U));
}

TEST_F(DaemonTest, WarningsOfARejectedCommitAreNotConfirmed) {
  recorder.results["config_modified_check"] = CONFD_VALIDATION_WARN;
  recorder.results["sp_gem_check"] = CONFD_ERR;
  CommitOptions options;
  options.confirm = [](const std::vector<Answer>&) {
    ADD_FAILURE() << "asked";
    return true;
  };
  EXPECT_EQ(commit(port(2), options).result, CommitResult::kRejected);
}

TEST_F(DaemonTest, AnUnknownResultIsAnError) {
  recorder.results["config_modified_check"] = 7;
  EXPECT_EQ(commit(port(2)).result, CommitResult::kRejected);
}

TEST_F(DaemonTest, ARequestIsPassedUnderItsName) {
  running(port(1));
  store::Transaction transaction(datastore_);
  transaction.prepare();
  const auto answer_to = [&](const std::string& name, const std::string& keypath,
                             const std::optional<std::string>& value = std::nullopt) {
    return daemon_->request(transaction, name, keypath, value, {}).answers.at(0);
  };
  EXPECT_EQ(answer_to("vlan", "/config/service-port{1}").request, "vlan");
  answer_to("", "/config/service-port");
  answer_to("x", "/config/interface/gpon{1 1 9}/upstream-fec", "false");
  EXPECT_THAT(recorder.calls, ElementsAre("vlan /config/service-port{1}", " /config/service-port",
                                          "x /config/interface/gpon{1 1 9}/upstream-fec"));
  EXPECT_EQ(recorder.values["x"], "false");
}

TEST_F(DaemonTest, ARequestOnWhatTheModelDoesNotKnowIsRefused) {
  store::Transaction transaction(datastore_);
  transaction.prepare();
  const auto refuse = [&](const char* keypath, const std::optional<std::string>& value) {
    EXPECT_THROW(daemon_->request(transaction, "x", keypath, value, {}), InputError) << keypath;
  };
  refuse("/config/nowhere", std::nullopt);
  refuse("/config/service-port{1 2}", std::nullopt);
  refuse("/config/service-port{one}", std::nullopt);
  refuse("/config/interface/gpon{1 1 9}/upstream-fec", "perhaps");
  EXPECT_THAT(recorder.calls, IsEmpty());
}

TEST_F(DaemonTest, ThePlugInIsEndedWithTheDaemon) {
  daemon_.reset();
  EXPECT_EQ(recorder.finished, 1);
}

TEST_F(DaemonTest, APlugInThatCannotStartIsReported) {
  recorder.init_result = -1;
  EXPECT_THROW(Daemon(datastore_, plugin()), PluginError);
}

// The shipped model has no such point.
TEST(LeafListPoint, IsCalledWithAllValuesWhileThereAreAny) {
  recorder = Recorder();
  const test::OwnModel model(
      "container config { list l { key k; leaf k { type string; }\n"
      "leaf-list v { type uint8;\n"
      "tailf:validate gpon_validation_check { tailf:opaque v; tailf:dependency '.'; } } } }");
  const store::Schema schema(model.folder());
  store::Datastore datastore(schema);
  PluginEntryPoints plugin{&note_init, &note_point, &note_validate, &note_finish};
  Daemon daemon(datastore, plugin);
  const auto calls_and_value = [&](const std::string& change) {
    recorder.calls.clear();
    store::Transaction transaction(datastore);
    transaction.edit(config("<l><k>a</k>" + change + "</l>"), Format::kXml);
    transaction.prepare();
    std::string seen;
    for (const Answer& answer : daemon.commit(transaction, {}).answers) seen += answer.path + " ";
    for (const std::string& call : recorder.calls) seen += call + " ";
    return recorder.calls.empty() ? seen : seen + recorder.values["v"];
  };
  EXPECT_EQ(calls_and_value("<v>10</v><v>9</v>"), "/config/l{a}/v v /config/l{a}/v 9 10");
  EXPECT_EQ(calls_and_value("<v>8</v>"), "/config/l{a}/v v /config/l{a}/v 8 9 10");
  EXPECT_EQ(calls_and_value("<v>8</v>"), "");
  const auto gone = [](int value) {
    return "<v nc:operation=\"delete\">" + std::to_string(value) + "</v>";
  };
  EXPECT_EQ(calls_and_value(gone(8) + gone(9) + gone(10)), "");
}

TEST(ValidationPointsTest, LowerPrioritiesGoFirstThenTheModelsOrder) {
  const test::OwnModel model(
      "container config {\n"
      "leaf a { type string; tailf:validate p { tailf:opaque late; tailf:priority 2; } }\n"
      "leaf b { type string; tailf:validate p { tailf:opaque first; }\n"
      "         tailf:validate p { tailf:opaque second; }\n"
      "         tailf:validate other { tailf:opaque of-another-plug-in; } }\n"
      "leaf c { type string; tailf:validate p { tailf:opaque early; tailf:priority -1; } } }");
  const store::Schema schema(model.folder());
  std::vector<std::string> requests;
  for (const PointInModel& point : validation_points(schema, "p")) {
    requests.push_back(point.point->request);
  }
  EXPECT_THAT(requests, ElementsAre("early", "first", "second", "late"));
}

TEST(ValidationPointsTest, TheShippedModelHasThoseOfThisPlugInOnly) {
  std::size_t points = 0;
  for (const store::SchemaNode& node : test::model().nodes()) points += node.points.size();
  EXPECT_EQ(validation_points(test::model(), "gpon_validation_check").size(), points);
  EXPECT_THAT(validation_points(test::model(), "another_point"), IsEmpty());
}

TEST(PluginTest, LoadsThePlugIn) {
  const Plugin plugin(GPON_VALID_LIBRARY);
  char name[64];
  EXPECT_EQ(plugin.entry_points().get_validation_point(name, sizeof name), 0);
  EXPECT_STREQ(name, "gpon_validation_check");
}

TEST(PluginTest, ReportsWhatIsWrongWithAFile) {
  const auto refusal = [](const char* file) -> std::string {
    try {
      const Plugin plugin(file);
    } catch (const PluginError& error) {
      return error.what();
    }
    return "";
  };
  EXPECT_EQ(refusal("/no/such/plugin.so"), "there is no plug-in /no/such/plugin.so");
  EXPECT_THAT(refusal("/proc/self/status"),
              testing::StartsWith("cannot load the plug-in /proc/self/status: "));
  EXPECT_EQ(refusal("libc.so.6"), "there is no plug-in libc.so.6");
}

}  // namespace
}  // namespace tarnd
