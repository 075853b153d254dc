// XPath expressions on the transaction.

#include "tests/standalone/confd_test.h"

namespace tarnd::test {
namespace {

class ConfdXPath : public ConfdTest {
 protected:
  // The expression's text, or "error".
  std::string evaluated(const char* expression, const char* context = nullptr) {
    char unset = 'x';
    char* result = &unset;
    const int code =
        context == nullptr
            ? maapi_xpath_eval_expr(sock(), th(), expression, &result, nullptr, nullptr)
            : maapi_xpath_eval_expr(sock(), th(), expression, &result, nullptr, "%s", context);
    if (code != CONFD_OK) {
      EXPECT_EQ(code, CONFD_ERR);
      EXPECT_EQ(result, nullptr);
      return "error";
    }
    std::string text = result;
    std::free(result);
    return text;
  }
};

TEST_F(ConfdXPath, CountsNodes) {
  open();
  const struct {
    const char* expression;
    const char* text;
  } cases[] = {
      {"count(/config/interface/gpon/onu)", "3"},
      {"count(/config/interface/gpon/onu/profile-references[line-profile='fast'])", "1"},
      {"count(/config/interface/gpon/onu/profile-references[line-profile='none'])", "0"},
      {"count(/config/interface/xgspon/onu/snmp/real-time)", "0"},
      {"count(/base:config/base:service-port)", "2"},
      {" count ( //onu[id > 8] ) ", "3"},  // two of a link, one of a service port
      {"count(/config/service-port[gpon/id='1/1/3'])", "1"},
      {"count(/config/interface/gpon[port-id=3]/onu/../onu)", "2"},
      {"count(/config/nothing)", "0"},
  };
  for (const auto& c : cases) EXPECT_EQ(evaluated(c.expression), c.text) << c.expression;
}

TEST_F(ConfdXPath, ConditionsOnNothingNameNothing) {
  running("");
  open();
  EXPECT_EQ(evaluated("/config/interface/gpon[chassis-id=1 and slot-id=1]/onu"), "");
  EXPECT_EQ(evaluated("/config/interface/gpon[chassis-id=1 and slot-id=1]"), "");
  EXPECT_EQ(evaluated("count(/config/interface/gpon[chassis-id=1 or slot-id=1]/onu)"), "0");
  EXPECT_EQ(evaluated("count(/config/interface/gpon[port-id=1]/onu[id=1 and id=2]/pots)"), "0");
  EXPECT_EQ(evaluated("count(/config/interface/gpon[chassis-id=1 and]/onu)"), "error");
  EXPECT_EQ(evaluated("count(/config/interface/gpon[port-id='a'b' and slot-id=1]/onu)"), "error");
  EXPECT_EQ(evaluated("/config/interface/gpon[chassis-id=1 and slot-id=1]/onu + 1"), "error");
}

// "and" and "or" also work for lists without entries.
TEST_F(ConfdXPath, ConditionsMayBeCombined) {
  const struct {
    const char* condition;
    const char* gpon;
  } cases[] = {
      {"chassis-id=1 and slot-id=1", "2"},
      {"chassis-id=1 and slot-id=1 and port-id=12", "1"},
      {"port-id=12 or port-id = 3", "2"},
      {"port-id=12 and slot-id=2 or port-id=3", "1"},
      {"port-id=12 and (slot-id=2 or port-id=3)", "0"},
      {"not(port-id=12 or onu/rg-profile='a and b')", "1"},
      {"onu[id=9 and profile-references/line-profile='slow']", "1"},
      {"position()=2 and port-id=12", "1"},
      {"onu and nothing", "0"},
  };
  open();
  for (const auto& c : cases) {
    const std::string condition = "[" + std::string(c.condition) + "]";
    EXPECT_EQ(evaluated(("count(/config/interface/gpon" + condition + ")").c_str()), c.gpon)
        << c.condition;
    EXPECT_EQ(evaluated(("count(/config/interface/xgspon" + condition + "/onu)").c_str()), "0")
        << c.condition;
    EXPECT_EQ(evaluated(("/config/interface/xgspon" + condition).c_str()), "") << c.condition;
  }
}

TEST_F(ConfdXPath, SeesTheTransaction) {
  open(gpon_link(12, onu(1, "", "delete")) + gpon_link(12, onu(5, uses_line("fast"))) +
       gpon_link(12, onu(6, uses_line("fast"))));
  EXPECT_EQ(evaluated("count(/config/interface/gpon/onu)"), "4");
  EXPECT_EQ(evaluated("count(/config/interface/gpon/onu/profile-references[line-profile='fast'])"),
            "3");
}

TEST_F(ConfdXPath, NodeSetsGiveTheTextOfTheirFirstNode) {
  open(gpon_link(3, onu(1, uses_line("first"))));
  EXPECT_EQ(evaluated("/config/interface/gpon/onu/profile-references/line-profile"), "first");
  EXPECT_EQ(evaluated("/config/service-port[id=100]/xgspon/id"), "1/1/5");
  EXPECT_EQ(evaluated("/config/service-port[id=9]/xgspon/id"), "");
  EXPECT_EQ(evaluated("/config/service-port[id=100]/xgspon"), "1/1/52");
}

TEST_F(ConfdXPath, TruthValuesAreWords) {
  open();
  EXPECT_EQ(evaluated("/config/service-port/id = 7"), "true");
  EXPECT_EQ(evaluated("/config/service-port/id = 8"), "false");
  EXPECT_EQ(evaluated("count(/config/service-port) = 2 and true()"), "true");
  EXPECT_EQ(evaluated("count(/config/service-port) = 2 and false()"), "false");
  EXPECT_EQ(evaluated("not(/config/interface)"), "false");
}

TEST_F(ConfdXPath, OtherResultsAreErrorsAndNeverAWrongNumber) {
  open();
  for (const char* expression :
       {"5", "1", "0", "'text'", "'true'", "count(/config/service-port) + 1",
        "count(/config/service-port) + count(/config/service-port)", "string(/config)", "count(5)",
        "count('x')", "sum(/config/service-port/id)", "count(/)", "count(/config/..)",
        "count(current())", "count(/config | /)"}) {
    EXPECT_EQ(evaluated(expression), "error") << expression;
    expect_error(CONFD_ERR_XPATH);
  }
}

TEST_F(ConfdXPath, MalformedExpressionsAreErrors) {
  open();
  for (const char* expression :
       {"", "count(", "count()", "count(/config/interface/gpon/onu[rg-profile='it's'])",
        "/config/[", "/config[1=1 and]", "/config[and 1=1 or]", "/config and) or (1",
        "/config[1=1 and 2=2)", "/config and 'open", "nonsense(1)", "count(/config",
        "'true') = 1 or (1"}) {
    EXPECT_EQ(evaluated(expression), "error") << expression;
    expect_error(CONFD_ERR_XPATH);
  }
}

TEST_F(ConfdXPath, RelativeExpressionsStartAtTheContextNode) {
  open();
  EXPECT_EQ(evaluated("count(config/interface/gpon)"), "2");
  EXPECT_EQ(evaluated("count(config) = 1"), "true");
  EXPECT_EQ(evaluated("count(onu)", "/config/interface/gpon{1 1 3}"), "2");
  EXPECT_EQ(evaluated("upstream-fec", "/config/interface/gpon{1 1 3}"), "false");
  EXPECT_EQ(evaluated("count(onu) = 2", "/config/interface/gpon{1 1 3}"), "true");
  EXPECT_EQ(evaluated("count(onu)", "/config/interface/gpon{1 1 4}"), "error");
  expect_error(CONFD_ERR_NOEXISTS);
  EXPECT_EQ(evaluated("count(onu)", "/config/nothing"), "error");
  expect_error(CONFD_ERR_BADPATH);
}

TEST_F(ConfdXPath, WithoutAnAnswerThereIsNoText) {
  open();
  fail_call(PlatformCall::maapi_xpath_eval_expr);
  EXPECT_EQ(evaluated("count(/config)"), "error");
  expect_error(CONFD_ERR_UNAVAILABLE);
  EXPECT_EQ(evaluated("count(/config)"), "1");
}

}  // namespace
}  // namespace tarnd::test
