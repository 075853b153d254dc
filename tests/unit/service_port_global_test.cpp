#include <gmock/gmock.h>

#include <array>
#include <limits>
#include <optional>
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

constexpr const char* kGlobal = "service_port_global_validation";
constexpr const char* kDeleteAll = "service_port_delete_all_warning_check";
constexpr const char* kWarning =
    "All Service Ports are being removed causing traffic stop for all ONUs. Are you sure you want "
    "to proceed?";
constexpr int kBatch = 300;

std::string conflict(int first, int second) {
  return "Service-port " + std::to_string(first) + " and " + std::to_string(second) +
         " have conflicting matches.";
}

std::string limit(int installed, int max) {
  return "Service-port limit exceeded: Installed " + std::to_string(installed) + " of " +
         std::to_string(max) + " allowed\n";
}

/// A port without conflicts: its GEM port has its number.
std::string own_port(int id) {
  return service_port(id, "gpon", "1/1/1", 1, id);
}

/// A port that claims what `other` claims.
std::string same_as(int other, int id) {
  return service_port(id, "gpon", "1/1/1", 1, other);
}

std::string own_ports(int first, int last) {
  std::string ports;
  for (int id = first; id <= last; ++id) ports += own_port(id);
  return ports;
}

/// A service port of neither kind of link.
std::string port_without_link(int id) {
  return element("service-port", element("id", std::to_string(id)));
}

/// A service port that names an interface and nothing else.
std::string incomplete_port(int id) {
  return element("service-port",
                 element("id", std::to_string(id)) + element("gpon", element("id", "1/1/1")));
}

class ServicePortGlobalValidation : public CardFixture {
 protected:
  void limit_to(std::uint32_t max) {
    CardDescription card = CardDescription::standard();
    card.max_service_ports = max;
    insert(card);
  }

  Answer answer_for(const std::string& change) { return answer_of(kGlobal, change); }

  /// Runs the check of the whole list after the change; returns the text that it sets.
  std::string text_of_list_check(std::int32_t expected_result) {
    EXPECT_EQ(validate_sp_global_validation(sock(), tctx()), expected_result);
    return session_text();
  }
  std::string session_text() { return session_->error_text().value_or("no text"); }
  ValidationSession& open_with(const std::string& change) {
    session_ = &open(change);
    return *session_;
  }

 private:
  ValidationSession* session_ = nullptr;
};

TEST_F(ServicePortGlobalValidation, APortWithTrafficOfItsOwnIsAccepted) {
  running(service_port(1, "gpon", "1/1/1", 1, 1, 10));
  EXPECT_THAT(answer_for(service_port(2, "gpon", "1/1/1", 1, 1, 11)), Accepted());
  EXPECT_THAT(answer_for(service_port(3, "xgspon", "1/1/1", 1, 1, 10)), Accepted());
  EXPECT_THAT(answer_for(service_port(4, "gpon", "1/1/1", 1, 1)), Accepted());
}

TEST_F(ServicePortGlobalValidation, APortWithTheTrafficOfAnotherIsRejected) {
  running(service_port(7, "gpon", "1/1/1", 1, 1, 10) + service_port(9, "xgspon", "1/1/2", 1, 1));
  EXPECT_THAT(answer_for(service_port(8, "gpon", "1/1/1", 1, 1, 10)), Rejected(conflict(7, 8)));
  EXPECT_THAT(answer_for(service_port(5, "gpon", "1/1/1", 1, 1, 10)), Rejected(conflict(5, 7)));
  EXPECT_THAT(answer_for(service_port(10, "xgspon", "1/1/2", 1, 1)), Rejected(conflict(9, 10)));
}

TEST_F(ServicePortGlobalValidation, AModificationIsLookedAtToo) {
  running(service_port(1, "gpon", "1/1/1", 1, 1, 10) + service_port(2, "gpon", "1/1/1", 1, 1, 11));
  EXPECT_THAT(answer_for(element("service-port",
                                 element("id", "2") +
                                     element("match", element("vlan", element("vlan-id", "10"))))),
              Rejected(conflict(1, 2)));
}

TEST_F(ServicePortGlobalValidation, TheChangesAreIteratedOverWithoutFlags) {
  const InPlace in_place;
  answer_for(service_port(1, "gpon", "1/1/1", 1, 1));
  EXPECT_EQ(InPlace::iteration_flags, 0);
}

TEST_F(ServicePortGlobalValidation, DeletionsAloneDoNotReadTheList) {
  running(own_port(1) + same_as(1, 2) + own_port(3));
  EXPECT_THAT(answer_for(deleted_service_port(3)), Accepted());
  EXPECT_EQ(calls(PlatformCall::maapi_get_objects), 0U);
  EXPECT_EQ(calls(PlatformCall::maapi_init_cursor), 0U);
}

TEST_F(ServicePortGlobalValidation, ADeletionBesideACreationDoesNotHideIt) {
  running(own_port(1) + own_port(2));
  EXPECT_THAT(answer_for(deleted_service_port(1) + same_as(2, 3)), Rejected(conflict(2, 3)));
}

TEST_F(ServicePortGlobalValidation, TheTrafficOfADeletedPortIsFree) {
  running(own_port(1));
  EXPECT_THAT(answer_for(deleted_service_port(1) + same_as(1, 2)), Accepted());
}

TEST_F(ServicePortGlobalValidation, AFailedIterationIsRejectedWithoutAText) {
  running(own_port(1));
  fail_call(PlatformCall::maapi_keypath_diff_iterate);
  EXPECT_THAT(answer_for(own_port(2)), Rejected(""));
  EXPECT_EQ(calls(PlatformCall::confd_trans_seterr), 0U);
}

TEST_F(ServicePortGlobalValidation, AsManyAsTheCardAllowsAreAccepted) {
  limit_to(3);
  running(own_ports(1, 2));
  EXPECT_THAT(answer_for(own_port(3)), Accepted());
  EXPECT_THAT(answer_for(own_port(4)), Rejected(limit(4, 3)));
}

TEST_F(ServicePortGlobalValidation, ACardWithoutALimitAllows4096) {
  running(own_ports(1, 4095));
  EXPECT_THAT(answer_for(own_port(4096)), Accepted());
  EXPECT_THAT(answer_for(own_port(4097)), Rejected(limit(4097, 4096)));
}

TEST_F(ServicePortGlobalValidation, AnAbsurdLimitTakesNoMemory) {
  limit_to(std::numeric_limits<std::uint32_t>::max());
  running(own_port(1));
  EXPECT_THAT(answer_for(own_port(2)), Accepted());
}

TEST_F(ServicePortGlobalValidation, TheLimitIsReportedBeforeAConflict) {
  limit_to(2);
  running(own_ports(1, 3));
  // The conflict is the last port, so three count before it.
  EXPECT_THAT(answer_for(same_as(1, 4)), Rejected(limit(3, 2)));
}

TEST_F(ServicePortGlobalValidation, ConflictingPortsAreNotCounted) {
  limit_to(3);
  running(own_ports(1, 3));
  EXPECT_THAT(answer_for(same_as(1, 4)), Rejected(conflict(1, 4)));
}

TEST_F(ServicePortGlobalValidation, PortsWithoutALinkAreNeitherCountedNorCompared) {
  limit_to(1);
  running(port_without_link(1) + port_without_link(2));
  EXPECT_THAT(answer_for(own_port(3)), Accepted());
  EXPECT_THAT(answer_for(own_port(4)), Rejected(limit(2, 1)));
}

TEST_F(ServicePortGlobalValidation, PortsWithBothLinksAreNeitherCountedNorCompared) {
  limit_to(1);
  running(own_port(1));
  ValidationSession& session = open_with(same_as(1, 2));
  EXPECT_EQ(text_of_list_check(CONFD_ERR), conflict(1, 2));
  session.begin_request("");
  add_xgspon_branch(session, "2");
  EXPECT_EQ(text_of_list_check(CONFD_OK), "no text");
}

TEST_F(ServicePortGlobalValidation, NamesOfSkippedPortsAreFreed) {
  running(own_port(1));
  ValidationSession& session = open_with(same_as(1, 2));
  add_xgspon_branch(session, "2");
  EXPECT_EQ(text_of_list_check(CONFD_OK), "no text");
  EXPECT_EQ(calls(PlatformCall::confd_free_value), 3U);
}

TEST_F(ServicePortGlobalValidation, AnIncompletePortIsRejectedWithAnEmptyText) {
  running("");
  open_with(incomplete_port(1));
  TraceCapture trace(TraceLevel::kFlow);
  EXPECT_EQ(text_of_list_check(CONFD_ERR), "");
  ASSERT_EQ(trace.records().size(), 1U);
  EXPECT_TRUE(trace.has("FLOW validate_sp_global_validation "));
  EXPECT_TRUE(trace.has("Failed to get leafs."));
  EXPECT_EQ(calls(PlatformCall::confd_free_value), 1U);
}

// The ports of the tests below: the second is a conflict, and more of them follow.

TEST_F(ServicePortGlobalValidation, TheRestOfABatchIsNeitherCountedNorCompared) {
  limit_to(1);
  running("");
  open_with(own_port(1) + same_as(1, 2) + own_port(3) + same_as(3, 4));
  TraceCapture trace(TraceLevel::kFlow);
  EXPECT_EQ(text_of_list_check(CONFD_ERR), conflict(1, 2));
  EXPECT_EQ(trace.count("Service Port Validation failed."), 1);
  EXPECT_EQ(calls(PlatformCall::confd_free_value), 4U);
}

TEST_F(ServicePortGlobalValidation, TheNextBatchIsCounted) {
  limit_to(3);
  running("");
  open_with(own_port(1) + same_as(1, 2) + own_ports(3, kBatch) + own_ports(kBatch + 1, kBatch + 3));
  EXPECT_EQ(text_of_list_check(CONFD_ERR), limit(1 + 3, 3));
}

TEST_F(ServicePortGlobalValidation, TheNextBatchIsComparedAndTheFirstConflictIsReported) {
  running("");
  open_with(own_port(1) + same_as(1, 2) + own_ports(3, kBatch) + same_as(1, kBatch + 1));
  TraceCapture trace(TraceLevel::kFlow);
  EXPECT_EQ(text_of_list_check(CONFD_ERR), conflict(1, 2));
  EXPECT_EQ(trace.count("Service Port Validation failed."), 2);
  EXPECT_EQ(calls(PlatformCall::confd_free_value), static_cast<unsigned>(kBatch + 1));
}

TEST_F(ServicePortGlobalValidation, AConflictAfterAnIncompletePortIsReported) {
  running("");
  open_with(incomplete_port(1) + own_ports(2, kBatch + 1) + same_as(kBatch + 1, kBatch + 2));
  EXPECT_EQ(text_of_list_check(CONFD_ERR), conflict(kBatch + 1, kBatch + 2));
}

TEST_F(ServicePortGlobalValidation, PortsOfAnAbandonedBatchMayBeRepeated) {
  running("");
  open_with(own_port(1) + same_as(1, 2) + own_ports(3, kBatch) + same_as(3, kBatch + 1));
  TraceCapture trace(TraceLevel::kFlow);
  EXPECT_EQ(text_of_list_check(CONFD_ERR), conflict(1, 2));
  EXPECT_EQ(trace.count("Service Port Validation failed."), 1);
}

TEST_F(ServicePortGlobalValidation, AFailedReadIsRejectedWithAnEmptyText) {
  running(own_port(1));
  fail_call(PlatformCall::maapi_get_objects);
  EXPECT_THAT(answer_for(own_port(2)), Rejected(""));
  EXPECT_EQ(calls(PlatformCall::confd_trans_seterr), 1U);
  fail_call(PlatformCall::maapi_init_cursor);
  EXPECT_THAT(answer_for(own_port(2)), Rejected(""));
  EXPECT_EQ(calls(PlatformCall::confd_trans_seterr), 2U);
}

TEST_F(ServicePortGlobalValidation, AfterAFailedReadTheLimitAndTheConflictAreStillReported) {
  limit_to(kBatch - 1);
  running("");
  open_with(own_ports(1, kBatch + 1));
  fail_call(PlatformCall::maapi_get_objects, 2);
  EXPECT_EQ(text_of_list_check(CONFD_ERR), limit(kBatch, kBatch - 1));

  let_calls_pass();
  open_with(own_ports(1, kBatch - 1) + same_as(1, kBatch) + own_port(kBatch + 1));
  fail_call(PlatformCall::maapi_get_objects, 2);
  EXPECT_EQ(text_of_list_check(CONFD_ERR), conflict(1, kBatch));
}

TEST_F(ServicePortGlobalValidation, TheListIsReadInBatchesAndNotByLeaf) {
  for (const auto& [ports, reads] : {std::pair(1, 1), std::pair(kBatch - 1, 1),
                                     std::pair(kBatch, 2), std::pair(kBatch + 1, 2)}) {
    running(own_ports(2, ports));
    const std::uint64_t before = calls(PlatformCall::maapi_get_objects);
    EXPECT_THAT(answer_for(own_port(1)), Accepted());
    EXPECT_EQ(calls(PlatformCall::maapi_get_objects) - before, static_cast<unsigned>(reads))
        << ports;
  }
  EXPECT_EQ(calls(PlatformCall::maapi_get_elem), 0U);
  EXPECT_EQ(calls(PlatformCall::maapi_exists), 0U);
  EXPECT_EQ(calls(PlatformCall::confd_pp_kpath), 0U);
}

TEST_F(ServicePortGlobalValidation, ThePlatformIsAskedInThisOrder) {
  running("");
  open_with(own_port(1));
  const RecordedCalls recorded;
  EXPECT_EQ(validate_sp_global_validation(sock(), tctx()), CONFD_OK);
  EXPECT_THAT(
      recorded.names(),
      testing::ElementsAre("fm_init", "fm_local_slot", "fm_scalar_card_tarnd_max_service_ports",
                           "maapi_init_cursor", "confd_cs_node_cd", "confd_max_object_size",
                           "maapi_get_objects", "confd_free_value", "maapi_destroy_cursor"));
}

TEST_F(ServicePortGlobalValidation, TheCursorIsClosed) {
  running("");
  ValidationSession& session = open_with(own_port(1) + same_as(1, 2));
  text_of_list_check(CONFD_ERR);
  EXPECT_EQ(session.open_resources().cursors, 0);
}

TEST_F(ServicePortGlobalValidation, EachPortIsTracedAtItsOwnLevel) {
  running(service_port(1, "gpon", "1/1/1", 2, 3, 10));
  TraceCapture trace(TraceLevel::kEntry);
  EXPECT_THAT(answer_for(service_port(4, "xgspon", "1/1/5", 6, 7) +
                         service_port(8, "gpon", "1/1/1", 2, 3, 10)),
              Rejected(conflict(1, 8)));
  const std::vector<std::string> expected{
      "service_port_global_validation begin",
      "Validate SP 1 (gpon=1 1 1, onu=2, gem=3) Match Vlan 10 begin.",
      "Validate SP 1 end.",
      "Validate SP 4 (xgspon=1 1 5, onu=6, gem=7) Match Vlan -1 begin.",
      "Validate SP 4 end.",
      "Validate SP 8 (gpon=1 1 1, onu=2, gem=3) Match Vlan 10 begin.",
      "Service Port Validation failed.",
      "service_port_global_validation end - ERROR - elapsed time ",
  };
  ASSERT_EQ(trace.records().size(), expected.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    EXPECT_NE(trace.records()[i].find(expected[i]), std::string::npos) << trace.records()[i];
  }
  EXPECT_TRUE(trace.has("ENTRY service_port_validate src/validation/valid_service_port.cpp:"));
}

TEST_F(ServicePortGlobalValidation, KeypathsAreTracedInDetail) {
  running(own_port(1));
  TraceCapture trace(TraceLevel::kDetail);
  fail_call(PlatformCall::maapi_keypath_diff_iterate);
  EXPECT_THAT(answer_for(own_port(2)), Rejected(""));
  EXPECT_TRUE(trace.has("Validating keypath: /config/service-port"));
  EXPECT_TRUE(trace.has("Error iterating keypath: /config/service-port"));
}

TEST_F(ServicePortGlobalValidation, TheFlowShowsBeginAndEndOnly) {
  running(own_port(1));
  TraceCapture accepted(TraceLevel::kFlow);
  EXPECT_THAT(answer_for(own_port(2)), Accepted());
  EXPECT_EQ(accepted.records().size(), 2U);
  TraceCapture failed(TraceLevel::kFlow);
  fail_call(PlatformCall::maapi_keypath_diff_iterate);
  EXPECT_THAT(answer_for(own_port(3)), Rejected(""));
  EXPECT_EQ(failed.records().size(), 2U);
}

struct Iteration {
  maapi_iter_op op;
  bool changed;
  maapi_iter_ret result;
  const char* record;
};

TEST_F(ServicePortGlobalValidation, CreationsAndModificationsEndTheIteration) {
  const std::array<Iteration, 7> rows{{
      {MOP_CREATED, true, ITER_STOP, "DETAIL iterate_detect_change_on_sp"},
      {MOP_MODIFIED, true, ITER_STOP, "service-port /config/service-port modified"},
      {MOP_VALUE_SET, true, ITER_STOP, "service-port /config/service-port modified"},
      {MOP_DELETED, false, ITER_CONTINUE, "service-port /config/service-port deleted"},
      {MOP_NOOP, false, ITER_CONTINUE,
       "WARNING: Reached default case (service_port_global_validation service-port "
       "/config/service-port)"},
      {MOP_MOVED_AFTER, false, ITER_CONTINUE, "FLOW iterate_detect_change_on_sp"},
      {MOP_ATTR_SET, false, ITER_CONTINUE, "FLOW iterate_detect_change_on_sp"},
  }};
  confd_hkeypath_t path = service_ports_keypath();
  for (const Iteration& row : rows) {
    TraceCapture trace(TraceLevel::kDetail);
    bool changed = false;
    EXPECT_EQ(iterate_detect_change_on_sp(&path, row.op, nullptr, nullptr, &changed), row.result);
    EXPECT_EQ(changed, row.changed) << row.op;
    EXPECT_TRUE(trace.has(row.record)) << row.op;
  }
}

TEST_F(ServicePortGlobalValidation, RecordsOfAChangeEndWithALineOfTheirOwn) {
  confd_hkeypath_t path = service_ports_keypath();
  for (const maapi_iter_op op : {MOP_CREATED, MOP_MODIFIED, MOP_DELETED}) {
    TraceCapture trace(TraceLevel::kDetail);
    bool changed = false;
    iterate_detect_change_on_sp(&path, op, nullptr, nullptr, &changed);
    EXPECT_THAT(
        trace.records(),
        testing::ElementsAre(testing::HasSubstr(" Validating keypath: /config/service-port"), "",
                             testing::HasSubstr(" service-port /config/service-port "), ""));
  }
}

TEST_F(ServicePortGlobalValidation, EveryNameIsFreedOnceOverAThousandCommits) {
  constexpr int kRounds = 334;
  for (int i = 0; i < kRounds; ++i) {
    running(own_ports(1, 3));
    EXPECT_THAT(answer_for(same_as(1, 4) + own_port(5)), Rejected(conflict(1, 4)));
    EXPECT_THAT(answer_for(incomplete_port(0) + own_port(4)), Rejected(""));
    EXPECT_THAT(answer_for(own_port(4) + port_without_link(5)), Accepted());
  }
  EXPECT_EQ(calls(PlatformCall::confd_free_value), kRounds * (5U + 5U + 4U));
}

using ServicePortGlobalValidationDeathTest = ServicePortGlobalValidation;

TEST_F(ServicePortGlobalValidationDeathTest, AnotherObjectSizeRaisesAFaultAndEndsTheProcess) {
  running(own_port(1));
  open_with(own_port(2));
  fail_call(PlatformCall::confd_max_object_size);  // the size is then -1
  EXPECT_EXIT(validate_sp_global_validation(sock(), tctx()), testing::ExitedWithCode(1),
              "Fault 1 raised by ConfdGetObjsItf.*\\[/config/service-port\\] object size "
              "\\(-1\\) differs from expected \\(26\\)\\.");
}

class ServicePortDeleteAllWarningCheck : public CardFixture {
 protected:
  static std::string link_with_onu() { return gpon_link(1) + xgspon_link(2, onu(1)); }

  Answer answer_for(const std::string& change) { return answer_of(kDeleteAll, change); }
};

TEST_F(ServicePortDeleteAllWarningCheck, AllOfSeveralGoingIsWarnedOf) {
  running(link_with_onu() + own_ports(1, 2));
  EXPECT_THAT(answer_for(deleted_service_port(1) + deleted_service_port(2)),
              AsksToConfirm(kWarning));
}

TEST_F(ServicePortDeleteAllWarningCheck, ConfirmedTheyGo) {
  running(link_with_onu() + own_ports(1, 2));
  const std::string change = deleted_service_port(1) + deleted_service_port(2);
  EXPECT_EQ(commit(change, {kDeleteAll}, false).result, CommitResult::kUnconfirmed);
  EXPECT_NE(running_text().find("service-port"), std::string::npos);
  EXPECT_EQ(commit(change, {kDeleteAll}, true).result, CommitResult::kAccepted);
  EXPECT_EQ(running_text().find("service-port"), std::string::npos);
}

TEST_F(ServicePortDeleteAllWarningCheck, OneOfTwoMayGo) {
  running(link_with_onu() + own_ports(1, 2));
  EXPECT_THAT(answer_for(deleted_service_port(1)), Accepted());
}

TEST_F(ServicePortDeleteAllWarningCheck, ALonePortMayGo) {
  running(link_with_onu() + own_port(1));
  EXPECT_THAT(answer_for(deleted_service_port(1)), Accepted());
}

TEST_F(ServicePortDeleteAllWarningCheck, AllReplacedByAnotherMayGo) {
  running(link_with_onu() + own_ports(1, 2));
  EXPECT_THAT(answer_for(deleted_service_port(1) + deleted_service_port(2) + own_port(3)),
              Accepted());
}

TEST_F(ServicePortDeleteAllWarningCheck, OnusOnLinksOfBothKindsCount) {
  const std::string change = deleted_service_port(1) + deleted_service_port(2);
  running(own_ports(1, 2) + gpon_link(1) + gpon_link(2, onu(5)));
  EXPECT_THAT(answer_for(change), AsksToConfirm(kWarning));
  running(own_ports(1, 2) + gpon_link(1) + xgspon_link(2) + xgspon_link(3, onu(5)));
  EXPECT_THAT(answer_for(change), AsksToConfirm(kWarning));
}

TEST_F(ServicePortDeleteAllWarningCheck, WithoutOnusAllMayGo) {
  const std::string ports = deleted_service_port(1) + deleted_service_port(2);
  running(own_ports(1, 2) + gpon_link(1) + xgspon_link(2));
  EXPECT_THAT(answer_for(ports), Accepted());
  running(own_ports(1, 2) + gpon_link(1, onu(1)));
  EXPECT_THAT(answer_for(ports + gpon_link(1, onu(1, "", "delete"))), Accepted());
}

TEST_F(ServicePortDeleteAllWarningCheck, WithoutASessionThereIsNoWarning) {
  running(link_with_onu() + own_ports(1, 2));
  fail_call(PlatformCall::qzconfd_config_session_start);
  EXPECT_THAT(answer_for(deleted_service_port(1) + deleted_service_port(2)), Accepted());
  EXPECT_EQ(calls(PlatformCall::qzconfd_config_session_end), 1U);
  EXPECT_EQ(calls(PlatformCall::maapi_num_instances), 0U);
}

TEST_F(ServicePortDeleteAllWarningCheck, ACountThatCannotBeReadIsNoReasonToWarn) {
  for (const PlatformCall count :
       {PlatformCall::cdb_num_instances, PlatformCall::maapi_num_instances}) {
    running(link_with_onu() + own_ports(1, 2));
    fail_call(count);
    EXPECT_THAT(answer_for(deleted_service_port(1) + deleted_service_port(2)), Accepted());
  }
}

TEST_F(ServicePortDeleteAllWarningCheck, ALinkThatCannotBeReadHasNoOnus) {
  const std::string change = deleted_service_port(1) + deleted_service_port(2);
  {
    running(own_ports(1, 2) + gpon_link(1, onu(1)));
    TraceCapture trace(TraceLevel::kFlow);
    fail_call(PlatformCall::maapi_num_instances, 2);
    EXPECT_THAT(answer_for(change), Accepted());
    EXPECT_TRUE(trace.has("FLOW get_number_onus_in_candidate "));
    EXPECT_TRUE(
        trace.has(std::string("Failed to get number of ONUs. (err: ") + confd_lasterr() + ")."));
  }
  running(own_ports(1, 2) + gpon_link(1, onu(1)) + gpon_link(2, onu(1) + onu(2)));
  fail_call(PlatformCall::maapi_num_instances, 2);
  EXPECT_THAT(answer_for(change), AsksToConfirm(kWarning));
}

TEST_F(ServicePortDeleteAllWarningCheck, AListOfLinksThatCannotBeReadHasNoOnus) {
  for (const PlatformCall step : {PlatformCall::maapi_init_cursor, PlatformCall::maapi_get_next}) {
    running(own_ports(1, 2) + gpon_link(1, onu(1)));
    fail_call(step);
    EXPECT_THAT(answer_for(deleted_service_port(1) + deleted_service_port(2)), Accepted());
  }
}

TEST_F(ServicePortDeleteAllWarningCheck, AStepThatFailsWithKeysAtHandEndsTheCount) {
  running(gpon_link(1, onu(1)) + gpon_link(2, onu(1)) + gpon_link(3, onu(1)) +
          xgspon_link(1, onu(1)));
  open();
  fail_call(PlatformCall::maapi_get_next, 2);
  EXPECT_EQ(get_number_onus_in_candidate(sock(), tctx()), 2) << "one of each kind of link";
}

TEST_F(ServicePortDeleteAllWarningCheck, ThePathsOfTheListsEndInASlash) {
  running(gpon_link(1) + xgspon_link(2));
  open();
  const RecordedPaths recorded;
  get_number_onus_in_candidate(sock(), tctx());
  EXPECT_THAT(recorded.calls(),
              testing::ElementsAre("maapi_init_cursor /config/interface/gpon/",
                                   "maapi_num_instances /config/interface/gpon/{1 1 1}/onu",
                                   "maapi_init_cursor /config/interface/xgspon/",
                                   "maapi_num_instances /config/interface/xgspon/{1 1 2}/onu"));
}

TEST_F(ServicePortDeleteAllWarningCheck, AllOnusOfTheTransactionAreCounted) {
  running(gpon_link(1, onu(1) + onu(2)) + gpon_link(2) + xgspon_link(1, onu(1)));
  ValidationSession& session = open(gpon_link(2, onu(9)) + gpon_link(1, onu(1, "", "delete")));
  EXPECT_EQ(get_number_onus_in_candidate(sock(), tctx()), 3);
  EXPECT_EQ(session.open_resources().cursors, 0);
}

TEST_F(ServicePortDeleteAllWarningCheck, TheSessionIsClosed) {
  running(link_with_onu() + own_ports(1, 2));
  ValidationSession& session = open(deleted_service_port(1) + deleted_service_port(2));
  EXPECT_EQ(service_port_delete_all_warning(sock(), tctx(), nullptr, nullptr),
            CONFD_VALIDATION_WARN);
  EXPECT_EQ(session.open_resources().configuration_sessions, 0);
  EXPECT_EQ(session.open_resources().cursors, 0);
  EXPECT_EQ(calls(PlatformCall::qzconfd_config_session_end), 1U);
}

TEST_F(ServicePortDeleteAllWarningCheck, ThePlatformIsAskedInThisOrder) {
  running(link_with_onu() + own_ports(1, 2));
  open(deleted_service_port(1) + deleted_service_port(2));
  const RecordedCalls recorded;
  EXPECT_EQ(service_port_delete_all_warning(sock(), tctx(), nullptr, nullptr),
            CONFD_VALIDATION_WARN);
  EXPECT_THAT(recorded.names(),
              testing::ElementsAre("qzconfd_config_session_start", "cdb_num_instances",
                                   "maapi_num_instances", "maapi_init_cursor", "maapi_get_next",
                                   "maapi_num_instances", "maapi_get_next", "maapi_destroy_cursor",
                                   "maapi_init_cursor", "maapi_get_next", "maapi_num_instances",
                                   "maapi_get_next", "maapi_destroy_cursor",
                                   "qzconfd_config_session_end", "confd_trans_seterr"));
}

TEST_F(ServicePortDeleteAllWarningCheck, TheRecordsAndTheSessionComeInThisOrder) {
  using testing::HasSubstr;
  running(link_with_onu() + own_ports(1, 2));
  open(deleted_service_port(1) + deleted_service_port(2));
  const auto lines_with = [this](std::optional<PlatformCall> failing) {
    TraceCapture trace(TraceLevel::kDetail);
    const CallsAmongRecords recorded(failing);
    service_port_delete_all_warning(sock(), tctx(), nullptr, nullptr);
    return trace.records();
  };
  const auto begin = HasSubstr(" service_port_delete_all_warning begin");
  const std::vector<std::string> lines = lines_with(std::nullopt);
  ASSERT_GE(lines.size(), 6U);
  EXPECT_THAT(
      std::vector(lines.begin(), lines.begin() + 3),
      testing::ElementsAre(begin, "CALL qzconfd_config_session_start", "CALL cdb_num_instances"));
  EXPECT_THAT(
      std::vector(lines.end() - 5, lines.end()),
      testing::ElementsAre("CALL maapi_destroy_cursor", HasSubstr(" num_inst_in_running = "),
                           "CALL qzconfd_config_session_end", "CALL confd_trans_seterr",
                           HasSubstr(" service_port_delete_all_warning end - WARNING - ")));
  EXPECT_THAT(lines_with(PlatformCall::qzconfd_config_session_start),
              testing::ElementsAre(begin, "CALL qzconfd_config_session_start",
                                   "CALL qzconfd_config_session_end",
                                   HasSubstr(" service_port_delete_all_warning end - OK - ")));
}

TEST_F(ServicePortDeleteAllWarningCheck, TheFiguresAreTraced) {
  running(link_with_onu() + own_ports(1, 2));
  TraceCapture trace(TraceLevel::kFlow);
  EXPECT_THAT(answer_for(deleted_service_port(1) + deleted_service_port(2)),
              AsksToConfirm(kWarning));
  ASSERT_EQ(trace.records().size(), 3U);
  EXPECT_TRUE(trace.has("service_port_delete_all_warning begin"));
  EXPECT_TRUE(trace.has("FLOW service_port_delete_all_warning "));
  EXPECT_TRUE(
      trace.has("num_inst_in_running = 2, num_inst_in_candidate = 0, is_load_factory = 0."));
  EXPECT_TRUE(trace.has("service_port_delete_all_warning end - WARNING - "));
}

/// Puts another text in for the time of a test.
class ReplacedWarning {
 public:
  explicit ReplacedWarning(const char* text) { SP_DEL_ALL_WARN_MSG = text; }
  ReplacedWarning(const ReplacedWarning&) = delete;
  ReplacedWarning& operator=(const ReplacedWarning&) = delete;
  ~ReplacedWarning() { SP_DEL_ALL_WARN_MSG = before_; }

 private:
  const char* before_ = SP_DEL_ALL_WARN_MSG;
};

TEST_F(ServicePortDeleteAllWarningCheck, TheDaemonMayPutAnotherText) {
  const std::string change = deleted_service_port(1) + deleted_service_port(2);
  running(link_with_onu() + own_ports(1, 2));
  {
    const ReplacedWarning replaced("100% of them%s?");
    EXPECT_THAT(answer_for(change), AsksToConfirm("100% of them%s?"));
  }
  const std::string long_text(9000, 'x');
  const ReplacedWarning replaced(long_text.c_str());
  EXPECT_THAT(answer_for(change), AsksToConfirm(long_text.substr(0, 8191)));
}

}  // namespace
}  // namespace tarnd::test
