// CDB: reads on the committed configuration, regardless of the transaction.

#include "session/qzconfd_session.h"
#include "tests/standalone/confd_test.h"

namespace tarnd::test {
namespace {

class ConfdCdb : public ConfdTest {
 protected:
  // Opens a transaction and a read session.
  void open_cdb(const std::string& change = "") {
    open(change);
    cdb_ = qzconfd_config_session_start(tctx()->vcb_opaque);
    ASSERT_GT(cdb_, 0);
  }

  int cdb_ = 0;
};

TEST_F(ConfdCdb, ExistsIsBlindToTheTransaction) {
  open_cdb(gpon_link(3, onu(9, "", "delete")) + gpon_link(3, onu(77)) +
           gpon_link(12, "", "delete") + deleted_service_port(7));
  const struct {
    const char* path;
    int exists;
  } cases[] = {
      {"/config/interface/gpon{1 1 3}/onu{9}", 1},
      {"/config/interface/gpon{1 1 3}/onu{9}/profile-references/line-profile", 1},
      {"/config/interface/gpon{1 1 3}/onu{77}", 0},
      {"/config/interface/gpon{1 1 12}", 1},
      {"/config/interface/gpon{1 1 12}/downstream-fec", 1},
      {"/config/interface/gpon{1 1 12}/onu", 1},
      {"/config/interface/xgspon", 0},
      {"/config/service-port{7}/xgspon/onu", 1},
      {"/config/service-port{8}/xgspon/onu", 0},
      {"/config/service-port{7}/xgspon/id", 0},
      {"/config/profile/gpon/line-profile{it's50%}", 1},
      {"/config/profile/gpon/line-profile{}", 0},
      {"/config/profile/gpon/service-profile{triple}/vlan-mapping{m1}/uni/ethernet", 1},
      {"/config/profile/gpon/service-profile{triple}/vlan-mapping{m2}/uni/ethernet", 0},
      {"/config/profile/gpon/service-profile{triple}/vlan-mapping{m1}/uni/ethernet{3}", 1},
      {"/config/profile/gpon/service-profile{x}/vlan-mapping{m1}/uni/ethernet", 0},
  };
  for (const auto& c : cases) EXPECT_EQ(cdb_exists(cdb_, "%s", c.path), c.exists) << c.path;
}

TEST_F(ConfdCdb, LeafListsAreThoseOfBefore) {
  const char* m1 = "/config/profile/gpon/service-profile{triple}/vlan-mapping{m1}/uni/ethernet";
  const char* m2 = "/config/profile/gpon/service-profile{triple}/vlan-mapping{m2}/uni/ethernet";
  open_cdb(service_profile("triple",
                           "<vlan-mapping><name>m1</name><uni><ethernet nc:operation='delete'>1"
                           "</ethernet><ethernet nc:operation='delete'>3</ethernet></uni>"
                           "</vlan-mapping><vlan-mapping><name>m2</name><uni><ethernet>5</ethernet>"
                           "</uni></vlan-mapping>"));
  EXPECT_EQ(maapi_exists(sock(), th(), m1), 0);
  EXPECT_EQ(cdb_exists(cdb_, m1), 1);
  EXPECT_EQ(maapi_exists(sock(), th(), m2), 1);
  EXPECT_EQ(cdb_exists(cdb_, m2), 0);
}

TEST_F(ConfdCdb, ReadsGiveTheCommittedValue) {
  open_cdb(gpon_link(3, "<upstream-fec>true</upstream-fec>" + onu(9, uses_line("fast"))) +
           gpon_link(12, "<downstream-fec>false</downstream-fec>"));
  int boolean = -1;
  EXPECT_EQ(cdb_get_bool(cdb_, &boolean, "/config/interface/gpon{1 1 3}/upstream-fec"), CONFD_OK);
  EXPECT_EQ(boolean, 0);
  EXPECT_EQ(cdb_get_bool(cdb_, &boolean, "/config/interface/gpon{1 1 12}/downstream-fec"),
            CONFD_OK);
  EXPECT_EQ(boolean, 1);  // the default
  char text[49];
  EXPECT_EQ(cdb_get_str(cdb_, text, sizeof text, "%s/profile-references/line-profile",
                        "/config/interface/gpon{1 1 3}/onu{9}"),
            CONFD_OK);
  EXPECT_STREQ(text, "slow");
}

TEST_F(ConfdCdb, ATextThatDoesNotFitLeavesTheBuffer) {
  open_cdb();
  const char* path = "/config/interface/gpon{1 1 3}/onu{10}/rg-profile";  // "home"
  char text[5] = "????";
  for (const int size : {4, 0, -1}) {
    EXPECT_EQ(cdb_get_str(cdb_, text, size, path), CONFD_ERR) << size;
    expect_error(CONFD_ERR_PROTOUSAGE);
    EXPECT_STREQ(text, "????");
  }
  EXPECT_EQ(cdb_get_str(cdb_, text, 5, path), CONFD_OK);
  EXPECT_STREQ(text, "home");
}

TEST_F(ConfdCdb, FailedReadsLeaveTheResult) {
  open_cdb(gpon_link(3, onu(77, uses_line("fast"))));
  const struct {
    const char* path;
    int error;
  } cases[] = {
      {"/config/interface/gpon{1 1 3}/onu{77}/profile-references/line-profile", CONFD_ERR_NOEXISTS},
      {"/config/interface/gpon{1 1 3}/onu{9}/rg-profile", CONFD_ERR_NOEXISTS},
      {"/config/interface/gpon{1 1 3}/port-id", CONFD_ERR_BADTYPE},
      {"/config/interface/gpon{1 1 3}", CONFD_ERR_BADPATH},
      {"/config/interface/gpon/upstream-fec", CONFD_ERR_BADPATH},
      {"/config/nothing", CONFD_ERR_BADPATH},
  };
  int boolean = 42;
  char text[8] = "42";
  for (const auto& c : cases) {
    EXPECT_EQ(cdb_get_bool(cdb_, &boolean, c.path), CONFD_ERR) << c.path;
    expect_error(c.error);
    EXPECT_EQ(cdb_get_str(cdb_, text, sizeof text, c.path), CONFD_ERR) << c.path;
    expect_error(c.error);
  }
  EXPECT_EQ(boolean, 42);
  EXPECT_STREQ(text, "42");
}

TEST_F(ConfdCdb, NumInstancesCountsWhatIsCommitted) {
  open_cdb(service_port(8, "gpon", "1/1/3", 1, 1) + deleted_service_port(7) +
           deleted_service_port(100));
  EXPECT_EQ(maapi_num_instances(sock(), th(), "/config/service-port"), 1);
  EXPECT_EQ(cdb_num_instances(cdb_, "/config/service-port"), 2);
  EXPECT_EQ(cdb_num_instances(cdb_, "/config/interface/gpon{1 1 3}/onu"), 2);
  EXPECT_EQ(cdb_num_instances(cdb_, "/config/interface/gpon{1 1 4}/onu"), 0);
  for (const char* path : {"/config/interface", "/config/service-port{7}", "/config/nothing"}) {
    EXPECT_EQ(cdb_num_instances(cdb_, path), CONFD_ERR) << path;
    expect_error(CONFD_ERR_BADPATH);
  }
}

TEST_F(ConfdCdb, AClosedSessionAnswersNothing) {
  open_cdb();
  qzconfd_config_session_end(tctx()->vcb_opaque);
  int boolean = 42;
  char text[8] = "42";
  EXPECT_LT(cdb_exists(cdb_, "/config"), 0);
  expect_error(CONFD_ERR_NOSESSION);
  EXPECT_EQ(cdb_get_bool(cdb_, &boolean, "/config/interface/gpon{1 1 3}/upstream-fec"), CONFD_ERR);
  EXPECT_EQ(cdb_get_str(cdb_, text, sizeof text, "/config/gpon{1/1}/slot"), CONFD_ERR);
  EXPECT_EQ(cdb_num_instances(cdb_, "/config/service-port"), CONFD_ERR);
  EXPECT_EQ(boolean, 42);
  EXPECT_STREQ(text, "42");
}

TEST_F(ConfdCdb, WithoutAnAnswerEveryReadFails) {
  open_cdb();
  set_call_hook([](PlatformCall) { return false; });
  int boolean = 42;
  char text[8] = "42";
  EXPECT_LT(cdb_exists(cdb_, "/config"), 0);
  expect_error(CONFD_ERR_UNAVAILABLE);
  EXPECT_EQ(cdb_get_bool(cdb_, &boolean, "/config/interface/gpon{1 1 3}/upstream-fec"), CONFD_ERR);
  expect_error(CONFD_ERR_UNAVAILABLE);
  EXPECT_EQ(cdb_get_str(cdb_, text, sizeof text, "/config/gpon{1/1}/slot"), CONFD_ERR);
  expect_error(CONFD_ERR_UNAVAILABLE);
  EXPECT_EQ(cdb_num_instances(cdb_, "/config/service-port"), CONFD_ERR);
  expect_error(CONFD_ERR_UNAVAILABLE);
  EXPECT_EQ(boolean, 42);
  EXPECT_STREQ(text, "42");
}

}  // namespace
}  // namespace tarnd::test
