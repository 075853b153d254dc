// The protocol of one session and of several at one card, without a socket. The plug-in returns
// the results that a test sets.

#include "netconf/session.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "netconf/confirmed_commit.h"
#include "netconf/message.h"
#include "netconf/monitoring.h"
#include "netconf/yang_modules.h"
#include "tests/netconf/session_fixture.h"
#include "tests/support/model.h"

namespace tarnd::netconf {
namespace {

using ::testing::AllOf;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

constexpr const char* kHello10 =
    "<hello xmlns='urn:ietf:params:xml:ns:netconf:base:1.0'><capabilities>"
    "<capability> urn:ietf:params:netconf:base:1.0 </capability></capabilities></hello>]]>]]>";

// Two service ports are there.
class SessionTest : public ServedCardTest {
 protected:
  SessionTest() { datastore_.load(test::config(port("1") + port("2")), store::Format::kXml); }
};

TEST_F(SessionTest, SaysHelloWithItsNumberAndWhatItOffers) {
  EXPECT_THAT(client(7).hello(),
              AllOf(StartsWith("<hello xmlns="), HasSubstr("<session-id>7</session-id>"),
                    HasSubstr("urn:ietf:params:netconf:base:1.1<"),
                    HasSubstr("<capability>urn:tarnd:base?module=base&amp;revision=20")));
}

TEST_F(SessionTest, UsesTheFramingThatBothOffer) {
  Session session(card_, 9, "somebody", kMost);
  session.output().clear();
  session.receive(kHello10 + rpc("<close-session/>") + "]]>]]>");
  while (session.answer_next()) {
  }
  EXPECT_THAT(session.output(), AllOf(StartsWith("<rpc-reply"), EndsWith("</rpc-reply>]]>]]>")));
  EXPECT_TRUE(session.has_ended());
}

TEST_F(SessionTest, EndsAfterAHelloThatIsNone) {
  const std::string base = "xmlns='urn:ietf:params:xml:ns:netconf:base:1.0'";
  for (const std::string& hello : {
           std::string("<hello/>"),
           "<hello " + base + "/>",
           rpc("<get/>"),
           std::string("x"),
           "<hello " + base +
               "><capabilities><capability>urn:ietf:params:netconf:base:1.1</capability>"
               "</capabilities><session-id>1</session-id></hello>",
       }) {
    Session session(card_, 9, "somebody", kMost);
    session.receive(hello + "]]>]]>");
    EXPECT_FALSE(session.answer_next() && !session.has_ended()) << hello;
    EXPECT_TRUE(session.has_ended()) << hello;
  }
}

TEST_F(SessionTest, ReturnsAllAttributesOfAnRpc) {
  EXPECT_THAT(client(1).ask_message(rpc("<commit/>", "message-id='a&lt;' xmlns:x='urn:x' x:y='z'")),
              HasSubstr(" message-id=\"a&lt;\" xmlns:x=\"urn:x\" x:y=\"z\"><ok/>"));
}

TEST_F(SessionTest, RefusesWhatIsNoOperation) {
  struct Row {
    const char* name;
    std::string message;
    const char* tag;
  };
  for (const Row& row : {
           Row{"no message-id", rpc("<commit/>", ""), "missing-attribute"},
           Row{"no operation", rpc(""), "missing-element"},
           Row{"two operations", rpc("<commit/><commit/>"), "unknown-element"},
           Row{"unknown operation", rpc("<nix/>"), "operation-not-supported"},
           Row{"foreign operation", rpc("<commit xmlns='urn:x'/>"), "operation-not-supported"},
           Row{"not offered", rpc("<delete-config/>"), "operation-not-supported"},
           Row{"unknown parameter", rpc("<commit><nix/></commit>"), "unknown-element"},
           Row{"parameter twice", rpc("<lock><target/><target/></lock>"), "bad-element"},
           Row{"missing parameter", rpc("<lock/>"), "missing-element"},
           Row{"no datastore", rpc("<lock><target/></lock>"), "missing-element"},
           Row{"unknown datastore", rpc("<lock><target><startup/></target></lock>"),
               "unknown-element"},
           Row{"wrong test-option",
               rpc("<edit-config><target><running/></target><test-option>nix</test-option><config/>"
                   "</edit-config>"),
               "invalid-value"},
           Row{"wrong error-option",
               rpc("<edit-config><target><running/></target><error-option>nix</error-option>"
                   "<config/></edit-config>"),
               "invalid-value"},
           Row{"a test that continues",
               rpc("<edit-config><target><candidate/></target><test-option>test-only</test-option>"
                   "<error-option>continue-on-error</error-option><config/></edit-config>"),
               "operation-not-supported"},
           Row{"copy to itself",
               rpc("<copy-config><target><candidate/></target><source><candidate/></source>"
                   "</copy-config>"),
               "invalid-value"},
           Row{"copy of running to itself",
               rpc("<copy-config><target><running/></target><source><running/></source>"
                   "</copy-config>"),
               "invalid-value"},
           Row{"copy from a place that is not offered",
               rpc("<copy-config><target><candidate/></target><source><url>file:///x</url></source>"
                   "</copy-config>"),
               "unknown-element"},
           Row{"edit without config",
               rpc("<edit-config><target><candidate/></target></edit-config>"), "missing-element"},
           Row{"other filter", rpc("<get><filter type='regex' select='/'/></get>"),
               "bad-attribute"},
           Row{"expression missing", rpc("<get><filter type='xpath'/></get>"), "missing-attribute"},
           Row{"no such session", rpc("<kill-session><session-id>9</session-id></kill-session>"),
               "invalid-value"},
           Row{"its own session", rpc("<kill-session><session-id>1</session-id></kill-session>"),
               "invalid-value"},
       }) {
    EXPECT_THAT(client(1).ask_message(row.message), IsError(row.tag)) << row.name;
    EXPECT_FALSE(client(1).has_ended()) << row.name;
  }
}

TEST_F(SessionTest, EndsAfterAMessageOrFrameThatCannotBeRead) {
  SessionId id = 1;
  for (const std::string& bytes :
       {framed("<rpc>", Framing::kChunked), framed("<hello/>", Framing::kChunked),
        std::string("\n#0\n"), std::string("\n#999999999\n"), std::string("]]>]]>")}) {
    EXPECT_THAT(client(++id).ask_bytes(bytes), IsError("malformed-message")) << bytes;
    EXPECT_TRUE(client(id).has_ended()) << bytes;
    EXPECT_EQ(client(id).ask("<commit/>"), "none");
  }
}

TEST_F(SessionTest, EditsTheCandidateAndCommitsIt) {
  EXPECT_THAT(client(1).ask(edit(port("3") + port("2", kDelete))), IsOk());
  EXPECT_THAT(client(1).ports("running"), ElementsAre("1", "2"));
  EXPECT_THAT(client(1).ports("candidate"), ElementsAre("1", "3"));
  EXPECT_THAT(client(2).ports("candidate"), ElementsAre("1", "3"));
  EXPECT_THAT(client(1).ask("<validate><source><candidate/></source></validate>"), IsOk());
  EXPECT_THAT(client(1).ports("running"), ElementsAre("1", "2"));
  EXPECT_THAT(client(1).ask("<commit/>"), IsOk());
  EXPECT_THAT(client(1).ports("running"), ElementsAre("1", "3"));
  EXPECT_THAT(client(1).ask(edit(port("4"))), IsOk());
  EXPECT_THAT(client(1).ask("<discard-changes/>"), IsOk());
  EXPECT_THAT(client(1).ports("candidate"), ElementsAre("1", "3"));
  EXPECT_THAT(client(1).ask(edit("")), IsOk());
}

TEST_F(SessionTest, SelectsByXPathOfTheRightDatastore) {
  EXPECT_THAT(client(1).ask(edit(port("3"))), IsOk());
  const std::string filter =
      "<filter type='xpath' xmlns:t='urn:tarnd:base' select='/t:config/t:service-port[t:id>1]'/>";
  const auto selected = [&](const std::string& source) {
    return client(1).ask("<get-config><source><" + source + "/></source>" + filter +
                         "</get-config>");
  };
  EXPECT_THAT(selected("running"), AllOf(HasSubstr("<id>2</id>"), Not(HasSubstr("<id>3</id>"))));
  EXPECT_THAT(selected("candidate"), AllOf(HasSubstr("<id>2</id>"), HasSubstr("<id>3</id>"),
                                           Not(HasSubstr("<id>1</id>"))));
  EXPECT_THAT(client(1).ask("<get>" + filter + "</get>"), HasSubstr("<id>2</id>"));
}

TEST_F(SessionTest, ReportsDefaultsAsTheClientAsks) {
  struct Row {
    const char* name;
    const char* mode;
    const char* filter;
    bool is_reported;
  };
  const std::string link =
      "<interface><gpon><chassis-id>1</chassis-id><slot-id>1</slot-id><port-id>3</port-id>"
      "</gpon></interface>";
  EXPECT_THAT(client(1).ask(edit(link)), IsOk());
  const char* by_value =
      "<filter><config xmlns='urn:tarnd:base'><interface><gpon><upstream-fec>true</upstream-fec>"
      "</gpon></interface></config></filter>";
  const char* by_path = "<filter type='xpath' select='//*[upstream-fec=\"true\"]'/>";
  for (const Row& row : {
           Row{"explicit", "explicit", "", false},
           Row{"trim", "trim", "", false},
           Row{"report-all", "report-all", "", true},
           Row{"tagged", "report-all-tagged", "", true},
           Row{"explicit, by its value", "explicit", by_value, false},
           Row{"report-all, by its value", "report-all", by_value, true},
           Row{"report-all, by path", " report-all ", by_path, true},
       }) {
    const std::string reply = client(1).ask(
        "<get-config><source><candidate/></source>" + std::string(row.filter) +
        "<with-defaults xmlns='urn:ietf:params:xml:ns:yang:ietf-netconf-with-defaults'>" +
        row.mode + "</with-defaults></get-config>");
    EXPECT_THAT(reply, HasSubstr("<data>")) << row.name;
    EXPECT_EQ(reply.find("upstream-fec") != std::string::npos, row.is_reported) << row.name;
  }
  EXPECT_THAT(client(1).ask("<get><with-defaults "
                            "xmlns='urn:ietf:params:xml:ns:yang:ietf-netconf-with-defaults'>nix"
                            "</with-defaults></get>"),
              IsError("invalid-value"));
  EXPECT_THAT(client(1).ask("<get><with-defaults>trim</with-defaults></get>"),
              IsError("unknown-element"));
}

TEST_F(SessionTest, SaysWhatIsWrongWithAnEditAndKeepsTheOnesBefore) {
  struct Row {
    const char* name;
    std::string edit;
    const char* tag;
  };
  EXPECT_THAT(client(1).ask(edit(port("3"))), IsOk());
  for (const Row& row : {
           Row{"unknown node", edit("<nix/>"), "unknown-element"},
           Row{"exists", edit(port("4") + port("1", " nc:operation='create'")), "data-exists"},
           Row{"missing", edit(port("4") + port("9", kDelete)), "data-missing"},
           Row{"not there for none", edit(port("9"), "<default-operation>none</default-operation>"),
               "data-missing"},
           Row{"wrong value", edit(port("4") + port("x")), "invalid-value"},
           Row{"wrong default operation",
               edit(port("4"), "<default-operation>nix</default-operation>"), "invalid-value"},
           Row{"foreign configuration",
               "<edit-config><target><candidate/></target><config><config xmlns='urn:x'/></config>"
               "</edit-config>",
               "unknown-namespace"},
       }) {
    EXPECT_THAT(client(1).ask(row.edit), IsError(row.tag)) << row.name;
    EXPECT_THAT(client(1).ports("candidate"), ElementsAre("1", "2", "3")) << row.name;
  }
}

TEST_F(SessionTest, ReadsAnEditInTheNamespacesAroundIt) {
  const std::string base = "urn:ietf:params:xml:ns:netconf:base:1.0";
  EXPECT_THAT(client(1).ask_message(
                  "<nc:rpc xmlns:nc='" + base +
                  "' xmlns:t='urn:x' xmlns='urn:x' message-id='1'>"
                  "<nc:edit-config xmlns:t='urn:tarnd:base'><nc:target><nc:candidate/></nc:target>"
                  "<nc:config xmlns='urn:tarnd:base'>"
                  "<config><t:service-port><id>3</id></t:service-port>"
                  "<service-port nc:operation='delete'><id>2</id></service-port></config>"
                  "</nc:config></nc:edit-config></nc:rpc>"),
              IsOk());
  EXPECT_THAT(client(1).ports("candidate"), ElementsAre("1", "3"));
}

std::string edit_running(const std::string& content, const std::string& parameters = "") {
  return "<edit-config><target><running/></target>" + parameters + "<config>" +
         test::config(content) + "</config></edit-config>";
}

std::string option(const std::string& name, const std::string& value) {
  return "<" + name + ">" + value + "</" + name + ">";
}

TEST_F(SessionTest, AnEditOfRunningIsACommit) {
  EXPECT_THAT(client(1).ask(edit_running(port("3"))), IsOk());
  EXPECT_THAT(client(1).ports("running"), ElementsAre("1", "2", "3"));
  EXPECT_THAT(client(1).ports("candidate"), ElementsAre("1", "2", "3"));
  EXPECT_THAT(client(2).ask("<lock><target><candidate/></target></lock>"), IsOk());
  EXPECT_THAT(client(1).ask(edit_running(port("4"))), IsError("in-use"));
  EXPECT_THAT(client(2).ask("<unlock><target><candidate/></target></unlock>"), IsOk());
  EXPECT_THAT(client(2).ask(edit(port("5"))), IsOk());
  EXPECT_THAT(client(1).ask(edit_running(port("4"))), IsError("in-use"));
  EXPECT_THAT(client(2).ask("<discard-changes/>"), IsOk());
  EXPECT_THAT(client(2).ask("<lock><target><running/></target></lock>"), IsOk());
  EXPECT_THAT(client(1).ask(edit_running(port("4"))), IsError("in-use"));
  EXPECT_THAT(client(2).ask(edit_running(port("4"))), IsOk());
}

TEST_F(SessionTest, AnEditOfRunningThatIsRefusedChangesNothing) {
  results = {{"sp_gem_check", CONFD_ERR}};
  EXPECT_THAT(client(1).ask(edit_running(port("3"))), IsError("operation-failed"));
  results.clear();
  EXPECT_THAT(client(1).ask(edit_running(port("4") + port("9", kDelete))), IsError("data-missing"));
  for (const char* datastore : {"running", "candidate"}) {
    EXPECT_THAT(client(1).ports(datastore), ElementsAre("1", "2"));
  }
  EXPECT_THAT(client(1).ask("<lock><target><candidate/></target></lock>"), IsOk());
}

TEST_F(SessionTest, TestOptionsSayWhetherAnEditIsTestedAndSet) {
  struct Row {
    const char* name;
    std::string target;
    const char* test_option;
    bool is_accepted;  // by the validators
    bool is_set;
    bool is_ok;
  };
  for (const Row& row : {
           Row{"set", "candidate", "set", false, true, true},
           Row{"test-then-set, refused", "candidate", "test-then-set", false, false, false},
           Row{"test-then-set", "candidate", "test-then-set", true, true, true},
           Row{"test-only, refused", "candidate", "test-only", false, false, false},
           Row{"test-only", "candidate", "test-only", true, false, true},
           Row{"set in running, refused", "running", "set", false, false, false},
           Row{"test-then-set in running", "running", "test-then-set", true, true, true},
           Row{"test-only in running, refused", "running", "test-only", false, false, false},
           Row{"test-only in running", "running", "test-only", true, false, true},
       }) {
    SCOPED_TRACE(row.name);
    if (!row.is_accepted) results = {{"sp_gem_check", CONFD_ERR}};
    const bool in_candidate = row.target == "candidate";
    // The edits before it stay.
    if (in_candidate) {
      EXPECT_THAT(client(1).ask(edit(port("7") + port("2", kDelete))), IsOk());
    }
    const std::string content = port("3") + port("1", kDelete);
    const std::string test = option("test-option", row.test_option);
    const std::string reply =
        client(1).ask(in_candidate ? edit(content, test) : edit_running(content, test));
    EXPECT_THAT(reply, row.is_ok ? ::testing::Matcher<std::string>(IsOk())
                                 : ::testing::Matcher<std::string>(IsError("operation-failed")));
    std::vector<std::string> ports =
        in_candidate ? std::vector<std::string>{"1", "7"} : std::vector<std::string>{"1", "2"};
    if (row.is_set)
      ports =
          in_candidate ? std::vector<std::string>{"3", "7"} : std::vector<std::string>{"2", "3"};
    EXPECT_EQ(client(1).ports(row.target), ports);
    results.clear();
    EXPECT_THAT(client(1).ask("<discard-changes/>"), IsOk());
    if (row.is_set && !in_candidate) {
      EXPECT_THAT(client(1).ask(edit_running(port("1") + port("3", kDelete))), IsOk());
    }
    EXPECT_THAT(client(1).ports("running"), ElementsAre("1", "2"));
  }
}

TEST_F(SessionTest, ErrorOptionsSayWhatAFailedEditLeaves) {
  struct Row {
    const char* option;
    std::vector<std::string> ports;
    std::size_t errors;
  };
  const std::string content =
      port("1", kDelete) + port("2", " nc:operation='create'") + port("3") + port("9", kDelete);
  for (const Row& row : {
           Row{"stop-on-error", {"1", "2"}, 1},
           Row{"rollback-on-error", {"1", "2"}, 1},
           Row{"continue-on-error", {"2", "3"}, 2},
       }) {
    const std::string parameter = option("error-option", row.option);
    for (const char* target : {"candidate", "running"}) {
      SCOPED_TRACE(std::string(row.option) + " in " + target);
      const std::string reply =
          client(1).ask(std::string(target) == "running" ? edit_running(content, parameter)
                                                         : edit(content, parameter));
      EXPECT_THAT(reply, IsError("data-exists"));
      EXPECT_EQ(read_message(reply).children.size(), row.errors);
      EXPECT_EQ(client(1).ports(target), row.ports);
      EXPECT_THAT(client(1).ask("<discard-changes/>"), IsOk());
    }
  }
}

std::string copy(const std::string& target, const std::string& source) {
  return "<copy-config><target><" + target + "/></target><source>" + source +
         "</source></copy-config>";
}

TEST_F(SessionTest, CopiesWholeConfigurations) {
  const std::string whole = "<config>" + test::config(port("5")) + "</config>";
  EXPECT_THAT(client(1).ask(edit(port("3"))), IsOk());
  EXPECT_THAT(client(1).ask(copy("candidate", "<running/>")), IsOk());
  EXPECT_THAT(client(1).ports("candidate"), ElementsAre("1", "2"));
  EXPECT_THAT(client(1).ask(copy("candidate", whole)), IsOk());
  EXPECT_THAT(client(1).ports("running"), ElementsAre("1", "2"));
  EXPECT_THAT(client(1).ports("candidate"), ElementsAre("5"));
  EXPECT_THAT(client(1).ask(copy("running", whole)), IsError("in-use"));
  EXPECT_THAT(client(1).ask(copy("running", "<candidate/>")), IsOk());
  EXPECT_THAT(client(1).ports("running"), ElementsAre("5"));
  EXPECT_THAT(client(1).ask(copy("running", "<config/>")), IsOk());
  EXPECT_THAT(client(1).ports("candidate"), IsEmpty());
  results = {{"sp_gem_check", CONFD_ERR}};
  EXPECT_THAT(client(1).ask(copy("running", whole)), IsError("operation-failed"));
  EXPECT_THAT(client(1).ask(copy("running",
                                 "<config><config xmlns='urn:tarnd:base'><nix/></config>"
                                 "</config>")),
              IsError("unknown-element"));
  for (const char* datastore : {"running", "candidate"}) {
    EXPECT_THAT(client(1).ports(datastore), IsEmpty());
  }
}

TEST_F(SessionTest, ValidatesAConfigurationInTheMessage) {
  const std::string given =
      "<validate><source><config>" + test::config(port("5")) + "</config></source></validate>";
  EXPECT_THAT(client(1).ask(given), IsOk());
  results = {{"sp_gem_check", CONFD_ERR}};
  EXPECT_THAT(client(1).ask(given), IsError("operation-failed"));
  for (const char* datastore : {"running", "candidate"}) {
    EXPECT_THAT(client(1).ports(datastore), ElementsAre("1", "2"));
  }
  EXPECT_THAT(client(1).ask(edit(port("3"))), IsOk());
  EXPECT_THAT(client(1).ask(given), IsError("in-use"));
}

std::string confirmed(const std::string& parameters = "") {
  return "<commit><confirmed/>" + parameters + "</commit>";
}

class ConfirmedCommitTest : public SessionTest {
 protected:
  // Session 1 adds service port 3 by a confirmed commit.
  void commit_confirmed(const std::string& parameters = "") {
    EXPECT_THAT(client(1).ask(edit(port("3"))), IsOk());
    EXPECT_THAT(client(1).ask(confirmed(parameters)), IsOk());
    EXPECT_THAT(client(1).ports("running"), ElementsAre("1", "2", "3"));
  }
  void pass(std::chrono::seconds time) {
    end_late_commit(card_, std::chrono::steady_clock::now() + time);
  }
  void expect_ports(const std::vector<std::string>& ids) {
    EXPECT_EQ(client(9).ports("running"), ids);
    EXPECT_EQ(client(9).ports("candidate"), ids);
  }
  void expect_log(const std::string& text) {
    EXPECT_THAT(log_, ::testing::Contains(HasSubstr(text)));
  }
};

TEST_F(ConfirmedCommitTest, IsTakenBackUnlessItIsConfirmedInTime) {
  commit_confirmed();
  pass(std::chrono::seconds(590));
  expect_ports({"1", "2", "3"});
  pass(std::chrono::seconds(600));
  expect_ports({"1", "2"});
  expect_log("session 1: confirmed commit begins, to be confirmed within 600 s");
  expect_log("confirmed commit taken back: it was not confirmed in time");
  EXPECT_THAT(client(2).ask("<lock><target><candidate/></target></lock>"), IsOk());
}

TEST_F(ConfirmedCommitTest, StaysWhenItIsConfirmed) {
  commit_confirmed(option("confirm-timeout", "5"));
  EXPECT_THAT(client(1).ask(edit(port("4"))), IsOk());
  EXPECT_THAT(client(1).ask("<commit/>"), IsOk());
  pass(std::chrono::seconds(10));
  close(1);
  expect_ports({"1", "2", "3", "4"});
  expect_log("session 1: confirmed commit confirmed");
}

TEST_F(ConfirmedCommitTest, ASecondOneMovesTheTimeAndGoesBackToBeforeTheFirst) {
  commit_confirmed(option("confirm-timeout", "10"));
  EXPECT_THAT(client(1).ask(edit(port("4") + port("1", kDelete))), IsOk());
  EXPECT_THAT(client(1).ask(confirmed(option("confirm-timeout", "100"))), IsOk());
  pass(std::chrono::seconds(50));
  expect_ports({"2", "3", "4"});
  pass(std::chrono::seconds(100));
  expect_ports({"1", "2"});
  expect_log("session 1: confirmed commit goes on, to be confirmed within 100 s");
}

TEST_F(ConfirmedCommitTest, TheEndOfItsSessionTakesItBack) {
  commit_confirmed();
  close(2);
  expect_ports({"1", "2", "3"});
  close(1);
  expect_ports({"1", "2"});
  expect_log("confirmed commit taken back: session 1 ends");
}

TEST_F(ConfirmedCommitTest, CanBeCancelled) {
  commit_confirmed();
  EXPECT_THAT(client(2).ask("<cancel-commit/>"), IsError("in-use"));
  EXPECT_THAT(client(1).ask("<cancel-commit/>"), IsOk());
  expect_ports({"1", "2"});
  expect_log("confirmed commit taken back: session 1 cancelled it");
  EXPECT_THAT(client(1).ask("<cancel-commit/>"), IsError("operation-failed"));
}

TEST_F(ConfirmedCommitTest, WithPersistOutlivesItsSession) {
  const std::string id = option("persist-id", "a b");
  for (const char* end : {"<commit>", "<cancel-commit>"}) {
    commit_confirmed(option("persist", " a b "));
    close(1);
    expect_ports({"1", "2", "3"});
    const std::string name = std::string(end).substr(1);
    EXPECT_THAT(client(2).ask("<" + name + "</" + name), IsError("in-use"));
    EXPECT_THAT(client(2).ask("<" + name + option("persist-id", "other") + "</" + name),
                IsError("invalid-value"));
    EXPECT_THAT(client(2).ask("<lock><target><running/></target></lock>"),
                AllOf(IsError("lock-denied"), HasSubstr("<session-id>0</session-id>")));
    EXPECT_THAT(client(2).ask("<commit><confirmed/>" + option("persist", "a b") + id + "</commit>"),
                IsOk());
    EXPECT_THAT(client(3).ask(std::string("<").append(name).append(id) + "</" + name), IsOk());
    close(2);
    pass(std::chrono::seconds(1000));
    if (std::string(end) == "<commit>") {
      expect_ports({"1", "2", "3"});
      EXPECT_THAT(client(3).ask(edit_running(port("3", kDelete))), IsOk());
    }
    expect_ports({"1", "2"});
  }
}

TEST_F(ConfirmedCommitTest, KeepsTheChangesOfOthersOut) {
  commit_confirmed();
  EXPECT_THAT(client(2).ask("<commit/>"), IsError("in-use"));
  EXPECT_THAT(client(2).ask(confirmed()), IsError("in-use"));
  EXPECT_THAT(client(2).ask(edit_running(port("4"))), IsError("in-use"));
  EXPECT_THAT(client(2).ask(copy("running", "<candidate/>")), IsError("in-use"));
  EXPECT_THAT(client(2).ask("<lock><target><running/></target></lock>"),
              AllOf(IsError("lock-denied"), HasSubstr("<session-id>1</session-id>")));
  EXPECT_THAT(client(2).ask(edit(port("4"))), IsOk());
  EXPECT_THAT(client(2).ask("<discard-changes/>"), IsOk());
  // What its own session does to running goes back, too.
  EXPECT_THAT(client(1).ask(edit_running(port("4"))), IsOk());
  EXPECT_THAT(client(1).ask(copy("running", "<config/>")), IsOk());
  EXPECT_THAT(client(1).ask(copy("running", "<candidate/>")), IsOk());
  EXPECT_THAT(client(1).ask("<cancel-commit/>"), IsOk());
  expect_ports({"1", "2"});
}

TEST_F(ConfirmedCommitTest, ACandidateThatIsEditedKeepsItsContent) {
  commit_confirmed();
  EXPECT_THAT(client(2).ask(edit(port("4"))), IsOk());
  pass(std::chrono::seconds(600));
  EXPECT_THAT(client(2).ports("running"), ElementsAre("1", "2"));
  EXPECT_THAT(client(2).ports("candidate"), ElementsAre("1", "2", "3", "4"));
  EXPECT_THAT(client(2).ask("<commit/>"), IsOk());
  expect_ports({"1", "2", "3", "4"});
}

TEST_F(ConfirmedCommitTest, ARefusedCommitBeginsAndConfirmsNothing) {
  results = {{"sp_gem_check", CONFD_ERR}};
  EXPECT_THAT(client(1).ask(edit(port("3"))), IsOk());
  EXPECT_THAT(client(1).ask(confirmed()), IsError("operation-failed"));
  results.clear();
  EXPECT_THAT(client(2).ask("<cancel-commit/>"), IsError("operation-failed"));
  EXPECT_THAT(client(1).ask(confirmed()), IsOk());
  EXPECT_THAT(client(1).ask(edit(port("4"))), IsOk());
  results = {{"sp_gem_check", CONFD_ERR}};
  EXPECT_THAT(client(1).ask("<commit/>"), IsError("operation-failed"));
  EXPECT_THAT(client(1).ask(confirmed(option("confirm-timeout", "9999"))),
              IsError("operation-failed"));
  results.clear();
  EXPECT_THAT(client(1).ask("<discard-changes/>"), IsOk());
  pass(std::chrono::seconds(600));
  expect_ports({"1", "2"});
}

TEST_F(ConfirmedCommitTest, RefusesWrongParameters) {
  struct Row {
    const char* name;
    std::string operation;
    const char* tag;
  };
  for (const Row& row : {
           Row{"no time", confirmed(option("confirm-timeout", "0")), "invalid-value"},
           Row{"no number", confirmed(option("confirm-timeout", "soon")), "invalid-value"},
           Row{"too long", confirmed(option("confirm-timeout", "4294967296")), "invalid-value"},
           Row{"an empty persist", confirmed("<persist/>"), "invalid-value"},
           Row{"a time for no confirmed commit",
               "<commit>" + option("confirm-timeout", "5") + "</commit>", "missing-element"},
           Row{"persist for no confirmed commit", "<commit>" + option("persist", "5") + "</commit>",
               "missing-element"},
           Row{"nothing has the id", "<commit>" + option("persist-id", "5") + "</commit>",
               "invalid-value"},
           Row{"nothing to cancel has the id",
               "<cancel-commit>" + option("persist-id", "5") + "</cancel-commit>", "invalid-value"},
       }) {
    EXPECT_THAT(client(1).ask(row.operation), IsError(row.tag)) << row.name;
  }
  EXPECT_THAT(client(1).ask(confirmed(option("confirm-timeout", " 4294967295 "))), IsOk());
}

TEST_F(SessionTest, ReportsWhatTheModelMissesWithItsPath) {
  EXPECT_THAT(client(1).ask(edit("<profile><gpon><line-profile><name>p</name><tcont><id>1</id>"
                                 "</tcont></line-profile></gpon></profile>")),
              IsOk());
  EXPECT_THAT(client(1).ask("<commit/>"),
              AllOf(IsError("data-missing"),
                    HasSubstr("/base:line-profile[base:name='p']/base:tcont[base:id='1']<")));
}

TEST_F(SessionTest, ReportsAllVerdictsErrorsFirst) {
  results = {{"service_port_global_validation", CONFD_VALIDATION_WARN},
             {"sp_gem_check", CONFD_ERR}};
  EXPECT_THAT(client(1).ask(edit(port("3"))), IsOk());
  for (const char* operation :
       {"<validate><source><candidate/></source></validate>", "<commit/>"}) {
    const std::string reply = client(1).ask(operation);
    const Element read = read_message(reply);
    ASSERT_EQ(read.children.size(), 2U) << reply;
    EXPECT_THAT(
        reply,
        HasSubstr("<rpc-error><error-type>application</error-type>"
                  "<error-tag>operation-failed</error-tag><error-severity>error</error-severity>"
                  "<error-app-tag>sp_gem_check</error-app-tag>"
                  "<error-path xmlns:base=\"urn:tarnd:base\">/base:config/base:service-port"
                  "</error-path><error-message xml:lang=\"en\">sp_gem_check says &lt;so&gt; &amp; "
                  "more</error-message></rpc-error>"));
    EXPECT_EQ(read.children[1].children.at(2).text, "warning");
    EXPECT_EQ(read.children[1].children.at(3).text, "service_port_global_validation");
  }
  EXPECT_THAT(client(1).ports("running"), ElementsAre("1", "2"));
  results.clear();
  EXPECT_THAT(client(1).ask("<commit/>"), IsOk());
}

TEST_F(SessionTest, TreatsWarningsAsThePolicySays) {
  struct Row {
    WarningPolicy policy;
    const char* severity;
  };
  results = {{"sp_gem_check", CONFD_VALIDATION_WARN}};
  EXPECT_THAT(client(1).ask(edit(port("3"))), IsOk());
  for (const Row& row :
       {Row{WarningPolicy::kReject, "error"}, Row{WarningPolicy::kReport, "warning"}}) {
    card_.warnings = row.policy;
    const std::string reply = client(1).ask("<commit/>");
    EXPECT_THAT(reply, AllOf(HasSubstr("<error-severity>" + std::string(row.severity)),
                             HasSubstr("sp_gem_check says"), Not(HasSubstr("<ok/>"))));
    EXPECT_EQ(reply.find("needs to be confirmed: ") != std::string::npos,
              row.policy == WarningPolicy::kReject);
    EXPECT_THAT(client(1).ports("running"), ElementsAre("1", "2"));
  }
  card_.warnings = WarningPolicy::kAccept;
  log_.clear();
  EXPECT_THAT(client(1).ask("<commit/>"), IsOk());
  EXPECT_THAT(client(1).ports("running"), ElementsAre("1", "2", "3"));
  EXPECT_THAT(log_, ::testing::Contains(HasSubstr("sp_gem_check warns: sp_gem_check says")));
}

TEST_F(SessionTest, AClientChoosesWhatWarningsDoToOneCommit) {
  const auto with = [](const std::string& word) {
    return "<warnings xmlns='urn:gponval:netconf'>" + word + "</warnings>";
  };
  results = {{"sp_gem_check", CONFD_VALIDATION_WARN}};
  EXPECT_THAT(client(1).ask(edit(port("3"))), IsOk());
  EXPECT_THAT(client(1).ask("<commit>" + with("nix") + "</commit>"), IsError("invalid-value"));
  EXPECT_THAT(client(1).ask("<commit><warnings>accept</warnings></commit>"),
              IsError("unknown-element"));
  EXPECT_THAT(client(1).ask("<commit>" + with("reject") + "</commit>"),
              HasSubstr("needs to be confirmed: "));
  EXPECT_THAT(client(1).ask("<commit>" + with("report") + "</commit>"),
              HasSubstr("<error-severity>warning"));
  card_.warnings = WarningPolicy::kReject;
  const std::string candidate = "<source><candidate/></source>";
  EXPECT_THAT(client(1).ask("<validate>" + candidate + "</validate>"),
              HasSubstr("needs to be confirmed: "));
  EXPECT_THAT(client(1).ask("<validate>" + candidate + with(" accept ") + "</validate>"), IsOk());
  EXPECT_THAT(client(1).ports("running"), ElementsAre("1", "2"));
  EXPECT_THAT(client(1).ask("<commit>" + with("accept") + "</commit>"), IsOk());
  EXPECT_THAT(client(1).ports("running"), ElementsAre("1", "2", "3"));
  EXPECT_THAT(client(1).hello(), HasSubstr("urn:gponval:netconf?module=gponval-netconf&amp;"));
}

// The server with the modules of the protocol.
class MonitoringTest : public SessionTest {
 protected:
  MonitoringTest() { card_.modules = &modules(); }

  static const YangModules& modules() {
    static const YangModules all("/usr/share/yuma/modules/ietf", TARND_MODEL_DIR);
    return all;
  }
  std::string schema(const std::string& name, const std::string& more = "") {
    return client(1).ask("<get-schema xmlns='" + std::string(kMonitoringNamespace) +
                         "'><identifier>" + name + "</identifier>" + more + "</get-schema>");
  }
};

TEST_F(MonitoringTest, ReturnsSchemasThatCompile) {
  static std::map<std::string, std::string> texts;  // as a client got them
  for (const YangModule& module : modules().all()) {
    texts[module.name] = read_message(schema(module.name, "<version>" + module.revision +
                                                              "</version>"
                                                              "<format>yang</format>"))
                             .children.at(0)
                             .text;
  }
  for (const char* name : {"base", "tailf-common", "ietf-netconf", "ietf-yang-types",
                           "ietf-yang-library", "gponval-netconf"}) {
    EXPECT_TRUE(texts.contains(name)) << name;
  }
  ly_ctx* made = nullptr;
  ASSERT_EQ(ly_ctx_new(nullptr, LY_CTX_NO_YANGLIBRARY | LY_CTX_DISABLE_SEARCHDIR_CWD, &made),
            LY_SUCCESS);
  const std::unique_ptr<ly_ctx, decltype(&ly_ctx_destroy)> context(made, &ly_ctx_destroy);
  const auto fetched = [](const char* name, const char*, const char*, const char*, void*,
                          LYS_INFORMAT* format, const char** text, auto* free_text) {
    const auto found = texts.find(name);
    if (found == texts.end()) return LY_ENOTFOUND;
    *format = LYS_IN_YANG;
    *text = found->second.c_str();
    *free_text = nullptr;
    return LY_SUCCESS;
  };
  ly_ctx_set_module_imp_clb(made, fetched, nullptr);
  for (const YangModule& module : modules().all()) {
    EXPECT_NE(ly_ctx_load_module(made, module.name.c_str(), nullptr, nullptr), nullptr)
        << module.name;
  }
}

TEST_F(MonitoringTest, RefusesSchemasThatItDoesNotHave) {
  EXPECT_THAT(schema("nix"), IsError("invalid-value"));
  EXPECT_THAT(schema("base", "<version>1999-01-01</version>"), IsError("invalid-value"));
  EXPECT_THAT(schema("base", "<format>yin</format>"), IsError("invalid-value"));
  EXPECT_THAT(schema("base", "<format xmlns:m='urn:m'>m:yang</format>"),
              HasSubstr("module base {"));
  card_.modules = nullptr;
  EXPECT_THAT(schema("base"), IsError("operation-not-supported"));
  EXPECT_THAT(client(2).hello(), AllOf(Not(HasSubstr("monitoring")), Not(HasSubstr("library"))));
  EXPECT_THAT(client(2).ask("<get/>"), Not(HasSubstr("netconf-state")));
}

TEST_F(MonitoringTest, ReportsItsStateBesidesTheConfiguration) {
  EXPECT_THAT(client(4).ask("<lock><target><candidate/></target></lock>"), IsOk());
  EXPECT_THAT(client(4).ask("<unlock><target><running/></target></unlock>"),
              IsError("operation-failed"));
  const std::string all = client(1).ask("<get/>");
  EXPECT_THAT(
      all,
      AllOf(HasSubstr("<config xmlns=\"urn:tarnd:base\">"),
            HasSubstr("<capability>urn:ietf:params:netconf:capability:xpath:1.0</capability>"),
            HasSubstr("<name>candidate</name><locks><global-lock><locked-by-session>4<"),
            HasSubstr("<identifier>base</identifier>"), HasSubstr("<username>somebody</username>"),
            HasSubstr("<in-rpcs>2</in-rpcs><in-bad-rpcs>0</in-bad-rpcs>"
                      "<out-rpc-errors>1</out-rpc-errors>"),
            HasSubstr("<in-sessions>2</in-sessions>"),
            HasSubstr("<module-set-id>" + modules().set_id() + "</module-set-id>")));
  EXPECT_THAT(client(1).ask("<get-config><source><running/></source></get-config>"),
              Not(HasSubstr("netconf-state")));
  EXPECT_THAT(client(1).hello(),
              AllOf(HasSubstr("ietf-netconf-monitoring&amp;revision=2010-10-04"),
                    HasSubstr("yang-library:1.0?revision=2016-06-21&amp;module-set-id=" +
                              modules().set_id())));
}

TEST_F(MonitoringTest, FiltersSelectOfTheState) {
  const std::string state = "xmlns:m='" + std::string(kMonitoringNamespace) + "'";
  const std::string sessions = "<session><session-id>1</session-id>";
  struct Row {
    const char* name;
    std::string filter;
    bool has_sessions;
    bool has_ports;
  };
  client(2);
  for (const Row& row : {
           Row{"subtree",
               "<filter><m:netconf-state " + state + "><m:sessions/></m:netconf-state></filter>",
               true, false},
           Row{"xpath", "<filter type='xpath' " + state + " select='/m:netconf-state/m:sessions'/>",
               true, false},
           Row{"both",
               "<filter type='xpath' select='/config/service-port | /netconf-state/sessions'/>",
               true, true},
           Row{"the configuration",
               "<filter type='xpath' xmlns:t='urn:tarnd:base' select='/t:config'/>", false, true},
           Row{"everything", "<filter type='xpath' select='/'/>", true, true},
       }) {
    const std::string reply = client(1).ask("<get>" + row.filter + "</get>");
    EXPECT_THAT(reply, HasSubstr("<data>")) << row.name;
    EXPECT_EQ(reply.find(sessions) != std::string::npos, row.has_sessions) << row.name << reply;
    EXPECT_EQ(reply.find("<service-port>") != std::string::npos, row.has_ports) << row.name;
  }
  EXPECT_THAT(client(1).ask("<get><filter type='xpath' xmlns:x='urn:x' select='/x:y'/></get>"),
              IsError("invalid-value"));
}

TEST_F(SessionTest, LocksKeepTheOthersOut) {
  const std::string lock = "<lock><target><candidate/></target></lock>";
  const std::string unlock = "<unlock><target><candidate/></target></unlock>";
  EXPECT_THAT(client(1).ask(unlock), IsError("operation-failed"));
  EXPECT_THAT(client(1).ask(lock), IsOk());
  for (const SessionId id : {1, 2}) {
    EXPECT_THAT(client(id).ask(lock),
                AllOf(IsError("lock-denied"), HasSubstr("<session-id>1</session-id>")));
  }
  EXPECT_THAT(client(2).ask(unlock), IsError("operation-failed"));
  EXPECT_THAT(client(2).ask(edit(port("3"))), IsError("in-use"));
  EXPECT_THAT(client(2).ask("<commit/>"), IsError("in-use"));
  EXPECT_THAT(client(2).ask("<discard-changes/>"), IsError("in-use"));
  EXPECT_THAT(client(1).ask(edit(port("3"))), IsOk());
  EXPECT_THAT(client(1).ask(unlock), IsOk());
  EXPECT_THAT(client(2).ask(lock),
              AllOf(IsError("lock-denied"), HasSubstr("<session-id>0</session-id>")));
  EXPECT_THAT(client(2).ask("<commit/>"), IsOk());
}

TEST_F(SessionTest, ALockOfRunningKeepsCommitsOut) {
  EXPECT_THAT(client(1).ask("<lock><target><running/></target></lock>"), IsOk());
  EXPECT_THAT(client(2).ask(edit(port("3"))), IsOk());
  EXPECT_THAT(client(2).ask("<commit/>"), IsError("in-use"));
  close(1);
  EXPECT_THAT(client(2).ask("<commit/>"), IsOk());
}

TEST_F(SessionTest, TheEndOfASessionTakesItsLockAndWhatItEdited) {
  for (const char* end : {"<close-session/>", "none"}) {
    EXPECT_THAT(client(1).ask("<lock><target><candidate/></target></lock>"), IsOk());
    EXPECT_THAT(client(1).ask(edit(port("3"))), IsOk());
    if (std::string(end) != "none") {
      EXPECT_THAT(client(1).ask(end), IsOk());
      EXPECT_TRUE(client(1).has_ended());
    }
    close(1);
    EXPECT_THAT(client(2).ports("candidate"), ElementsAre("1", "2"));
  }
}

TEST_F(SessionTest, KillEndsAnotherSession) {
  client(1);
  EXPECT_THAT(client(2).ask("<kill-session><session-id>1</session-id></kill-session>"), IsOk());
  EXPECT_TRUE(client(1).has_ended());
  EXPECT_EQ(client(1).ask("<commit/>"), "none");
}

}  // namespace
}  // namespace tarnd::netconf
