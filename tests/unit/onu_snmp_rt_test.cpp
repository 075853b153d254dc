#include <array>
#include <stdexcept>
#include <string>
#include <vector>

#include "gpon_onu_snmp_rt_confirm.h"
#include "tests/support/card_fixture.h"
#include "tests/support/platform_in_place.h"
#include "tests/support/recorded_calls.h"
#include "tests/support/trace_capture.h"

namespace tarnd::test {
namespace {

constexpr const char* kRequest = "onu_snmp_rt_warn";
// Returns a text of the test's choice for a count.
constexpr const char* kDescription = "/config/interface/gpon/onu/description";
constexpr const char* kAccessFailed = "Failed accessing confd data.";

std::string warning(int onus) {
  return "There are " + std::to_string(onus) +
         " ONUs with real-time SNMP monitoring enabled. Recommended number is 128. This might "
         "cause performance impacts. Do you want to proceed?";
}

std::string real_time(const std::string& op = "") {
  return element("snmp", element("real-time", "", op));
}

std::string monitored_onus(int count) {
  std::string text;
  for (int id = 1; id <= count; ++id) {
    text += onu(id, real_time());
  }
  return text;
}

/// ONUs with number 1000 and up are not monitored.
std::string card(int gpon_onus, int xgspon_onus) {
  return gpon_link(1, monitored_onus(gpon_onus) + onu(1000)) +
         xgspon_link(2, monitored_onus(xgspon_onus) + onu(1000));
}

class OnuSnmpRtWarn : public CardFixture {
 protected:
  Answer check() { return request(kRequest, "/config/interface/gpon{1 1 1}/onu"); }

  /// Opens a transaction in which kDescription yields the text.
  void describe(const std::string& text) {
    running(gpon_link(1, onu(1, element("description", text))));
    open();
  }

  int count(const std::string& xpath, int& result) {
    return get_onu_snmp_rt_count(sock(), tctx(), xpath, result);
  }
};

TEST_F(OnuSnmpRtWarn, MoreThan128OnusOfBothKindsWarn) {
  struct Row {
    int gpon;
    int xgspon;
    bool warns;
  };
  const std::array<Row, 8> rows{{
      {0, 0, false},
      {100, 28, false},
      {128, 0, false},
      {0, 128, false},
      {129, 0, true},
      {0, 129, true},
      {65, 64, true},
      {200, 100, true},
  }};
  for (const Row& row : rows) {
    running(card(row.gpon, row.xgspon));
    const Answer answer = check();
    EXPECT_EQ(answer.result, row.warns ? Verdict::kWarning : Verdict::kOk)
        << row.gpon << "+" << row.xgspon;
    EXPECT_EQ(answer.text, row.warns ? warning(row.gpon + row.xgspon) : "");
  }
}

TEST_F(OnuSnmpRtWarn, TheChangeThatCrossesTheLimitWarns) {
  running(card(128, 0));
  EXPECT_EQ(answer_of(kRequest, xgspon_link(2, onu(1, real_time()))).text, warning(129));
}

TEST_F(OnuSnmpRtWarn, DisablingOneStillWarnsWhileTooManyRemain) {
  running(card(130, 0));
  const Answer answer = answer_of(kRequest, gpon_link(1, onu(1, real_time("delete"))));
  EXPECT_EQ(answer.result, Verdict::kWarning);
  EXPECT_EQ(answer.text, warning(129));
}

TEST_F(OnuSnmpRtWarn, ACardWithoutLinksIsAccepted) {
  running("");
  EXPECT_EQ(check().result, Verdict::kOk);
}

TEST_F(OnuSnmpRtWarn, TwoEvaluationsAreAllThatIsRead) {
  running(card(100, 100));
  const RecordedCalls recorded;
  check();
  EXPECT_EQ(recorded.names(),
            (std::vector<std::string>{"qzconfd_maapi_socket_get", "maapi_xpath_eval_expr",
                                      "maapi_xpath_eval_expr", "confd_trans_seterr"}));
}

TEST_F(OnuSnmpRtWarn, AFailedEvaluationIsRejected) {
  struct Row {
    int failing;
    std::uint64_t evaluations;
    const char* record;
  };
  running(card(129, 0));
  const std::array<Row, 2> rows{{
      {1, 1, "There was an error checking how many GPON ONUs have SNMP real-time enabled."},
      {2, 2, "There was an error checking how many XGSPON ONUs have SNMP real-time enabled."},
  }};
  for (const Row& row : rows) {
    const std::uint64_t before = calls(PlatformCall::maapi_xpath_eval_expr);
    fail_call(PlatformCall::maapi_xpath_eval_expr, row.failing);
    TraceCapture trace(TraceLevel::kFlow);
    const Answer answer = check();
    EXPECT_EQ(answer.result, Verdict::kError) << row.failing;
    EXPECT_EQ(answer.text, kAccessFailed) << row.failing;
    EXPECT_EQ(calls(PlatformCall::maapi_xpath_eval_expr) - before, row.evaluations);
    EXPECT_TRUE(trace.has(row.record)) << row.failing;
    EXPECT_TRUE(trace.has(") evaluating onus snmp real-time xpath."));
    EXPECT_TRUE(trace.has("onu_snmp_rt_confirmation end - ERROR - elapsed time "));
  }
}

TEST_F(OnuSnmpRtWarn, ACountThatIsNoNumberIsRejected) {
  const InPlace in_place;
  running(card(129, 0));
  InPlace::xpath = {CONFD_OK, "many"};
  TraceCapture trace(TraceLevel::kFlow);
  const Answer answer = check();
  EXPECT_EQ(answer.result, Verdict::kError);
  EXPECT_EQ(answer.text, kAccessFailed);
  EXPECT_TRUE(trace.has(" (stoi) retrieving the number of onus with snmp real-time."));
  EXPECT_TRUE(trace.has_record(
      "FLOW", "There was an error checking how many GPON ONUs have SNMP real-time enabled."));
}

TEST_F(OnuSnmpRtWarn, TheTraceShowsTheDecision) {
  running(card(129, 0));
  {
    TraceCapture trace(TraceLevel::kFlow);
    check();
    EXPECT_TRUE(trace.has_record("FLOW", "onu_snmp_rt_confirmation begin"));
    EXPECT_TRUE(trace.has_record("FLOW", "129 ONUs with real-time enabled. Show warning message."));
    EXPECT_TRUE(trace.has_record("FLOW", warning(129)));
    EXPECT_TRUE(trace.has("onu_snmp_rt_confirmation end - WARNING - elapsed time "));
  }
  running(card(7, 2));
  TraceCapture trace(TraceLevel::kDetail);
  check();
  EXPECT_TRUE(
      trace.has_record("DETAIL", "9 ONUs with real-time enabled. Don't show warning message."));
}

// ---- The count

TEST_F(OnuSnmpRtWarn, ACountIsTheNumberThatTheExpressionReturns) {
  running(card(3, 2));
  open();
  struct Row {
    const char* xpath;
    int count;
  };
  const std::array<Row, 3> rows{{
      {"count(/config/interface/gpon/onu/snmp/real-time)", 3},
      {"count(/config/interface/xgspon/onu/snmp/real-time)", 2},
      {"count(/config/service-port)", 0},
  }};
  for (const Row& row : rows) {
    int result = -7;
    EXPECT_EQ(count(row.xpath, result), 0) << row.xpath;
    EXPECT_EQ(result, row.count) << row.xpath;
  }
}

TEST_F(OnuSnmpRtWarn, ATextWithoutDigitsFails) {
  TraceCapture trace(TraceLevel::kFlow);
  for (const char* const text : {"many", "", "-"}) {
    describe(text);
    int result = -7;
    EXPECT_EQ(count(kDescription, result), -1) << text;
    EXPECT_EQ(result, 0) << text;
  }
  EXPECT_EQ(trace.count(" (stoi) retrieving the number of onus with snmp real-time."), 3);
}

TEST_F(OnuSnmpRtWarn, WhatFollowsTheDigitsIsIgnored) {
  describe("12 or so");
  int result = -7;
  EXPECT_EQ(count(kDescription, result), 0);
  EXPECT_EQ(result, 12);
}

TEST_F(OnuSnmpRtWarn, AFailedEvaluationCountsNone) {
  running(card(3, 0));
  open();
  fail_call(PlatformCall::maapi_xpath_eval_expr);
  int result = -7;
  EXPECT_EQ(count("count(/config/interface/gpon/onu)", result), -1);
  EXPECT_EQ(result, 0);
}

TEST_F(OnuSnmpRtWarn, AnEvaluationNeedsBothItsResultAndItsText) {
  const InPlace in_place;
  open();
  const std::array<InPlace::Xpath, 3> answers{
      {{CONFD_OK, std::nullopt}, {CONFD_ERR, "7"}, {CONFD_EOF, "7"}}};
  for (const InPlace::Xpath& answer : answers) {
    InPlace::xpath = answer;
    TraceCapture trace(TraceLevel::kFlow);
    int result = -7;
    EXPECT_EQ(count("count(/config/interface/gpon/onu)", result), -1) << answer.result;
    EXPECT_EQ(result, 0) << answer.result;
    EXPECT_TRUE(trace.has(") evaluating onus snmp real-time xpath.")) << answer.result;
  }
}

TEST_F(OnuSnmpRtWarn, ANumberBeyondIntIsNotHandledHere) {
  describe("2147483648");
  int result = -7;
  EXPECT_THROW(count(kDescription, result), std::out_of_range);
  EXPECT_EQ(result, 0);
}

}  // namespace
}  // namespace tarnd::test
