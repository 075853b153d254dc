#include <gmock/gmock.h>

#include <cstdlib>
#include <stdexcept>
#include <string>
#include <vector>

#include "gpon_onu_gem_check.h"
#include "tests/support/card_fixture.h"
#include "tests/support/platform_in_place.h"
#include "tests/support/recorded_calls.h"
#include "tests/support/trace_capture.h"

// Included last: it includes base.h, whose macros are plain words that other headers use.
#include "tests/support/keypaths.h"

namespace tarnd::test {
namespace {

constexpr const char* kRequest = "onu_gem_check";
constexpr const char* kInternalError = "Internal error validating onu commit";

/// Line profile "both" has GEM ports 1 and 2, "one" has 1.
std::string line_profiles() {
  return line_profile("both", gem(1) + gem(2)) + line_profile("one", gem(1));
}

std::string onu_gone(int id) {
  return onu(id, "", "delete");
}

std::string without_line_profile() {
  return "<profile-references><line-profile nc:operation=\"delete\"/></profile-references>";
}

std::string in_use(int sp, int onu_id, const std::string& link) {
  return "Service-port [" + std::to_string(sp) + "] is configured to ONU [" +
         std::to_string(onu_id) + "] on interface PON [" + link + "]";
}

std::string gem_missing(int sp, int gem_id, int onu_id) {
  return "Service-port [" + std::to_string(sp) + "] gem [" + std::to_string(gem_id) +
         "] was not configured to onu [" + std::to_string(onu_id) + "]";
}

class OnuGemCheck : public CardFixture {
 protected:
  OnuGemCheck() {
    running(line_profiles() + gpon_link(2, onu(3, uses_line("both")) + onu(4, uses_line("both"))) +
            xgspon_link(1, onu(5, uses_line("both"))) + service_port(10, "gpon", "1/1/2", 3, 2) +
            service_port(20, "xgspon", "1/1/1", 5, 2));
  }

  Answer answer_for(const std::string& change) { return answer_of(kRequest, change); }
};

TEST_F(OnuGemCheck, TheChangesAreIteratedOverWithoutFlags) {
  const InPlace in_place;
  answer_for(gpon_link(2, onu_gone(4)));
  EXPECT_EQ(InPlace::iteration_flags, 0);
}

TEST_F(OnuGemCheck, AnOnuThatIsBothDeletedAndMovedCountsAsDeleted) {
  ValidationSession& session = open();
  validation_state state;
  state.register_deleted_onu("1 1 2 3");
  state.register_modified_onu("1 1 2 3");
  EXPECT_EQ(validate_onu_removal_and_modification(sock(), tctx(), state, "/config/no/such/onu"),
            CONFD_ERR);
  EXPECT_EQ(session.error_text(), in_use(10, 3, "1 1 2"));
}

TEST_F(OnuGemCheck, AnOnuThatAServicePortUsesMayNotGo) {
  EXPECT_THAT(answer_for(gpon_link(2, onu_gone(3))), Rejected(in_use(10, 3, "1 1 2")));
  EXPECT_THAT(answer_for(xgspon_link(1, onu_gone(5))), Rejected(in_use(20, 5, "1 1 1")));
}

TEST_F(OnuGemCheck, AnOnuWithoutServicePortsMayGo) {
  EXPECT_THAT(answer_for(gpon_link(2, onu_gone(4))), Accepted());
}

TEST_F(OnuGemCheck, AnOnuMayGoTogetherWithItsServicePorts) {
  EXPECT_THAT(answer_for(gpon_link(2, onu_gone(3)) + deleted_service_port(10)), Accepted());
}

TEST_F(OnuGemCheck, AnOnuMayNotBeDeletedWhenItsServicePortIsCreated) {
  EXPECT_THAT(answer_for(gpon_link(2, onu_gone(4)) + service_port(30, "gpon", "1/1/2", 4, 1)),
              Rejected(in_use(30, 4, "1 1 2")));
}

TEST_F(OnuGemCheck, TheFirstServicePortIsReported) {
  EXPECT_THAT(answer_for(gpon_link(2, onu_gone(3)) + service_port(9, "gpon", "1/1/2", 3, 1)),
              Rejected(in_use(9, 3, "1 1 2")));
}

TEST_F(OnuGemCheck, TheKindOfLinkDoesNotDistinguishOnus) {
  running(line_profiles() + gpon_link(1, onu(5, uses_line("both"))) +
          service_port(20, "xgspon", "1/1/1", 5, 2));
  EXPECT_THAT(answer_for(gpon_link(1, onu_gone(5))), Rejected(in_use(20, 5, "1 1 1")));
}

TEST_F(OnuGemCheck, NumbersThatRunTogetherAreDistinguished) {
  running(gpon_link(1, onu(12)) + gpon_link(11, onu(2)) + service_port(1, "gpon", "1/1/11", 2, 1));
  EXPECT_THAT(answer_for(gpon_link(1, onu_gone(12))), Accepted());
}

TEST_F(OnuGemCheck, ACreatedOnuIsNeverRejected) {
  EXPECT_THAT(answer_for(gpon_link(2, onu(9, uses_line("one")))), Accepted());
  EXPECT_EQ(calls(PlatformCall::qzconfd_config_session_start), 0U);
  EXPECT_EQ(calls(PlatformCall::maapi_get_objects), 0U);
}

TEST_F(OnuGemCheck, AChangeOfAnythingElseIsAccepted) {
  EXPECT_THAT(
      answer_for(gpon_link(2, onu(3, element("description", "moved") + serial_number("A1")))),
      Accepted());
  EXPECT_EQ(calls(PlatformCall::maapi_get_objects), 0U);
}

TEST_F(OnuGemCheck, ALineProfileThatLacksAUsedGemPortIsRejected) {
  EXPECT_THAT(answer_for(gpon_link(2, onu(3, uses_line("one")))), Rejected(gem_missing(10, 2, 3)));
  EXPECT_THAT(answer_for(xgspon_link(1, onu(5, uses_line("one")))),
              Rejected(gem_missing(20, 2, 5)));
  EXPECT_THAT(answer_for(gpon_link(2, onu(3, uses_line("gone")))), Rejected(gem_missing(10, 2, 3)));
  EXPECT_THAT(answer_for(gpon_link(2, onu(3, without_line_profile()))),
              Rejected(gem_missing(10, 2, 3)));
}

TEST_F(OnuGemCheck, ALineProfileWithTheUsedGemPortsIsAccepted) {
  EXPECT_THAT(answer_for(gpon_link(2, onu(4, uses_line("one")))), Accepted());
  EXPECT_THAT(answer_for(gpon_link(2, onu(3, uses_line("new"))) + line_profile("new", gem(2))),
              Accepted());
  EXPECT_THAT(answer_for(gpon_link(2, onu(3, uses_line("one"))) + deleted_service_port(10)),
              Accepted());
}

TEST_F(OnuGemCheck, TheFirstLineProfileOfAnOnuIsAChange) {
  running(line_profiles() + gpon_link(1, onu(1)) + service_port(1, "gpon", "1/1/1", 1, 2));
  EXPECT_THAT(answer_for(gpon_link(1, onu(1, uses_line("one")))), Rejected(gem_missing(1, 2, 1)));
  EXPECT_THAT(answer_for(gpon_link(1, onu(1, uses_line("both")))), Accepted());
}

TEST_F(OnuGemCheck, EveryServicePortOfTheOnuCounts) {
  running(line_profiles() + line_profile("none", "") + gpon_link(1, onu(1, uses_line("both"))) +
          service_port(1, "gpon", "1/1/1", 1, 1) + service_port(2, "gpon", "1/1/1", 1, 2));
  EXPECT_THAT(answer_for(gpon_link(1, onu(1, uses_line("one")))), Rejected(gem_missing(2, 2, 1)));
  EXPECT_THAT(answer_for(gpon_link(1, onu(1, uses_line("none")))), Rejected(gem_missing(1, 1, 1)));
}

/// A name of a line profile with that many equal characters and a given last one.
std::string long_name(std::size_t size, char last) {
  return std::string(size - 1, 'x') + last;
}

TEST_F(OnuGemCheck, NamesOf49CharactersAndMoreCountAsNone) {
  struct Row {
    std::string before;
    std::string after;
    bool is_change;
  };
  const std::vector<Row> rows{
      {long_name(48, 'a'), long_name(48, 'b'), true},
      {long_name(49, 'a'), long_name(49, 'b'), false},
      {long_name(64, 'a'), long_name(64, 'b'), false},
      {long_name(50, 'a'), long_name(51, 'a'), false},
      {"both", long_name(49, 'a'), true},
      {long_name(49, 'a'), "both", true},
  };
  for (const Row& row : rows) {
    running(line_profiles() + gpon_link(1, onu(1, uses_line(row.before))) +
            service_port(1, "gpon", "1/1/1", 1, 9));
    const std::string change = gpon_link(1, onu(1, uses_line(row.after)));
    if (row.is_change) {
      EXPECT_THAT(answer_for(change), Rejected(gem_missing(1, 9, 1)));
    } else {
      EXPECT_THAT(answer_for(change), Accepted());
    }
  }
}

TEST_F(OnuGemCheck, ALongNewNameIsLookedUpWhole) {
  const std::string name = long_name(64, 'a');
  running(line_profiles() + line_profile(name, gem(2)) + gpon_link(1, onu(1, uses_line("one"))) +
          service_port(1, "gpon", "1/1/1", 1, 2));
  EXPECT_THAT(answer_for(gpon_link(1, onu(1, uses_line(name)))), Accepted());
}

TEST_F(OnuGemCheck, ADeletedOnuIsReportedBeforeAMovedOne) {
  EXPECT_THAT(answer_for(gpon_link(2, onu_gone(4) + onu(3, uses_line("one"))) +
                         service_port(5, "gpon", "1/1/2", 4, 1)),
              Rejected(in_use(5, 4, "1 1 2")));
  // The ports are checked in their order, regardless of the changes to their ONUs.
  EXPECT_THAT(answer_for(gpon_link(2, onu_gone(4) + onu(3, uses_line("one"))) +
                         service_port(15, "gpon", "1/1/2", 4, 1)),
              Rejected(gem_missing(10, 2, 3)));
}

TEST_F(OnuGemCheck, AFailedIterationIsRejectedWithoutAText) {
  fail_call(PlatformCall::maapi_keypath_diff_iterate);
  EXPECT_THAT(answer_for(gpon_link(2, onu_gone(4))), Rejected(""));
  EXPECT_EQ(calls(PlatformCall::confd_trans_seterr), 0U);
}

TEST_F(OnuGemCheck, WithoutASessionTheCommitIsRejected) {
  fail_call(PlatformCall::qzconfd_config_session_start);
  TraceCapture trace(TraceLevel::kDetail);
  EXPECT_THAT(answer_for(gpon_link(2, onu(4, uses_line("one")))), Rejected(kInternalError));
  EXPECT_EQ(calls(PlatformCall::qzconfd_config_session_end), 1U);
  EXPECT_TRUE(trace.has("DETAIL is_change_in_line_profile "));
  EXPECT_TRUE(trace.has("Failed to open qzconfd_config_session socket"));
  EXPECT_TRUE(trace.has("validate_onu_gem_check end - ERROR - "));
}

TEST_F(OnuGemCheck, ANameThatCannotBeReadCountsAsNone) {
  fail_call(PlatformCall::cdb_get_str);
  EXPECT_THAT(answer_for(gpon_link(2, onu(3, element("description", "moved"))) +
                         line_profile("both", gem(2, "delete"))),
              Rejected(gem_missing(10, 2, 3)));
  fail_call(PlatformCall::maapi_get_str_elem);
  EXPECT_THAT(answer_for(gpon_link(2, onu(3, element("description", "moved"))) +
                         line_profile("both", gem(2, "delete"))),
              Rejected(gem_missing(10, 2, 3)));
  // Neither read: no change is seen.
  set_call_hook([](PlatformCall call) {
    return call != PlatformCall::cdb_get_str && call != PlatformCall::maapi_get_str_elem;
  });
  EXPECT_THAT(answer_for(gpon_link(2, onu(3, uses_line("one")))), Accepted());
}

TEST_F(OnuGemCheck, ServicePortsThatCannotBeReadLetTheCommitPass) {
  const std::string change = gpon_link(2, onu_gone(3));
  fail_call(PlatformCall::maapi_get_objects);
  EXPECT_THAT(answer_for(change), Accepted());
  running(gpon_link(2, onu(3)) + service_port(10, "gpon", "1/1/2", 3, 2));
  fail_call(PlatformCall::maapi_init_cursor);
  EXPECT_THAT(answer_for(change), Accepted());
}

TEST_F(OnuGemCheck, AServicePortThatIsIncompleteIsRejectedWithoutAText) {
  const std::string change = gpon_link(2, onu_gone(4));
  const std::string without_link = element("service-port", element("id", "1"));
  const std::string only_interface =
      element("service-port", element("id", "1") + element("gpon", element("id", "1/1/2")));
  for (const std::string& port : {without_link, only_interface}) {
    EXPECT_THAT(answer_for(change + port), Rejected(""));
  }
  EXPECT_EQ(calls(PlatformCall::confd_trans_seterr), 0U);
}

TEST_F(OnuGemCheck, AGemPortThatCannotBeLookedUpIsNoFinding) {
  // The tests in order: the ONU's line profile, the GEM port.
  fail_call(PlatformCall::maapi_exists, 2);
  EXPECT_THAT(answer_for(gpon_link(2, onu(3, uses_line("one")))), Accepted());
}

TEST_F(OnuGemCheck, ANewLineProfileThatCannotBeReadHasNoGemPort) {
  fail_call(PlatformCall::maapi_get_elem);
  EXPECT_THAT(answer_for(gpon_link(2, onu(3, uses_line("one")))), Rejected(gem_missing(10, 2, 3)));
}

TEST_F(OnuGemCheck, AllServicePortsAreReadOnceAndTheirNamesFreed) {
  std::string ports;
  for (int id = 1; id <= 301; ++id) ports += service_port(id, "gpon", "1/1/2", 3, 2);
  running(line_profiles() + gpon_link(2, onu(3, uses_line("both")) + onu(4)) + ports);
  EXPECT_THAT(answer_for(gpon_link(2, onu_gone(4))), Accepted());
  EXPECT_EQ(calls(PlatformCall::maapi_get_objects), 2U);
  EXPECT_EQ(calls(PlatformCall::confd_free_value), 301U);

  EXPECT_THAT(answer_for(gpon_link(2, onu_gone(3))), Rejected(in_use(1, 3, "1 1 2")));
  EXPECT_EQ(calls(PlatformCall::maapi_get_objects), 3U);
  EXPECT_EQ(calls(PlatformCall::confd_free_value), 601U);
}

TEST_F(OnuGemCheck, WhatWasOpenedIsClosed) {
  ValidationSession& session = open(gpon_link(2, onu_gone(4) + onu(3, uses_line("one"))));
  validation_state state;
  state.sock = sock();
  state.tctx = tctx();
  state.register_deleted_onu("1 1 2 3");
  EXPECT_EQ(validate_onu_removal_and_modification(sock(), tctx(), state, ""), CONFD_ERR);
  EXPECT_TRUE(is_change_in_line_profile(static_cast<unsigned>(sock()), tctx(),
                                        "/config/interface/gpon{1 1 2}/onu{3}"));
  EXPECT_EQ(session.open_resources().cursors, 0);
  EXPECT_EQ(session.open_resources().configuration_sessions, 0);
  EXPECT_EQ(calls(PlatformCall::qzconfd_config_session_end), 1U);
}

TEST_F(OnuGemCheck, AMissingSessionIsThrown) {
  open(gpon_link(2, onu(3, uses_line("one"))));
  fail_call(PlatformCall::qzconfd_config_session_start);
  try {
    is_change_in_line_profile(static_cast<unsigned>(sock()), tctx(),
                              "/config/interface/gpon{1 1 2}/onu{3}");
    FAIL() << "nothing was thrown";
  } catch (const std::runtime_error& error) {
    EXPECT_STREQ(error.what(), "Failed to open qzconfd_config_session socket");
  }
}

TEST_F(OnuGemCheck, TheSessionIsClosedBeforeTheTransactionIsRead) {
  open(gpon_link(2, onu(3, uses_line("one"))));
  const RecordedCalls recorded;
  EXPECT_TRUE(is_change_in_line_profile(static_cast<unsigned>(sock()), tctx(),
                                        "/config/interface/gpon{1 1 2}/onu{3}"));
  EXPECT_THAT(recorded.names(),
              testing::ElementsAre("qzconfd_config_session_start", "cdb_get_str",
                                   "qzconfd_config_session_end", "maapi_get_str_elem"));
}

TEST_F(OnuGemCheck, TheFlowShowsBeginAndEndOnly) {
  TraceCapture trace(TraceLevel::kFlow);
  EXPECT_THAT(answer_for(gpon_link(2, onu_gone(3) + onu(4, uses_line("one")) + onu(6)) +
                         deleted_service_port(10)),
              Accepted());
  EXPECT_EQ(trace.records().size(), 2U);
}

TEST_F(OnuGemCheck, TheCheckIsTraced) {
  TraceCapture trace(TraceLevel::kDetail);
  EXPECT_THAT(answer_for(gpon_link(2, onu_gone(3) + onu(4, uses_line("one")) + onu(6))),
              Rejected(in_use(10, 3, "1 1 2")));
  for (const char* const record :
       {"validate_onu_gem_check begin", "DETAIL validate_onu_gem_check ",
        "src/validation/gpon_onu_gem_check.cpp:",
        "Validating keypath: /config/interface/gpon{1 1 2}/onu",
        "Onu deleted: /config/interface/gpon{1 1 2}/onu{3} (1 1 2 3)",
        "old line_profile: both -- new line_profile: one -- different: yes",
        "Onu modified: /config/interface/gpon{1 1 2}/onu{4} (1 1 2 4)",
        "Onu created: /config/interface/gpon{1 1 2}/onu{6}",
        "validate_onu_gem_check end - ERROR - elapsed time "}) {
    EXPECT_TRUE(trace.has(record)) << record;
  }
}

TEST_F(OnuGemCheck, AnUnchangedLineProfileIsTraced) {
  TraceCapture trace(TraceLevel::kDetail);
  EXPECT_THAT(answer_for(gpon_link(2, onu(3, element("description", "moved")))), Accepted());
  EXPECT_TRUE(trace.has("old line_profile: both -- new line_profile: both -- different: no"));
  EXPECT_FALSE(trace.has("Onu modified"));
}

TEST_F(OnuGemCheck, EveryTextIsFreedOnceOverAThousandCommits) {
  constexpr int kRounds = 250;
  for (int i = 0; i < kRounds; ++i) {
    EXPECT_THAT(answer_for(gpon_link(2, onu_gone(3))), Rejected(in_use(10, 3, "1 1 2")));
    EXPECT_THAT(answer_for(gpon_link(2, onu(3, uses_line("one")))),
                Rejected(gem_missing(10, 2, 3)));
    EXPECT_THAT(answer_for(gpon_link(2, onu(4, uses_line(i % 2 == 0 ? "one" : "both")))),
                Accepted());
    fail_call(PlatformCall::qzconfd_config_session_start);
    EXPECT_THAT(answer_for(gpon_link(2, onu(3, uses_line("one")))), Rejected(kInternalError));
  }
  // The interfaces of both service ports, with them a line profile, both interfaces, and nothing.
  EXPECT_EQ(calls(PlatformCall::confd_free_value), kRounds * (2U + 3U + 2U + 0U));
}

TEST(ValidationState, KnowsTheOnusThatWereRegistered) {
  validation_state state;
  EXPECT_FALSE(state.is_deleted_onu("1 1 2 3"));
  state.register_deleted_onu("1 1 2 3");
  state.register_deleted_onu("1 1 2 4");
  state.register_modified_onu("1 1 2 5");
  EXPECT_TRUE(state.is_deleted_onu("1 1 2 3"));
  EXPECT_TRUE(state.is_deleted_onu("1 1 2 4"));
  EXPECT_FALSE(state.is_deleted_onu("1 1 2 5"));
  EXPECT_FALSE(state.is_deleted_onu("1 1 2"));
  EXPECT_TRUE(state.is_modified_onu("1 1 2 5"));
  EXPECT_FALSE(state.is_modified_onu("1 1 2 3"));
}

/// The keypath of ONU 3 on link 1/1/2.
confd_hkeypath_t onu_keypath() {
  return keypath({{number(3)},
                  {tag(base_onu)},
                  {number(1), number(1), number(2)},
                  {tag(base_gpon)},
                  {tag(base_interface)},
                  {tag(base_config)}});
}

TEST_F(OnuGemCheck, EachOperationRegistersItsOwn) {
  struct Row {
    maapi_iter_op op;
    bool deleted;
    bool modified;
    bool known;
  };
  for (const Row& row :
       {Row{MOP_NOOP, false, false, false}, Row{MOP_CREATED, false, false, true},
        Row{MOP_DELETED, true, false, true}, Row{MOP_MODIFIED, false, true, true},
        Row{MOP_VALUE_SET, false, true, true}, Row{MOP_ATTR_SET, false, true, true},
        Row{MOP_MOVED_AFTER, false, false, false}}) {
    open(gpon_link(2, onu(3, uses_line("one"))));
    TraceCapture trace(TraceLevel::kDetail);
    validation_state state;
    state.sock = sock();
    state.tctx = tctx();
    confd_hkeypath_t path = onu_keypath();
    EXPECT_EQ(iterate_detect_change_on_onu(&path, row.op, nullptr, nullptr, &state), ITER_CONTINUE);
    EXPECT_EQ(state.onu_deleted, row.deleted) << row.op;
    EXPECT_EQ(state.is_deleted_onu("1 1 2 3"), row.deleted) << row.op;
    EXPECT_EQ(state.line_profile_changed, row.modified) << row.op;
    EXPECT_EQ(state.is_modified_onu("1 1 2 3"), row.modified) << row.op;
    EXPECT_EQ(trace.has("Not valid onu operation: /config/interface/gpon{1 1 2}/onu{3}"),
              !row.known)
        << row.op;
  }
}

TEST_F(OnuGemCheck, AnUnknownOperationIsADetail) {
  TraceCapture trace(TraceLevel::kFlow);
  validation_state state;
  confd_hkeypath_t path = onu_keypath();
  iterate_detect_change_on_onu(&path, MOP_MOVED_AFTER, nullptr, nullptr, &state);
  EXPECT_TRUE(trace.records().empty());
}

/// The keypath of the ONUs of link 1/1/2.
confd_hkeypath_t onus_keypath() {
  return link_child_keypath(base_onu, base_gpon, 1, 1, 2);
}

template <typename Exception>
void throw_at(PlatformCall call) {
  set_call_hook([call](PlatformCall made) {
    if (made == call) throw Exception("thrown by the platform");
    return true;
  });
}

TEST_F(OnuGemCheck, ARuntimeErrorAnywhereInTheCheckRejects) {
  for (const PlatformCall call :
       {PlatformCall::maapi_keypath_diff_iterate, PlatformCall::maapi_get_objects}) {
    ValidationSession& session = open(gpon_link(2, onu_gone(4)));
    confd_hkeypath_t path = onus_keypath();
    throw_at<std::range_error>(call);
    EXPECT_EQ(validate_onu_gem_check(sock(), tctx(), &path, nullptr), CONFD_ERR);
    EXPECT_EQ(session.error_text(), kInternalError);
    EXPECT_EQ(session.open_resources().cursors, 0);
  }
}

TEST_F(OnuGemCheck, OtherExceptionsPassThrough) {
  open(gpon_link(2, onu_gone(4)));
  confd_hkeypath_t path = onus_keypath();
  throw_at<std::logic_error>(PlatformCall::maapi_keypath_diff_iterate);
  EXPECT_THROW(validate_onu_gem_check(sock(), tctx(), &path, nullptr), std::logic_error);
}

using OnuGemCheckDeathTest = OnuGemCheck;

TEST_F(OnuGemCheckDeathTest, AKeypathThatEndsInNoTagIsImpossible) {
  open();
  confd_hkeypath_t path = onu_keypath();
  EXPECT_DEATH(validate_onu_gem_check(sock(), tctx(), &path, nullptr),
               "src/validation/gpon_onu_gem_check\\.cpp.*"
               "\\(&\\(keypath->v\\[0\\]\\[0\\]\\)\\)->type == C_XMLTAG");
}

TEST_F(OnuGemCheckDeathTest, AnotherNodeRaisesAFaultAndEndsTheProcess) {
  open();
  confd_hkeypath_t path = service_ports_keypath();
  EXPECT_EXIT(validate_onu_gem_check(sock(), tctx(), &path, nullptr), testing::ExitedWithCode(1),
              "Fault 1 raised by validate_onu_gem_check at "
              "src/validation/gpon_onu_gem_check.cpp:[0-9]+: XMLTAG is invalid\n");
}

TEST_F(OnuGemCheckDeathTest, TheBacktraceComesBeforeTheFault) {
  open();
  confd_hkeypath_t path = service_ports_keypath();
  const auto check = [&] {
    set_call_hook([printed = false](PlatformCall call) mutable {
      printed = printed || call == PlatformCall::qzmw_print_backtrace;
      if (call == PlatformCall::qzmw_gen_fault && !printed) std::_Exit(3);
      return true;
    });
    validate_onu_gem_check(sock(), tctx(), &path, nullptr);
  };
  EXPECT_EXIT(check(), testing::ExitedWithCode(1), "Fault 1 raised by validate_onu_gem_check");
}

TEST_F(OnuGemCheckDeathTest, AnotherObjectSizeRaisesAFaultAndEndsTheProcess) {
  open();
  validation_state state;
  fail_call(PlatformCall::confd_max_object_size);  // the size is then -1
  EXPECT_EXIT(validate_onu_removal_and_modification(sock(), tctx(), state, ""),
              testing::ExitedWithCode(1),
              "Fault 1 raised by ConfdGetObjsItf.*\\[/config/service-port\\] object size "
              "\\(-1\\) differs from expected \\(26\\)\\.");
}

TEST_F(OnuGemCheckDeathTest, KeysThatAreNoNumbersAreImpossible) {
  struct Row {
    int element;
    int key;
  };
  for (const Row& row : {Row{0, 0}, Row{2, 0}, Row{2, 1}, Row{2, 2}}) {
    confd_hkeypath_t path = onu_keypath();
    CONFD_SET_INT32(&path.v[row.element][row.key], 1);
    validation_state state;
    EXPECT_DEATH(iterate_detect_change_on_onu(&path, MOP_CREATED, nullptr, nullptr, &state),
                 "\\(&keypath->v\\[" + std::to_string(row.element) + "\\]\\[" +
                     std::to_string(row.key) + "\\]\\)->type == C_UINT32");
  }
}

}  // namespace
}  // namespace tarnd::test
