#include <gmock/gmock.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/both_branches.h"
#include "tests/support/card_fixture.h"
#include "tests/support/platform_in_place.h"
#include "tests/support/recorded_calls.h"
#include "tests/support/trace_capture.h"
#include "valid_service_port.h"

// Included last: it includes base.h, whose macros are plain words that other headers use.
#include "tests/support/keypaths.h"

namespace tarnd::test {
namespace {

constexpr const char* kRequest = "sp_gem_check";

/// A card with ONU 1 on both kinds of links, with GEM ports 1 and 2, and ONU 2 without a line
/// profile.
std::string card() {
  return line_profile("fast", gem(1) + gem(2)) + gpon_link(1, onu(1, uses_line("fast")) + onu(2)) +
         xgspon_link(1, onu(3, uses_line("fast")));
}

std::string onu_missing(int sp, int onu_id, const std::string& link, const std::string& itf) {
  return "Service-port [" + std::to_string(sp) + "] ONU [" + std::to_string(onu_id) +
         "] was not configured on interface " + link + " [" + itf + "]";
}

std::string gem_missing(int sp, int gem_id, int onu_id) {
  return "Service-port [" + std::to_string(sp) + "] gem [" + std::to_string(gem_id) +
         "] was not configured to onu [" + std::to_string(onu_id) + "]";
}

class SpGemCheck : public CardFixture {
 protected:
  SpGemCheck() { running(card()); }

  Answer answer_for(const std::string& change) { return answer_of(kRequest, change); }
};

TEST_F(SpGemCheck, AGemPortOfTheOnusLineProfileIsAccepted) {
  EXPECT_THAT(answer_for(service_port(1, "gpon", "1/1/1", 1, 2)), Accepted());
  EXPECT_THAT(answer_for(service_port(2, "xgspon", "1/1/1", 3, 1)), Accepted());
}

TEST_F(SpGemCheck, AGemPortThatTheLineProfileLacksIsRejected) {
  EXPECT_THAT(answer_for(service_port(9, "gpon", "1/1/1", 1, 3)), Rejected(gem_missing(9, 3, 1)));
  EXPECT_THAT(answer_for(service_port(9, "xgspon", "1/1/1", 3, 3)), Rejected(gem_missing(9, 3, 3)));
}

TEST_F(SpGemCheck, AnOnuWithoutALineProfileHasNoGemPort) {
  EXPECT_THAT(answer_for(service_port(9, "gpon", "1/1/1", 2, 1)), Rejected(gem_missing(9, 1, 2)));
}

TEST_F(SpGemCheck, AnOnuWithADanglingLineProfileHasNoGemPort) {
  running(card() + gpon_link(2, onu(1, uses_line("gone"))));
  EXPECT_THAT(answer_for(service_port(9, "gpon", "1/1/2", 1, 1)), Rejected(gem_missing(9, 1, 1)));
}

TEST_F(SpGemCheck, OfAMissingOnuTheGemPortIsReported) {
  EXPECT_THAT(answer_for(service_port(9, "gpon", "1/1/1", 3, 1)), Rejected(gem_missing(9, 1, 3)));
  EXPECT_THAT(answer_for(service_port(9, "xgspon", "1/1/1", 1, 1)), Rejected(gem_missing(9, 1, 1)));
  EXPECT_THAT(answer_for(service_port(9, "gpon", "1/1/2", 1, 1)), Rejected(gem_missing(9, 1, 1)));
  // Both findings set a text, the later one stays.
  EXPECT_EQ(calls(PlatformCall::confd_trans_seterr), 6U);
}

TEST_F(SpGemCheck, AModificationIsLookedAt) {
  running(card() + service_port(1, "gpon", "1/1/1", 1, 1));
  EXPECT_THAT(answer_for(service_port(1, "gpon", "1/1/1", 1, 3)), Rejected(gem_missing(1, 3, 1)));
  // Any change of a port lets it be checked, even if its GEM port did not exist before.
  running(card() + service_port(1, "gpon", "1/1/1", 1, 3));
  EXPECT_THAT(
      answer_for(element("service-port", element("id", "1") + element("admin-enabled", "true"))),
      Rejected(gem_missing(1, 3, 1)));
}

TEST_F(SpGemCheck, APortThatDoesNotChangeIsNotLookedAt) {
  running(card() + service_port(1, "gpon", "1/1/1", 1, 3));
  EXPECT_THAT(answer_for(service_port(2, "gpon", "1/1/1", 1, 1)), Accepted());
}

TEST_F(SpGemCheck, ADeletionIsAlwaysAccepted) {
  running(card() + service_port(1, "gpon", "1/1/1", 1, 3));
  EXPECT_THAT(answer_for(deleted_service_port(1)), Accepted());
  EXPECT_EQ(calls(PlatformCall::maapi_get_values), 0U);
}

TEST_F(SpGemCheck, ADeletionDoesNotHideLaterChanges) {
  running(card() + service_port(1, "gpon", "1/1/1", 1, 1));
  EXPECT_THAT(answer_for(deleted_service_port(1) + service_port(2, "gpon", "1/1/1", 1, 3)),
              Rejected(gem_missing(2, 3, 1)));
}

TEST_F(SpGemCheck, WhatTheSameTransactionCreatesCounts) {
  EXPECT_THAT(answer_for(service_port(1, "gpon", "1/1/1", 4, 7) +
                         gpon_link(1, onu(4, uses_line("new"))) + line_profile("new", gem(7))),
              Accepted());
}

TEST_F(SpGemCheck, TheFirstFailureEndsTheCheck) {
  EXPECT_THAT(
      answer_for(service_port(1, "gpon", "1/1/1", 1, 3) + service_port(2, "gpon", "1/1/1", 1, 4)),
      Rejected(gem_missing(1, 3, 1)));
  EXPECT_EQ(calls(PlatformCall::maapi_get_values), 1U);
  EXPECT_THAT(
      answer_for(service_port(1, "gpon", "1/1/1", 1, 1) + service_port(2, "gpon", "1/1/1", 1, 4)),
      Rejected(gem_missing(2, 4, 1)));
}

TEST_F(SpGemCheck, APortWithoutALinkIsPassedOver) {
  const std::string port = element("service-port", element("id", "1"));
  EXPECT_THAT(answer_for(port), Accepted());
  EXPECT_THAT(answer_for(port + service_port(2, "gpon", "1/1/1", 1, 3)),
              Rejected(gem_missing(2, 3, 1)));
}

TEST_F(SpGemCheck, APortWithBothLinksIsPassedOver) {
  ValidationSession& session = open(service_port(7, "gpon", "1/1/1", 1, 3));
  add_xgspon_branch(session, "7");
  confd_hkeypath_t path = service_port_keypath(7);
  sp_gem_check_state state{true, sock(), tctx()};
  EXPECT_EQ(iterate_sp_for_gem_check_validation(&path, MOP_CREATED, nullptr, nullptr, &state),
            ITER_CONTINUE);
  EXPECT_TRUE(state.all_good);
  EXPECT_EQ(session.error_text(), std::nullopt);
  EXPECT_EQ(calls(PlatformCall::confd_free_value), 2U);
}

TEST_F(SpGemCheck, AnIncompletePortIsRejectedWithoutAText) {
  const std::string only_interface = element("gpon", element("id", "1/1/1"));
  const std::string without_gem =
      element("xgspon", element("id", "1/1/1") + element("onu", element("id", "3")));
  for (const std::string& link : {only_interface, without_gem}) {
    TraceCapture trace(TraceLevel::kDetail);
    EXPECT_THAT(answer_for(element("service-port", element("id", "1") + link)), Rejected(""));
    EXPECT_TRUE(trace.has("DETAIL iterate_sp_for_gem_check_validation "));
    EXPECT_TRUE(trace.has("error reading sp values from confd"));
  }
  // The interface names were read nevertheless.
  EXPECT_EQ(calls(PlatformCall::confd_free_value), 2U);
  EXPECT_EQ(calls(PlatformCall::confd_trans_seterr), 0U);
}

TEST_F(SpGemCheck, AFailedIterationIsRejectedWithoutAText) {
  fail_call(PlatformCall::maapi_keypath_diff_iterate);
  EXPECT_THAT(answer_for(service_port(1, "gpon", "1/1/1", 1, 1)), Rejected(""));
  EXPECT_EQ(calls(PlatformCall::confd_trans_seterr), 0U);
}

TEST_F(SpGemCheck, APortThatCannotBeReadEndsTheCheckWithSuccess) {
  TraceCapture trace(TraceLevel::kFlow);
  fail_call(PlatformCall::maapi_get_values);
  EXPECT_THAT(
      answer_for(service_port(1, "gpon", "1/1/1", 1, 3) + service_port(2, "gpon", "1/1/1", 1, 3)),
      Accepted());
  EXPECT_EQ(calls(PlatformCall::maapi_get_values), 1U);
  EXPECT_TRUE(
      trace.has(std::string("Error to get SP 1 values from ConfD (err=") + confd_lasterr() + ")"));
  EXPECT_TRUE(trace.has("validate_sp_gem_check end - OK - "));
}

TEST_F(SpGemCheck, AnExistenceTestThatFailsIsNoFinding) {
  // The tests in order: the ONU, its line profile, the GEM port.
  const std::string missing_onu = service_port(1, "gpon", "1/1/1", 3, 1);
  fail_call(PlatformCall::maapi_exists, 1);
  EXPECT_THAT(answer_for(missing_onu), Rejected(gem_missing(1, 1, 3)));
  EXPECT_EQ(calls(PlatformCall::confd_trans_seterr), 1U);
  fail_call(PlatformCall::maapi_exists, 3);
  EXPECT_THAT(answer_for(missing_onu), Rejected(onu_missing(1, 3, "gpon", "1/1/1")));
  fail_call(PlatformCall::maapi_exists, 3);
  EXPECT_THAT(answer_for(service_port(1, "gpon", "1/1/1", 1, 3)), Accepted());
}

TEST_F(SpGemCheck, ALineProfileThatCannotBeReadHasNoGemPort) {
  fail_call(PlatformCall::maapi_get_elem);
  EXPECT_THAT(answer_for(service_port(1, "gpon", "1/1/1", 1, 1)), Rejected(gem_missing(1, 1, 1)));
}

TEST_F(SpGemCheck, TheKeypathMustBeOfServicePorts) {
  TraceCapture trace(TraceLevel::kFlow);
  const Answer answer =
      request(kRequest, "/config/interface/gpon", gpon_link(1, onu(1, uses_line("gone"))));
  EXPECT_EQ(answer.result, Verdict::kError);
  EXPECT_EQ(answer.text, "");
  EXPECT_TRUE(trace.has("Error reading sp id from confd"));
}

TEST_F(SpGemCheck, AnInterfaceNameIsNoFormat) {
  EXPECT_THAT(answer_for(service_port(1, "gpon", "50%d", 1, 1)), Rejected(gem_missing(1, 1, 1)));
}

class SingleServicePort : public SpGemCheck {
 protected:
  std::string session_text(std::int32_t expected_result, std::uint32_t onu_id, std::uint32_t gem_id,
                           limid_type_t type) {
    ValidationSession& session = open();
    EXPECT_EQ(gem_check_single_sp(sock(), tctx(), onu_id, gem_id, 9, "1 1 1", type),
              expected_result);
    return session.error_text().value_or("no text");
  }
};

TEST_F(SingleServicePort, IsCheckedOnItsKindOfLink) {
  EXPECT_EQ(session_text(CONFD_OK, 1, 1, limid_type_gpon), "no text");
  EXPECT_EQ(session_text(CONFD_OK, 3, 2, limid_type_xgspon), "no text");
  EXPECT_EQ(session_text(CONFD_ERR, 3, 2, limid_type_gpon), gem_missing(9, 2, 3));
  EXPECT_EQ(session_text(CONFD_ERR, 1, 1, limid_type_xgspon), gem_missing(9, 1, 1));
}

TEST_F(SingleServicePort, OfAnUnknownKindOfLinkFailsByThatAlone) {
  constexpr int kLookForGem = 3;
  fail_call(PlatformCall::maapi_exists, kLookForGem);
  EXPECT_EQ(session_text(CONFD_ERR, 1, 1, nullptr), "no text");
}

TEST_F(SingleServicePort, OfAnUnknownKindOfLinkIsLookedUpWithoutAKind) {
  open();
  const RecordedPaths recorded;
  gem_check_single_sp(sock(), tctx(), 1, 1, 9, "1 1 1", nullptr);
  EXPECT_THAT(recorded.calls(), testing::Contains("maapi_exists /config/interface/{1 1 1}/onu{1}"));
}

TEST_F(SingleServicePort, OfAnUnknownKindOfLinkFails) {
  TraceCapture trace(TraceLevel::kFlow);
  EXPECT_EQ(session_text(CONFD_ERR, 1, 1, nullptr), gem_missing(9, 1, 1));
  EXPECT_TRUE(trace.has("FLOW gem_check_single_sp "));
  EXPECT_TRUE(trace.has("Invalid limid to check gem from service port"));
  EXPECT_EQ(calls(PlatformCall::maapi_exists), 3U);
}

TEST_F(SpGemCheck, TheCheckIsTraced) {
  running(card() + service_port(2, "gpon", "1/1/1", 1, 1));
  TraceCapture trace(TraceLevel::kDetail);
  EXPECT_THAT(answer_for(service_port(1, "xgspon", "1/1/1", 3, 1) + deleted_service_port(2)),
              Accepted());
  for (const char* const record :
       {"validate_sp_gem_check begin",
        "validate_sp_gem_check: Validating keypath: /config/service-port",
        "Validating keypath: /config/service-port{1}",
        "service-port /config/service-port{1} created", "Validate SP 1 (gpon=1/1/1, onu=3, gem=1)",
        "service-port /config/service-port{2} deleted",
        "validate_sp_gem_check end - OK - elapsed time "}) {
    EXPECT_TRUE(trace.has(record)) << record;
  }
}

TEST_F(SpGemCheck, TheFlowShowsNoDetails) {
  running(card() + service_port(2, "gpon", "1/1/1", 1, 1));
  const auto begin = testing::HasSubstr("validate_sp_gem_check begin");
  const auto id = testing::HasSubstr("FLOW sp_get_id ");
  const auto values = testing::HasSubstr("FLOW sp_get_values ");
  const auto end = testing::HasSubstr("validate_sp_gem_check end - ");
  {
    TraceCapture trace(TraceLevel::kFlow);
    EXPECT_THAT(answer_for(service_port(1, "gpon", "1/1/1", 1, 1) + deleted_service_port(2)),
                Accepted());
    EXPECT_THAT(trace.records(), testing::ElementsAre(begin, id, values, end));
  }
  TraceCapture trace(TraceLevel::kFlow);
  EXPECT_THAT(
      answer_for(element("service-port", element("id", "3") + element("gpon", element("id", "x")))),
      Rejected(""));
  EXPECT_THAT(trace.records(), testing::ElementsAre(begin, id, values, values, end));
}

TEST_F(SpGemCheck, RecordsOfAChangeEndWithALineOfTheirOwn) {
  open(service_port(7, "gpon", "1/1/1", 1, 1));
  confd_hkeypath_t path = service_port_keypath(7);
  TraceCapture trace(TraceLevel::kDetail);
  sp_gem_check_state state{true, sock(), tctx()};
  EXPECT_EQ(iterate_sp_for_gem_check_validation(&path, MOP_DELETED, nullptr, nullptr, &state),
            ITER_CONTINUE);
  EXPECT_THAT(trace.records(),
              testing::ElementsAre(
                  testing::HasSubstr(" Validating keypath: /config/service-port{7}"),
                  testing::HasSubstr(" service-port /config/service-port{7} deleted"), ""));
}

TEST_F(SingleServicePort, ThePlatformIsAskedInThisOrder) {
  open();
  const RecordedCalls recorded;
  EXPECT_EQ(gem_check_single_sp(sock(), tctx(), 1, 1, 9, "1 1 1", limid_type_gpon), CONFD_OK);
  EXPECT_THAT(
      recorded.names(),
      testing::ElementsAre("limid_type_compare", "maapi_exists", "maapi_exists", "maapi_get_elem",
                           "confd_pp_value", "confd_free_value", "maapi_exists"));
}

TEST_F(SpGemCheck, AnIdThatCannotBeReadEndsTheIteration) {
  confd_hkeypath_t leaf =
      keypath({{tag(base_id)}, {number(7)}, {tag(base_service_port)}, {tag(base_config)}});
  sp_gem_check_state state;
  EXPECT_EQ(iterate_sp_for_gem_check_validation(&leaf, MOP_CREATED, nullptr, nullptr, &state),
            ITER_STOP);
  EXPECT_FALSE(state.all_good);
}

TEST_F(SpGemCheck, AnIncompletePortEndsTheIteration) {
  open(element("service-port", element("id", "7") + element("gpon", element("id", "1/1/1"))));
  confd_hkeypath_t path = service_port_keypath(7);
  sp_gem_check_state state{true, sock(), tctx()};
  EXPECT_EQ(iterate_sp_for_gem_check_validation(&path, MOP_CREATED, nullptr, nullptr, &state),
            ITER_STOP);
  EXPECT_FALSE(state.all_good);
}

TEST_F(SpGemCheck, APortThatCannotBeReadEndsTheIteration) {
  open();
  confd_hkeypath_t path = service_port_keypath(7);
  sp_gem_check_state state{true, sock(), tctx()};
  EXPECT_EQ(iterate_sp_for_gem_check_validation(&path, MOP_CREATED, nullptr, nullptr, &state),
            ITER_STOP);
  EXPECT_TRUE(state.all_good);
}

TEST_F(SpGemCheck, TheChangesAreIteratedOverWithoutFlags) {
  const InPlace in_place;
  answer_for(service_port(1, "gpon", "1/1/1", 1, 1));
  EXPECT_EQ(InPlace::iteration_flags, 0);
}

TEST_F(SpGemCheck, PathsAreAskedForWithTheirNumbers) {
  // Ids of service ports are unsigned in a path, those of ONUs and GEM ports are not.
  open(element(
      "service-port",
      element("id", "4000000000") +
          element("xgspon", element("id", "1/1/1") +
                                element("onu", element("id", "3") +
                                                   element("gem", element("gem-id", "1"))))));
  confd_hkeypath_t path = service_port_keypath(4000000000);
  sp_gem_check_state state{true, sock(), tctx()};
  const RecordedPaths recorded;
  iterate_sp_for_gem_check_validation(&path, MOP_CREATED, nullptr, nullptr, &state);
  EXPECT_TRUE(state.all_good);
  const std::string onu_path = "/config/interface/xgspon{1 1 1}/onu{3}";
  EXPECT_THAT(
      recorded.calls(),
      testing::ElementsAre("maapi_get_values /base:config/service-port{4000000000}",
                           "maapi_exists " + onu_path,
                           "maapi_exists " + onu_path + "/profile-references/line-profile",
                           "maapi_get_elem " + onu_path + "/profile-references/line-profile",
                           "maapi_exists /config/profile/gpon/line-profile{fast}/gem{1}/gem-id"));
}

TEST_F(SingleServicePort, NumbersOfOnusAndGemPortsAreSignedInAPath) {
  open();
  const RecordedPaths recorded;
  gem_check_single_sp(sock(), tctx(), 4294967295, 4294967294, 9, "1 1 1", limid_type_gpon);
  EXPECT_THAT(
      recorded.calls(),
      testing::ElementsAre(
          "maapi_exists /config/interface/gpon{1 1 1}/onu{-1}",
          "maapi_exists /config/interface/gpon{1 1 1}/onu{-1}/profile-references/line-profile",
          "maapi_exists /config/profile/gpon/line-profile{}/gem{-2}/gem-id"));
}

TEST_F(SpGemCheck, TheRequestHasBothBranchesInTheNamespaceOfTheModel) {
  const InPlace in_place;
  answer_for(service_port(1, "gpon", "1/1/1", 1, 1));
  struct Row {
    std::uint32_t tag;
    confd_vtype type;
  };
  const std::vector<Row> rows{
      {1802393476, C_XMLBEGIN}, {1279252765, C_NOEXISTS}, {1099044037, C_XMLBEGIN},
      {1279252765, C_NOEXISTS}, {54084138, C_XMLBEGIN},   {730022296, C_NOEXISTS},
      {54084138, C_XMLEND},     {1099044037, C_XMLEND},   {1802393476, C_XMLEND},
      {1305479277, C_XMLBEGIN}, {1279252765, C_NOEXISTS}, {1099044037, C_XMLBEGIN},
      {1279252765, C_NOEXISTS}, {54084138, C_XMLBEGIN},   {730022296, C_NOEXISTS},
      {54084138, C_XMLEND},     {1099044037, C_XMLEND},   {1305479277, C_XMLEND},
  };
  ASSERT_EQ(InPlace::requested.size(), rows.size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const confd_tag_value_t& requested = InPlace::requested[i];
    EXPECT_EQ(CONFD_GET_TAG_TAG(&requested), rows[i].tag) << i;
    EXPECT_EQ(CONFD_GET_TAG_NS(&requested), 864307902U) << i;
    EXPECT_EQ(CONFD_GET_TAG_VALUE(&requested)->type, rows[i].type) << i;
  }
}

TEST_F(SpGemCheck, OtherOperationsArePassedOver) {
  confd_hkeypath_t path = service_port_keypath(7);
  for (const maapi_iter_op op : {MOP_NOOP, MOP_MOVED_AFTER, MOP_ATTR_SET}) {
    TraceCapture trace(TraceLevel::kFlow);
    sp_gem_check_state state;
    EXPECT_EQ(iterate_sp_for_gem_check_validation(&path, op, nullptr, nullptr, &state),
              ITER_CONTINUE);
    EXPECT_TRUE(state.all_good);
    EXPECT_TRUE(trace.has(
        "WARNING: Reached default case (sp_gem_check service-port /config/service-port{7})"));
  }
}

TEST_F(SpGemCheck, AValueSetInAnEntryIsLookedAt) {
  ValidationSession& session = open(service_port(7, "gpon", "1/1/1", 1, 3));
  confd_hkeypath_t path = service_port_keypath(7);
  sp_gem_check_state state{true, sock(), tctx()};
  EXPECT_EQ(iterate_sp_for_gem_check_validation(&path, MOP_VALUE_SET, nullptr, nullptr, &state),
            ITER_STOP);
  EXPECT_FALSE(state.all_good);
  EXPECT_EQ(session.error_text(), gem_missing(7, 3, 1));
}

TEST_F(SpGemCheck, AGoodPortDoesNotMakeUpForABadOne) {
  open(service_port(7, "gpon", "1/1/1", 1, 1));
  confd_hkeypath_t path = service_port_keypath(7);
  sp_gem_check_state state{false, sock(), tctx()};
  EXPECT_EQ(iterate_sp_for_gem_check_validation(&path, MOP_CREATED, nullptr, nullptr, &state),
            ITER_CONTINUE);
  EXPECT_FALSE(state.all_good);
}

TEST_F(SpGemCheck, EveryTextIsFreedOnceOverAThousandCommits) {
  constexpr int kRounds = 334;
  const std::string incomplete =
      element("service-port", element("id", "0") + element("gpon", element("id", "1/1/1")));
  for (int i = 0; i < kRounds; ++i) {
    EXPECT_THAT(answer_for(service_port(1, "gpon", "1/1/1", 1, 3)), Rejected(gem_missing(1, 3, 1)));
    EXPECT_THAT(answer_for(incomplete), Rejected(""));
    EXPECT_THAT(answer_for(service_port(1, "gpon", "1/1/1", 1, 1 + i % 2)), Accepted());
  }
  // An interface and a line profile, an interface, and again both.
  EXPECT_EQ(calls(PlatformCall::confd_free_value), kRounds * (2U + 1U + 2U));
}

}  // namespace
}  // namespace tarnd::test
