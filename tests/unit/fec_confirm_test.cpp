#include <gmock/gmock.h>

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "gpon_ponlink_fec_confirm.h"
#include "tests/support/card_fixture.h"
#include "tests/support/platform_in_place.h"
#include "tests/support/recorded_calls.h"
#include "tests/support/trace_capture.h"

// Last, for its macros.
#include "tests/support/keypaths.h"

namespace tarnd::test {
namespace {

constexpr const char* kRequest = "fec_confirmation_warning";
constexpr const char* kWarning =
    "The change in FEC configuration will result in temporary data loss for all users of this PON "
    "link.";
constexpr const char* kUnreadable = "Failed accessing confd data.";
constexpr const char* kLeaf = "/config/interface/gpon{1 1 3}/downstream-fec";

std::string downstream(const std::string& value) {
  return element("downstream-fec", value);
}

std::string upstream(const std::string& value) {
  return element("upstream-fec", value);
}

confd_hkeypath_t fec_keypath(std::uint32_t leaf, std::uint32_t list, std::uint32_t slot,
                             std::uint32_t port) {
  return link_child_keypath(leaf, list, 1, slot, port);
}

class FecConfirmationWarning : public CardFixture {
 protected:
  // The default of both leaves is true.
  FecConfirmationWarning() {
    running(gpon_link(3) + gpon_link(4, downstream("false") + upstream("false")) + xgspon_link(3));
  }

  Answer answer_for(const std::string& change) { return answer_of(kRequest, change); }

  // Every session that somebody tried to start was ended.
  void TearDown() override {
    EXPECT_EQ(calls(PlatformCall::qzconfd_config_session_end),
              calls(PlatformCall::qzconfd_config_session_start));
  }

  // The answer to a request on the keypath itself, with the new value "false".
  std::int32_t answer_to(confd_hkeypath_t keypath) {
    confd_value_t value;
    CONFD_SET_BOOL(&value, 0);
    return ponlink_fec_confirmation(sock(), tctx(), &keypath, &value);
  }
};

TEST_F(FecConfirmationWarning, AChangeOfEitherLeafAsksTheUser) {
  EXPECT_THAT(answer_for(gpon_link(3, downstream("false"))), AsksToConfirm(kWarning));
  EXPECT_THAT(answer_for(gpon_link(3, upstream("false"))), AsksToConfirm(kWarning));
  EXPECT_THAT(answer_for(gpon_link(4, downstream("true"))), AsksToConfirm(kWarning));
  EXPECT_THAT(answer_for(gpon_link(4, upstream("true"))), AsksToConfirm(kWarning));
  EXPECT_THAT(answer_for(xgspon_link(3, downstream("false"))), AsksToConfirm(kWarning));
  EXPECT_THAT(answer_for(xgspon_link(3, upstream("false"))), AsksToConfirm(kWarning));
}

TEST_F(FecConfirmationWarning, BackToTheDefaultIsAChange) {
  EXPECT_THAT(answer_for(gpon_link(4, element("downstream-fec", "", "delete"))),
              AsksToConfirm(kWarning));
}

TEST_F(FecConfirmationWarning, AConfirmedChangeIsAccepted) {
  EXPECT_EQ(commit(gpon_link(3, downstream("false")), {kRequest}, false).result,
            CommitResult::kUnconfirmed);
  EXPECT_EQ(commit(gpon_link(3, downstream("false")), {kRequest}, true).result,
            CommitResult::kAccepted);
}

TEST_F(FecConfirmationWarning, TheValueThatTheLeafHasAlreadyIsAccepted) {
  const Answer same = request(kRequest, kLeaf, "", "true");
  EXPECT_EQ(same.result, Verdict::kOk);
  EXPECT_EQ(same.text, "");
  EXPECT_EQ(request(kRequest, kLeaf, "", "false").result, Verdict::kWarning);
}

TEST_F(FecConfirmationWarning, ANewInterfaceNeedsNoConfirmation) {
  EXPECT_THAT(answer_for(gpon_link(5, downstream("false"))), Accepted());
  EXPECT_THAT(answer_for(xgspon_link(4, upstream("false"))), Accepted());
}

TEST_F(FecConfirmationWarning, TheHostMayReplaceTheText) {
  const char* const original = FEC_WARN_MSG;
  FEC_WARN_MSG = "100%s sure?";
  EXPECT_THAT(answer_for(gpon_link(3, downstream("false"))), AsksToConfirm("100%s sure?"));
  const std::string long_text(9000, 'x');
  FEC_WARN_MSG = long_text.c_str();
  EXPECT_THAT(answer_for(gpon_link(3, downstream("false"))), AsksToConfirm(std::string(8191, 'x')));
  FEC_WARN_MSG = original;
}

TEST_F(FecConfirmationWarning, ASessionThatDoesNotOpenRejectsAndIsEndedNevertheless) {
  fail_call(PlatformCall::qzconfd_config_session_start);
  EXPECT_THAT(answer_for(gpon_link(3, downstream("false"))), Rejected(kUnreadable));
  EXPECT_EQ(calls(PlatformCall::qzconfd_config_session_end), 1U);
}

TEST_F(FecConfirmationWarning, ThePlatformIsCalledInOrder) {
  const auto calls_with = [this](std::optional<PlatformCall> failing) {
    running(gpon_link(3));
    const RecordedCalls recorded(failing);
    answer_of(kRequest, gpon_link(3, downstream("false")));
    return recorded.names();
  };
  using Names = std::vector<std::string>;
  EXPECT_EQ(calls_with(PlatformCall::qzconfd_config_session_start),
            (Names{"qzconfd_maapi_socket_get", "qzconfd_config_session_start", "confd_trans_seterr",
                   "qzconfd_config_session_end"}));
  EXPECT_EQ(calls_with(PlatformCall::cdb_exists),
            (Names{"qzconfd_maapi_socket_get", "qzconfd_config_session_start", "cdb_exists",
                   "qzconfd_config_session_end"}));
  const Names asked = {
      "qzconfd_maapi_socket_get", "qzconfd_config_session_start", "cdb_exists", "cdb_get_bool",
      "confd_trans_seterr",       "qzconfd_config_session_end"};
  EXPECT_EQ(calls_with(PlatformCall::cdb_get_bool), asked);
  EXPECT_EQ(calls_with(std::nullopt), asked);
}

TEST_F(FecConfirmationWarning, TextRecordEndOfTheTraceAndOfTheSessionComeInThisOrder) {
  using testing::ElementsAre;
  using testing::HasSubstr;
  const std::string fec_path = kLeaf;
  const auto begin = HasSubstr(" ponlink_fec_confirmation begin");
  const auto ends_with = [](const std::string& word) {
    return HasSubstr(" ponlink_fec_confirmation end - " + word);
  };
  const auto lines_with = [&](const std::string& value, std::optional<PlatformCall> failing) {
    TraceCapture trace(TraceLevel::kDetail);
    const CallsAmongRecords calls(failing);
    request(kRequest, kLeaf, "", value);
    return trace.records();
  };
  const std::string socket = "CALL qzconfd_maapi_socket_get";
  const std::string start = "CALL qzconfd_config_session_start";
  const std::string exists = "CALL cdb_exists";
  const std::string read = "CALL cdb_get_bool";
  const std::string text = "CALL confd_trans_seterr";
  const std::string end = "CALL qzconfd_config_session_end";
  EXPECT_THAT(lines_with("false", std::nullopt),
              ElementsAre(socket, begin, start, exists, read, text,
                          HasSubstr(fec_path + " FEC did change."), ends_with("WARNING"), end));
  EXPECT_THAT(lines_with("true", std::nullopt),
              ElementsAre(socket, begin, start, exists, read,
                          HasSubstr(fec_path + " FEC didn't change."), ends_with("OK"), end));
  EXPECT_THAT(lines_with("false", PlatformCall::qzconfd_config_session_start),
              ElementsAre(socket, begin, start, text, end, ends_with("ERROR")));
  EXPECT_THAT(lines_with("false", PlatformCall::cdb_exists),
              ElementsAre(socket, begin, start, exists,
                          HasSubstr(fec_path + " doesn't exist. FEC didn't change."),
                          ends_with("OK"), end));
  EXPECT_THAT(lines_with("false", PlatformCall::cdb_get_bool),
              ElementsAre(socket, begin, start, exists, read, HasSubstr(" cdb_sock="), text,
                          ends_with("ERROR"), end));
}

TEST_F(FecConfirmationWarning, OnlyTheResult1MeansThatTheInterfaceIsCommitted) {
  const InPlace in_place;
  for (const int result : {-1, 0, 2}) {
    InPlace::committed_exists = result;
    EXPECT_THAT(request(kRequest, kLeaf, "", "false"), Accepted()) << result;
  }
  EXPECT_EQ(calls(PlatformCall::cdb_get_bool), 0U);
}

TEST_F(FecConfirmationWarning, OnlyANegativeResultMeansThatTheOldValueCannotBeRead) {
  const InPlace in_place;
  for (const int result : {0, 1}) {
    InPlace::committed_bool = result;
    EXPECT_THAT(answer_for(gpon_link(3, downstream("false"))), AsksToConfirm(kWarning)) << result;
  }
  InPlace::committed_bool = -2;
  EXPECT_THAT(answer_for(gpon_link(3, downstream("false"))), Rejected(kUnreadable));
}

TEST_F(FecConfirmationWarning, AnInterfaceThatCannotBeLookedUpCountsAsNew) {
  fail_call(PlatformCall::cdb_exists);
  EXPECT_THAT(answer_for(gpon_link(3, downstream("false"))), Accepted());
  EXPECT_EQ(calls(PlatformCall::cdb_get_bool), 0U);
}

TEST_F(FecConfirmationWarning, AnOldValueThatCannotBeReadRejects) {
  TraceCapture trace(TraceLevel::kFlow);
  fail_call(PlatformCall::cdb_get_bool);
  EXPECT_THAT(answer_for(gpon_link(3, downstream("false"))), Rejected(kUnreadable));
  EXPECT_TRUE(trace.has("ponlink_fec_confirmation src/validation/gpon_ponlink_fec_confirm.cpp"));
  EXPECT_TRUE(trace.has("cdb_sock="));
  EXPECT_TRUE(trace.has(" ret = -1"));
  EXPECT_TRUE(trace.has("ponlink_fec_confirmation end - ERROR - elapsed time "));
}

TEST_F(FecConfirmationWarning, AnotherListRejectsWithoutASession) {
  ValidationSession& session = open();
  EXPECT_EQ(answer_to(fec_keypath(base_downstream_fec, base_onu, 1, 3)), CONFD_ERR);
  EXPECT_EQ(session.error_text(), kUnreadable);
  EXPECT_EQ(calls(PlatformCall::qzconfd_config_session_start), 0U);
}

TEST_F(FecConfirmationWarning, TheChassisOfTheKeypathIsNotRead) {
  open();
  confd_hkeypath_t keypath = fec_keypath(base_downstream_fec, base_gpon, 1, 3);
  CONFD_SET_NOEXISTS(&keypath.v[1][0]);
  EXPECT_EQ(answer_to(keypath), CONFD_VALIDATION_WARN);
}

TEST_F(FecConfirmationWarning, TheTraceShowsTheChangeOfTheLeaf) {
  const struct {
    std::string change;
    std::string record;
    std::string word;
  } cases[] = {
      {gpon_link(3, downstream("false")),
       "/config/interface/gpon{1 1 3}/downstream-fec FEC did change.", "WARNING"},
      {gpon_link(5, upstream("false")),
       "/config/interface/gpon{1 1 5}/upstream-fec doesn't exist. FEC didn't change.", "OK"},
  };
  for (const auto& example : cases) {
    TraceCapture trace(TraceLevel::kDetail);
    answer_of(kRequest, example.change);
    EXPECT_TRUE(trace.has("ponlink_fec_confirmation begin"));
    EXPECT_TRUE(trace.has_record("DETAIL", example.record));
    EXPECT_TRUE(trace.has("ponlink_fec_confirmation end - " + example.word + " - elapsed time "));
    EXPECT_EQ(trace.records().size(), 3U);
  }
}

TEST_F(FecConfirmationWarning, TheTraceShowsThatNothingChanged) {
  TraceCapture trace(TraceLevel::kDetail);
  request(kRequest, "/config/interface/xgspon{1 1 3}/upstream-fec", "", "true");
  EXPECT_TRUE(trace.has_record("DETAIL",
                               "/config/interface/xgspon{1 1 3}/upstream-fec FEC didn't change."));
  EXPECT_TRUE(trace.has("ponlink_fec_confirmation end - OK - elapsed time "));
}

using FecConfirmationWarningDeathTest = FecConfirmationWarning;

TEST_F(FecConfirmationWarningDeathTest, AnotherLeafEndsTheProcessWithAFault) {
  open();
  EXPECT_EXIT(answer_to(fec_keypath(base_operation_mode, base_xgspon, 1, 3)),
              testing::ExitedWithCode(1),
              "Backtrace(.|\n)*Fault 1 raised by ponlink_fec_confirmation at "
              "src/validation/gpon_ponlink_fec_confirm.cpp:[0-9]+: XMLTAG is invalid");
}

TEST_F(FecConfirmationWarningDeathTest, AKeypathOfOtherTypesEndsTheProcess) {
  open();
  const struct {
    int element;
    int key;
    std::string assertion;
  } cases[] = {
      {0, 0, R"(\(&\(keypath->v\[0\]\[0\]\)\)->type == C_XMLTAG)"},
      {1, 1, R"(\(&keypath->v\[1\]\[1\]\)->type == C_UINT32)"},
      {1, 2, R"(\(&keypath->v\[1\]\[2\]\)->type == C_UINT32)"},
      {2, 0, R"(\(&keypath->v\[2\]\[0\]\)->type == C_XMLTAG)"},
  };
  for (const auto& example : cases) {
    confd_hkeypath_t keypath = fec_keypath(base_downstream_fec, base_gpon, 1, 3);
    CONFD_SET_NOEXISTS(&keypath.v[example.element][example.key]);
    EXPECT_DEATH(answer_to(keypath), example.assertion);
  }
}

TEST_F(FecConfirmationWarningDeathTest, ANewValueThatIsNoBooleanEndsTheProcess) {
  open();
  confd_hkeypath_t keypath = fec_keypath(base_downstream_fec, base_gpon, 1, 3);
  confd_value_t number;
  CONFD_SET_UINT32(&number, 1);
  EXPECT_DEATH(ponlink_fec_confirmation(sock(), tctx(), &keypath, &number),
               "\\(newval\\)->type == C_BOOL");
}

TEST_F(FecConfirmationWarning, TheNewValueOfAnUncommittedInterfaceIsNotRead) {
  open();
  confd_hkeypath_t keypath = fec_keypath(base_downstream_fec, base_gpon, 1, 9);
  EXPECT_EQ(ponlink_fec_confirmation(sock(), tctx(), &keypath, nullptr), CONFD_OK);
}

TEST(FecPaths, AreMadeFromTheKeypath) {
  const confd_hkeypath_t keypath = fec_keypath(base_downstream_fec, base_gpon, 3, 16);
  std::string itf;
  ASSERT_TRUE(get_interface_path(&keypath, itf));
  EXPECT_EQ(itf, "/config/interface/gpon{1 3 16}");
  std::string fec;
  ASSERT_TRUE(get_fec_path(&keypath, itf, fec));
  EXPECT_EQ(fec, "/config/interface/gpon{1 3 16}/downstream-fec");
}

TEST(FecPaths, KnowBothListsAndBothLeaves) {
  confd_hkeypath_t keypath = fec_keypath(base_upstream_fec, base_xgspon, 4294967295U, 0);
  CONFD_SET_UINT32(&keypath.v[1][0], 7);
  std::string itf;
  ASSERT_TRUE(get_interface_path(&keypath, itf));
  EXPECT_EQ(itf, "/config/interface/xgspon{1 4294967295 0}");
  std::string fec;
  ASSERT_TRUE(get_fec_path(&keypath, "base", fec));
  EXPECT_EQ(fec, "base/upstream-fec");
}

TEST(FecPaths, LeaveTheOutputForOtherNodes) {
  const confd_hkeypath_t keypath = fec_keypath(base_operation_mode, base_onu, 1, 1);
  std::string path = "as it was";
  EXPECT_FALSE(get_interface_path(&keypath, path));
  EXPECT_FALSE(get_fec_path(&keypath, "base", path));
  EXPECT_EQ(path, "as it was");
}

TEST(FecPathsDeathTest, ALeafThatIsNoTagEndsTheProcess) {
  confd_hkeypath_t keypath = fec_keypath(base_downstream_fec, base_gpon, 1, 1);
  CONFD_SET_NOEXISTS(&keypath.v[0][0]);
  std::string path;
  EXPECT_DEATH(get_fec_path(&keypath, "base", path),
               "\\(&keypath->v\\[0\\]\\[0\\]\\)->type == C_XMLTAG");
}

}  // namespace
}  // namespace tarnd::test
