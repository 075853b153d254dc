#include "gpon_config_modify.h"

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "tests/support/card_fixture.h"
#include "tests/support/platform_in_place.h"
#include "tests/support/recorded_calls.h"
#include "tests/support/trace_capture.h"

namespace tarnd::test {
namespace {

constexpr const char* kRequest = "config_modified_check";
constexpr const char* kProfileText = "Changing already committed profile is not allowed.";
constexpr const char* kServicePortText = "Changing already committed service port is not allowed.";

std::string type_1(int fixed) {
  return element("type-1", element("fixed", std::to_string(fixed)));
}

std::string mapping(const std::string& name, int port) {
  return element("vlan-mapping",
                 element("name", name) + element("uni", element("ethernet", std::to_string(port))));
}

std::string admin_enabled(int id, const std::string& value) {
  return element("service-port",
                 element("id", std::to_string(id)) + element("admin-enabled", value));
}

class ConfigModifiedCheck : public CardFixture {
 protected:
  ConfigModifiedCheck() {
    running(bandwidth_profile("bw", type_1(1000)) + service_profile("sp", mapping("m", 1)) +
            service_port(1, "gpon", "1/1/1", 1, 1));
  }
};

TEST_F(ConfigModifiedCheck, WhatIsCreatedOrDeletedIsAccepted) {
  const std::array<std::string, 6> changes{
      bandwidth_profile("new", type_1(5)),     bandwidth_profile("bw", "", "delete"),
      service_profile("new", mapping("m", 1)), service_profile("sp", "", "delete"),
      service_port(2, "gpon", "1/1/1", 1, 2),  deleted_service_port(1),
  };
  for (const std::string& change : changes) {
    const CommitReport report = commit(change, {kRequest});
    EXPECT_EQ(report.result, CommitResult::kAccepted) << change;
    ASSERT_EQ(report.answers.size(), 1U) << change;
    EXPECT_EQ(report.answers.front().result, Verdict::kOk) << change;
    EXPECT_EQ(report.answers.front().text, "") << change;
  }
}

TEST_F(ConfigModifiedCheck, AChangedProfileIsRejected) {
  const std::array<std::string, 4> changes{
      bandwidth_profile("bw", type_1(1001)),
      bandwidth_profile("bw", element("type-4", element("maximum", "7"))),
      service_profile("sp", mapping("other", 2)),
      service_profile("sp", mapping("m", 2)),
  };
  for (const std::string& change : changes) {
    const Answer answer = answer_of(kRequest, change);
    EXPECT_EQ(answer.result, Verdict::kError) << change;
    EXPECT_EQ(answer.text, kProfileText) << change;
  }
}

TEST_F(ConfigModifiedCheck, AChangedServicePortIsRejected) {
  const Answer answer = answer_of(kRequest, admin_enabled(1, "true"));
  EXPECT_EQ(answer.result, Verdict::kError);
  EXPECT_EQ(answer.text, kServicePortText);
}

TEST_F(ConfigModifiedCheck, OneChangedAmongNewOnesIsRejected) {
  const Answer answer =
      answer_of(kRequest, service_port(0, "gpon", "1/1/1", 1, 2) + admin_enabled(1, "true") +
                              service_port(2, "gpon", "1/1/1", 1, 3));
  EXPECT_EQ(answer.text, kServicePortText);
}

TEST_F(ConfigModifiedCheck, AnEntryReplacedByAnotherOfItsNameIsChanged) {
  const std::string replaced = element(
      "profile",
      element("gpon", element("bandwidth-profile",
                              element("name", "bw") + element("traffic", type_1(9)), "replace")));
  EXPECT_EQ(answer_of(kRequest, replaced).text, kProfileText);
}

TEST_F(ConfigModifiedCheck, AValueSetAloneIsAccepted) {
  const Answer answer =
      request(kRequest, "/config/service-port{1}/admin-enabled", admin_enabled(1, "true"));
  EXPECT_EQ(answer.result, Verdict::kOk);
}

TEST_F(ConfigModifiedCheck, OnlyTheServicePortNodeItselfIsCalledServicePort) {
  EXPECT_EQ(request(kRequest, "/config/service-port", admin_enabled(1, "true")).text,
            kServicePortText);
  EXPECT_EQ(request(kRequest, "/config/service-port{1}", admin_enabled(1, "true")).text,
            kProfileText);
}

TEST_F(ConfigModifiedCheck, AChangeElsewhereIsNotSeen) {
  const Answer answer =
      request(kRequest, "/config/profile/gpon/service-profile", admin_enabled(1, "true"));
  EXPECT_EQ(answer.result, Verdict::kOk);
}

TEST_F(ConfigModifiedCheck, AFailedIterationIsAccepted) {
  fail_call(PlatformCall::maapi_keypath_diff_iterate);
  const Answer answer = answer_of(kRequest, admin_enabled(1, "true"));
  EXPECT_EQ(answer.result, Verdict::kOk);
  EXPECT_EQ(answer.text, "");
}

TEST_F(ConfigModifiedCheck, TheChangesAreIteratedOverWithoutFlags) {
  const InPlace in_place;
  answer_of(kRequest, admin_enabled(1, "true"));
  EXPECT_EQ(InPlace::iteration_flags, 0);
}

TEST_F(ConfigModifiedCheck, ThePlatformIsCalledInOrder) {
  const RecordedCalls recorded;
  answer_of(kRequest, admin_enabled(1, "true"));
  EXPECT_EQ(recorded.names(),
            (std::vector<std::string>{"qzconfd_maapi_socket_get", "maapi_keypath_diff_iterate",
                                      "confd_trans_seterr"}));
}

TEST_F(ConfigModifiedCheck, TheTraceBracketsTheCheck) {
  TraceCapture trace(TraceLevel::kFlow);
  answer_of(kRequest, service_port(2, "gpon", "1/1/1", 1, 2));
  answer_of(kRequest, admin_enabled(1, "true"));
  EXPECT_EQ(trace.count("validate_config_modify begin"), 2);
  EXPECT_EQ(trace.count("validate_config_modify end - OK - elapsed time "), 1);
  EXPECT_EQ(trace.count("validate_config_modify end - ERROR - elapsed time "), 1);
}

TEST(DiffIter, WritesNothingButItsByte) {
  std::array<std::uint8_t, 3> bytes{0xaa, 0, 0xaa};
  diffIter(nullptr, MOP_MODIFIED, nullptr, nullptr, &bytes[1]);
  EXPECT_EQ(bytes, (std::array<std::uint8_t, 3>{0xaa, 1, 0xaa}));
}

TEST(DiffIter, StopsAtTheFirstModificationAndPassesOverTheRest) {
  struct Row {
    maapi_iter_op op;
    std::uint8_t before;
    std::uint8_t after;
    maapi_iter_ret result;
  };
  const std::array<Row, 9> rows{{
      {MOP_NOOP, 0, 0, ITER_CONTINUE},
      {MOP_CREATED, 0, 0, ITER_CONTINUE},
      {MOP_DELETED, 0, 0, ITER_CONTINUE},
      {MOP_MODIFIED, 0, 1, ITER_STOP},
      {MOP_VALUE_SET, 0, 0, ITER_CONTINUE},
      {MOP_MOVED_AFTER, 0, 0, ITER_CONTINUE},
      {MOP_ATTR_SET, 0, 0, ITER_CONTINUE},
      {MOP_CREATED, 1, 1, ITER_STOP},
      {MOP_MODIFIED, 1, 1, ITER_STOP},
  }};
  for (const Row& row : rows) {
    std::uint8_t modified = row.before;
    EXPECT_EQ(diffIter(nullptr, row.op, nullptr, nullptr, &modified), row.result) << row.op;
    EXPECT_EQ(modified, row.after) << row.op;
  }
}

}  // namespace
}  // namespace tarnd::test
