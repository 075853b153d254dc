#include "gpon_itf_valid.h"

#include <cstdint>
#include <string>
#include <vector>

#include "gpon_capabilities.h"
#include "tests/support/card_fixture.h"
#include "tests/support/recorded_calls.h"
#include "tests/support/trace_capture.h"

namespace tarnd::test {
namespace {

constexpr const char* kGponRequest = "interface_gpon_validation";
constexpr const char* kXgsRequest = "interface_xgs_validation";
constexpr const char* kGponText =
    "GPON interfaces cannot be deleted because they are physical ports.";
constexpr const char* kXgsText =
    "XGSPON interfaces cannot be deleted because they are physical ports.";

using Link = std::string (*)(int port, const std::string& content, const std::string& op);

std::string links(Link link, int first, int last, const std::string& op = "") {
  std::string all;
  for (int port = first; port <= last; ++port) {
    all += link(port, "", op);
  }
  return all;
}

class PonInterfaces : public CardFixture {
 protected:
  void manage(std::uint32_t link_count) {
    CardDescription card = CardDescription::standard();
    card.manageable_links = link_count;
    insert(card);
  }
};

using InterfaceGponValidation = PonInterfaces;
using InterfaceXgsValidation = PonInterfaces;  // and those that have to do with both

TEST_F(InterfaceXgsValidation, AsManyAsTheCardManagesMustRemain) {
  manage(16);
  running(links(gpon_link, 1, 17) + links(xgspon_link, 1, 17));

  EXPECT_THAT(answer_of(kGponRequest, gpon_link(17, "", "delete")), Accepted());
  EXPECT_THAT(answer_of(kGponRequest, gpon_link(16, "", "delete")), Rejected(kGponText));
  EXPECT_THAT(answer_of(kXgsRequest, xgspon_link(17, "", "delete")), Accepted());
  EXPECT_THAT(answer_of(kXgsRequest, xgspon_link(16, "", "delete")), Rejected(kXgsText));
}

TEST_F(InterfaceGponValidation, WhichOneIsDeletedDoesNotMatter) {
  manage(2);
  running(links(gpon_link, 1, 3));
  EXPECT_THAT(answer_of(kGponRequest, gpon_link(1, "", "delete")), Accepted());
  EXPECT_THAT(answer_of(kGponRequest, gpon_link(3, "", "delete")), Rejected(kGponText));
}

TEST_F(InterfaceGponValidation, ADeletionMadeUpForIsAccepted) {
  manage(2);
  running(links(gpon_link, 1, 2));
  EXPECT_THAT(answer_of(kGponRequest, gpon_link(1, "", "delete") + gpon_link(3)), Accepted());
}

TEST_F(InterfaceXgsValidation, MoreThanTheCardManagesMayBeAdded) {
  manage(2);
  running(links(gpon_link, 1, 2) + links(xgspon_link, 1, 2));
  EXPECT_THAT(answer_of(kGponRequest, gpon_link(3)), Accepted());
  EXPECT_THAT(answer_of(kXgsRequest, xgspon_link(3)), Accepted());
}

TEST_F(InterfaceGponValidation, AListWithTooFewRefusesEveryEdit) {
  manage(3);
  running(gpon_link(1));
  EXPECT_THAT(answer_of(kGponRequest, gpon_link(1, onu(1))), Rejected(kGponText));
  EXPECT_THAT(answer_of(kGponRequest, gpon_link(2)), Rejected(kGponText));
  EXPECT_THAT(answer_of(kGponRequest, gpon_link(2) + gpon_link(3)), Accepted());
}

TEST_F(InterfaceXgsValidation, TheTypesAreCountedApart) {
  manage(2);
  running(links(gpon_link, 1, 2) + xgspon_link(1));
  EXPECT_THAT(answer_of(kGponRequest, gpon_link(1, onu(1))), Accepted());
  EXPECT_THAT(answer_of(kXgsRequest, xgspon_link(1, onu(1))), Rejected(kXgsText));
}

TEST_F(InterfaceGponValidation, ACardWithoutManageableLinksMissesNone) {
  manage(0);
  running(gpon_link(1));
  EXPECT_THAT(answer_of(kGponRequest, gpon_link(1, "", "delete")), Accepted());
}

TEST_F(InterfaceGponValidation, ACountThatCannotBeReadRejectsWithoutAText) {
  running(gpon_link(1));
  TraceCapture trace(TraceLevel::kFlow);
  fail_call(PlatformCall::maapi_num_instances);
  EXPECT_THAT(answer_of(kGponRequest, gpon_link(1, onu(1))), Rejected(""));
  EXPECT_TRUE(trace.has("validate_itf_pon src/validation/gpon_itf_valid.cpp"));
  EXPECT_TRUE(trace.has("Failed getting gpon ports ("));
  EXPECT_TRUE(trace.has("validate_itf_pon end - ERROR - elapsed time "));
}

TEST_F(InterfaceXgsValidation, AnXgsCountThatCannotBeReadNamesItsList) {
  running(xgspon_link(1));
  TraceCapture trace(TraceLevel::kFlow);
  fail_call(PlatformCall::maapi_num_instances);
  EXPECT_THAT(answer_of(kXgsRequest, xgspon_link(1, onu(1))), Rejected(""));
  EXPECT_TRUE(trace.has("Failed getting xgspon ports ("));
}

TEST_F(InterfaceXgsValidation, BothValidatorsTraceUnderOneName) {
  running(gpon_link(1) + xgspon_link(1));
  TraceCapture trace(TraceLevel::kFlow);
  EXPECT_THAT(answer_of(kGponRequest, gpon_link(1, onu(1))), Accepted());
  EXPECT_THAT(answer_of(kXgsRequest, xgspon_link(1, onu(1))), Accepted());
  EXPECT_EQ(trace.count("validate_itf_pon begin"), 2);
  EXPECT_EQ(trace.count("validate_itf_pon end - OK - elapsed time "), 2);
}

TEST_F(InterfaceXgsValidation, ThePlatformIsCalledInOrder) {
  using Names = std::vector<std::string>;
  manage(2);
  running(gpon_link(1) + xgspon_link(1));
  {
    const RecordedCalls recorded;
    answer_of(kGponRequest, gpon_link(1, onu(1)));
    EXPECT_EQ(recorded.names(),
              (Names{"qzconfd_maapi_socket_get", "limid_type_compare", "limid_type_compare",
                     "maapi_num_instances", "confd_trans_seterr"}));
  }
  const RecordedCalls recorded;
  answer_of(kXgsRequest, xgspon_link(1, onu(1)));
  EXPECT_EQ(recorded.names(), (Names{"qzconfd_maapi_socket_get", "limid_type_compare",
                                     "maapi_num_instances", "confd_trans_seterr"}));
}

TEST_F(InterfaceGponValidation, TheTimeIsTracedInMilliseconds) {
  running(gpon_link(1));
  TraceCapture trace(TraceLevel::kFlow);
  const SlowCalls slow(PlatformCall::maapi_num_instances, 20);
  answer_of(kGponRequest, gpon_link(1, onu(1)));
  EXPECT_GE(trace.figure("elapsed time "), 20);
  EXPECT_LT(trace.figure("elapsed time "), 20'000);
}

TEST_F(InterfaceGponValidation, ARefusalIsTracedAsAnError) {
  manage(2);
  running(gpon_link(1));
  TraceCapture trace(TraceLevel::kFlow);
  EXPECT_THAT(answer_of(kGponRequest, gpon_link(1, onu(1))), Rejected(kGponText));
  EXPECT_TRUE(trace.has("validate_itf_pon end - ERROR - elapsed time "));
}

TEST_F(InterfaceGponValidation, AnotherTypeIsRejectedButTracedAsASuccess) {
  ValidationSession& session = open();
  TraceCapture trace(TraceLevel::kFlow);
  EXPECT_EQ(validate_itf_pon(sock(), tctx(), nullptr), CONFD_ERR);
  EXPECT_FALSE(session.error_text().has_value());
  EXPECT_TRUE(trace.has("Error: Trying to execute validation for a non expected type of PON port"));
  EXPECT_TRUE(trace.has("validate_itf_pon end - OK - elapsed time "));
  EXPECT_EQ(calls(PlatformCall::maapi_num_instances), 0U);
}

TEST_F(InterfaceGponValidation, NumbersOfLinksAreUnsigned) {
  set_num_manageable_ponlinks(3000000000);
  EXPECT_FALSE(num_pon_links_ok(5));
  EXPECT_FALSE(num_pon_links_ok(2999999999));
  EXPECT_TRUE(num_pon_links_ok(3000000000));
}

TEST_F(InterfaceGponValidation, AllManageableLinksAreEnough) {
  set_num_manageable_ponlinks(16);
  EXPECT_FALSE(num_pon_links_ok(15));
  EXPECT_TRUE(num_pon_links_ok(16));
  EXPECT_TRUE(num_pon_links_ok(17));
}

}  // namespace
}  // namespace tarnd::test
