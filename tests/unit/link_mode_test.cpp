#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "gpon_link_mode_validation.h"
#include "tests/support/card_fixture.h"
#include "tests/support/platform_in_place.h"
#include "tests/support/recorded_calls.h"
#include "tests/support/trace_capture.h"

// Last, for its macros.
#include "tests/support/keypaths.h"

namespace tarnd::test {
namespace {

constexpr const char* kRequest = "pon_mode_validation";
constexpr const char* kMode3 = "/config/interface/xgspon{1 1 3}/operation-mode";

std::string mode(const std::string& name) {
  return element("operation-mode", name);
}

std::string refusal(const std::string& pon, const std::string& mode_name) {
  return "It's not possible to change the operation mode of PON " + pon + " to " + mode_name +
         ". Please remove all ONUs associated with it before.\n";
}

std::string notice(const std::string& pon, const std::string& mode_name) {
  return "WARNING: " + mode_name + " mode configured for all ONUs belonging to PON " + pon +
         ". Only ONUs operating in this mode will work properly.\n";
}

confd_hkeypath_t mode_keypath(std::uint32_t chassis, std::uint32_t slot, std::uint32_t port) {
  return link_child_keypath(base_operation_mode, base_xgspon, chassis, slot, port);
}

class PonModeValidation : public CardFixture {};

TEST_F(PonModeValidation, AnEmptyLinkChangesWithANoticeToTheUser) {
  for (const std::string name : {"gpon", "combo"}) {
    running(xgspon_link(3));
    const CommitReport report = commit(xgspon_link(3, mode(name)), {kRequest});
    EXPECT_EQ(report.result, CommitResult::kAccepted);
    ASSERT_EQ(report.answers.size(), 1U);
    EXPECT_EQ(report.answers.front().result, Verdict::kOk);
    EXPECT_EQ(report.answers.front().text, "");
    EXPECT_EQ(report.messages, std::vector<std::string>{notice("1 1 3", name)});
  }
}

TEST_F(PonModeValidation, BackToTheDefaultIsAChangeToXgspon) {
  running(xgspon_link(3, mode("combo")));
  const CommitReport report =
      commit(xgspon_link(3, element("operation-mode", "", "delete")), {kRequest});
  EXPECT_EQ(report.messages, std::vector<std::string>{notice("1 1 3", "xgspon")});
}

TEST_F(PonModeValidation, ALinkWithOnusKeepsItsMode) {
  running(xgspon_link(3, onu(1)));
  for (const std::string name : {"gpon", "combo"}) {
    const CommitReport report = commit(xgspon_link(3, mode(name)), {kRequest});
    EXPECT_EQ(report.result, CommitResult::kRejected);
    ASSERT_EQ(report.answers.size(), 1U);
    EXPECT_EQ(report.answers.front().result, Verdict::kError);
    EXPECT_EQ(report.answers.front().text, refusal("1 1 3", name));
    EXPECT_TRUE(report.messages.empty());
  }
}

TEST_F(PonModeValidation, TheSameModeIsRefusedLikeAnyOther) {
  running(xgspon_link(3, onu(1)));
  const Answer answer = request(kRequest, kMode3, "", "xgspon");
  EXPECT_EQ(answer.result, Verdict::kError);
  EXPECT_EQ(answer.text, refusal("1 1 3", "xgspon"));
}

TEST_F(PonModeValidation, TheOnusThatTheTransactionLeavesCount) {
  running(xgspon_link(3, onu(1)));
  EXPECT_EQ(answer_of(kRequest, xgspon_link(3, mode("combo") + onu(1, "", "delete"))).result,
            Verdict::kOk);
  running(xgspon_link(3));
  EXPECT_EQ(answer_of(kRequest, xgspon_link(3, mode("combo") + onu(1))).text,
            refusal("1 1 3", "combo"));
}

TEST_F(PonModeValidation, OnusOfOtherLinksDoNotCount) {
  running(xgspon_link(3) + xgspon_link(4, onu(1)) + gpon_link(3, onu(1)));
  EXPECT_EQ(answer_of(kRequest, xgspon_link(3, mode("gpon"))).result, Verdict::kOk);
}

TEST_F(PonModeValidation, ANumberOfOnusThatCannotBeReadRefusesLikeAnyOther) {
  running(xgspon_link(3));
  fail_call(PlatformCall::maapi_num_instances);
  const CommitReport report = commit(xgspon_link(3, mode("gpon")), {kRequest});
  ASSERT_EQ(report.answers.size(), 1U);
  EXPECT_EQ(report.answers.front().result, Verdict::kError);
  EXPECT_EQ(report.answers.front().text, refusal("1 1 3", "gpon"));
  EXPECT_TRUE(report.messages.empty());
}

TEST_F(PonModeValidation, ANoticeThatCannotBeSentRejectsNothing) {
  running(xgspon_link(3));
  fail_call(PlatformCall::maapi_prio_message);
  EXPECT_EQ(answer_of(kRequest, xgspon_link(3, mode("gpon"))).result, Verdict::kOk);
}

TEST_F(PonModeValidation, TheNoticeGoesToTheUserOfTheTransactionOnly) {
  running(xgspon_link(3));
  ValidationSession& session = open();
  confd_hkeypath_t keypath = mode_keypath(1, 1, 3);
  confd_value_t combo = enumeration(2);
  EXPECT_EQ(pon_mode_validation(sock(), tctx(), &keypath, &combo), CONFD_OK);
  EXPECT_EQ(session.messages(), std::vector<std::string>{notice("1 1 3", "combo")});

  confd_user_info stranger{tctx()->uinfo->usid + 1};
  confd_trans_ctx of_stranger = *tctx();
  of_stranger.uinfo = &stranger;
  EXPECT_EQ(pon_mode_validation(sock(), &of_stranger, &keypath, &combo), CONFD_OK);
  EXPECT_EQ(session.messages().size(), 1U);
}

TEST_F(PonModeValidation, AModeOutsideTheModelHasAnEmptyName) {
  running(xgspon_link(3) + xgspon_link(4, onu(1)));
  for (const std::int32_t number : {-1, 3}) {
    ValidationSession& session = open();
    confd_hkeypath_t keypath = mode_keypath(1, 1, 3);
    confd_value_t unknown = enumeration(number);
    EXPECT_EQ(pon_mode_validation(sock(), tctx(), &keypath, &unknown), CONFD_OK);
    EXPECT_EQ(session.messages(), std::vector<std::string>{notice("1 1 3", "")});

    confd_hkeypath_t with_onus = mode_keypath(1, 1, 4);
    EXPECT_EQ(pon_mode_validation(sock(), tctx(), &with_onus, &unknown), CONFD_ERR);
    EXPECT_EQ(session.error_text(), refusal("1 1 4", ""));
  }
}

TEST_F(PonModeValidation, KeysAreUnsignedNumbers) {
  ValidationSession& session = open();
  confd_hkeypath_t keypath = mode_keypath(4294967295U, 2, 3000000000U);
  confd_value_t gpon = enumeration(0);
  EXPECT_EQ(pon_mode_validation(sock(), tctx(), &keypath, &gpon), CONFD_OK);
  EXPECT_EQ(session.messages(),
            std::vector<std::string>{notice("4294967295 2 3000000000", "gpon")});
}

TEST_F(PonModeValidation, TheTraceShowsKeypathAndOnusAndHasNoBracket) {
  running(xgspon_link(3, onu(1) + onu(2)));
  TraceCapture trace(TraceLevel::kDetail);
  answer_of(kRequest, xgspon_link(3, mode("combo")));
  ASSERT_EQ(trace.records().size(), 2U);
  EXPECT_EQ(trace.count("DETAIL pon_mode_validation src/validation/gpon_link_mode_validation.cpp:"),
            2);
  EXPECT_TRUE(trace.has(std::string("Keypath: ") + kMode3));
  EXPECT_TRUE(trace.has("There are 2 ONUS associated with Pon Link 1 1 3"));
}

TEST_F(PonModeValidation, ThePlatformIsCalledInOrder) {
  using Names = std::vector<std::string>;
  running(xgspon_link(3) + xgspon_link(4, onu(1)));
  {
    const RecordedCalls recorded;
    request(kRequest, kMode3, "", "combo");
    EXPECT_EQ(recorded.names(),
              (Names{"qzconfd_maapi_socket_get", "maapi_num_instances", "maapi_prio_message"}));
  }
  const RecordedCalls recorded;
  request(kRequest, "/config/interface/xgspon{1 1 4}/operation-mode", "", "combo");
  EXPECT_EQ(recorded.names(),
            (Names{"qzconfd_maapi_socket_get", "maapi_num_instances", "confd_trans_seterr"}));
}

TEST_F(PonModeValidation, TheNoticeGoesToTheSessionByItsSignedNumber) {
  const InPlace in_place;
  running(xgspon_link(3));
  open();
  confd_hkeypath_t keypath = mode_keypath(1, 1, 3);
  confd_value_t combo = enumeration(2);
  for (const int number : {7, 0, -5}) {
    confd_user_info user{number};
    confd_trans_ctx of_user = *tctx();
    of_user.uinfo = &user;
    EXPECT_EQ(pon_mode_validation(sock(), &of_user, &keypath, &combo), CONFD_OK);
    EXPECT_EQ(InPlace::message_to, std::to_string(number));
  }
}

TEST_F(PonModeValidation, NoKeypathIsPrintedForATraceThatIsOff) {
  running(xgspon_link(3));
  answer_of(kRequest, xgspon_link(3, mode("combo")));
  EXPECT_EQ(calls(PlatformCall::confd_pp_kpath), 0U);
}

using PonModeValidationDeathTest = PonModeValidation;

TEST_F(PonModeValidationDeathTest, KeysThatAreNoNumbersEndTheProcess) {
  open();
  confd_value_t gpon = enumeration(0);
  const std::array<std::string, 3> assertions{
      R"(\(&keypath->v\[1\]\[0\]\)->type == C_UINT32)",
      R"(\(&keypath->v\[1\]\[1\]\)->type == C_UINT32)",
      R"(\(&keypath->v\[1\]\[2\]\)->type == C_UINT32)",
  };
  for (std::size_t key = 0; key < assertions.size(); ++key) {
    confd_hkeypath_t keypath = mode_keypath(1, 1, 3);
    CONFD_SET_NOEXISTS(&keypath.v[1][key]);
    EXPECT_DEATH(pon_mode_validation(sock(), tctx(), &keypath, &gpon), assertions.at(key));
  }
}

TEST_F(PonModeValidationDeathTest, TheRecordComesFirstThenTheKeysThenTheMode) {
  open();
  confd_value_t number;
  CONFD_SET_UINT32(&number, 1);
  start_trace(TraceLevel::kDetail);
  confd_hkeypath_t keypath = mode_keypath(1, 1, 3);
  for (const int key : {2, 1, 0}) {
    CONFD_SET_NOEXISTS(&keypath.v[1][key]);
    EXPECT_DEATH(pon_mode_validation(sock(), tctx(), &keypath, &number),
                 " Keypath: /config/interface/xgspon(.|\n)*\\(&keypath->v\\[1\\]\\[" +
                     std::to_string(key) + "\\]\\)->type == C_UINT32");
  }
  start_trace(TraceLevel::kOff);
}

TEST_F(PonModeValidationDeathTest, ANewValueThatIsNoModeEndsTheProcess) {
  open();
  confd_hkeypath_t keypath = mode_keypath(1, 1, 3);
  confd_value_t number;
  CONFD_SET_UINT32(&number, 1);
  EXPECT_DEATH(pon_mode_validation(sock(), tctx(), &keypath, &number),
               "\\(newMode\\)->type == C_ENUM_VALUE");
}

}  // namespace
}  // namespace tarnd::test
