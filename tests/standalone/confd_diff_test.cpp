// maapi_keypath_diff_iterate: which changes are reported, and in which order.

#include <stdexcept>

#include "tests/standalone/confd_test.h"

namespace tarnd::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

// Reports as lines such as "set /config/... = value".
struct Report {
  std::vector<std::string> lines;
  maapi_iter_ret answer = ITER_RECURSE;
};

std::string_view name_of(maapi_iter_op op) {
  constexpr std::string_view kNames[] = {"noop", "created", "deleted", "modified",
                                         "set",  "moved",   "attr"};
  return kNames[op];
}

// cppcheck-suppress constParameter ; the iteration's type of function
maapi_iter_ret note(confd_hkeypath_t* keypath, maapi_iter_op op, confd_value_t* oldv,
                    confd_value_t* newv, void* state) {
  auto& report = *static_cast<Report*>(state);
  char path[256];
  confd_pp_kpath(path, sizeof path, keypath);
  std::string line = std::string(name_of(op)) + " " + path;
  if (newv != nullptr) {
    char value[64];
    confd_pp_value(value, sizeof value, newv);
    line += std::string(" = ") + value;
  }
  if (oldv != nullptr) line += " had an old value";
  report.lines.push_back(line);
  return report.answer;
}

class ConfdDiff : public ConfdTest {
 protected:
  std::vector<std::string> changes(const char* path, maapi_iter_ret answer = ITER_RECURSE) {
    Report report;
    report.answer = answer;
    result_ = maapi_keypath_diff_iterate(sock(), th(), note, 0, &report, "%s", path);
    return report.lines;
  }

  int result_ = 0;
};

TEST_F(ConfdDiff, NothingChangedIsNothingReported) {
  open();
  EXPECT_THAT(changes("/config"), IsEmpty());
  EXPECT_EQ(result_, CONFD_OK);
  open(gpon_link(3, onu(9, uses_line("slow"))));
  EXPECT_THAT(changes("/config"), IsEmpty());
}

TEST_F(ConfdDiff, AModifiedEntryAndTheNewValueOfItsLeaf) {
  open(gpon_link(3, onu(9, uses_line("fast"))));
  EXPECT_THAT(
      changes("/config/interface/gpon"),
      ElementsAre(
          "modified /config/interface/gpon{1 1 3}", "modified /config/interface/gpon{1 1 3}/onu{9}",
          "set /config/interface/gpon{1 1 3}/onu{9}/profile-references/line-profile = fast"));
  EXPECT_THAT(changes("/config/interface/gpon", ITER_CONTINUE),
              ElementsAre("modified /config/interface/gpon{1 1 3}"));
  EXPECT_EQ(result_, CONFD_OK);
}

TEST_F(ConfdDiff, StopEndsTheIterationWithSuccess) {
  open(gpon_link(3, onu(9, uses_line("fast"))) + gpon_link(12, onu(1, uses_line("fast"))));
  EXPECT_THAT(changes("/config", ITER_STOP), ElementsAre("modified /config/interface/gpon{1 1 3}"));
  EXPECT_EQ(result_, CONFD_OK);
}

TEST_F(ConfdDiff, ContinueSkipsTheChildrenAndGoesOn) {
  open(gpon_link(12, onu(1, uses_line("fast"))) + gpon_link(3, onu(9, "", "delete")) +
       gpon_link(5));
  EXPECT_THAT(
      changes("/config/interface", ITER_CONTINUE),
      ElementsAre("modified /config/interface/gpon{1 1 3}", "created /config/interface/gpon{1 1 5}",
                  "modified /config/interface/gpon{1 1 12}"));
}

TEST_F(ConfdDiff, ACreatedEntryReportsItsGivenChildrenAndNoKeys) {
  open(
      "<service-port><id>8</id><gpon><id>1/1/3</id><onu><id>10</id></onu></gpon>"
      "<admin-enabled>true</admin-enabled></service-port>");
  EXPECT_THAT(
      changes("/config/service-port"),
      ElementsAre("created /config/service-port{8}", "set /config/service-port{8}/gpon/id = 1/1/3",
                  "set /config/service-port{8}/gpon/onu/id = 10",
                  "set /config/service-port{8}/admin-enabled = true"));
  EXPECT_THAT(changes("/config/service-port", ITER_CONTINUE),
              ElementsAre("created /config/service-port{8}"));
}

TEST_F(ConfdDiff, DefaultsThatComeWithTheirParentAreNotReported) {
  open(gpon_link(5, "<upstream-fec>true</upstream-fec>"));
  EXPECT_THAT(changes("/config/interface"),
              ElementsAre("created /config/interface/gpon{1 1 5}",
                          "set /config/interface/gpon{1 1 5}/upstream-fec = true"));
}

TEST_F(ConfdDiff, ACreatedEntryReportsItsEntriesPresenceContainersAndEmptyLeaves) {
  open(gpon_link(5, onu(20) + onu(3,
                                  "<snmp><real-time/></snmp><ip-host><address>10.0.0.1/8"
                                  "</address><default-gateway>10.0.0.2</default-gateway>"
                                  "</ip-host>")));
  EXPECT_THAT(changes("/config/interface/gpon{1 1 5}/onu"),
              ElementsAre("created /config/interface/gpon{1 1 5}/onu{3}",
                          "created /config/interface/gpon{1 1 5}/onu{3}/snmp/real-time",
                          "created /config/interface/gpon{1 1 5}/onu{3}/ip-host",
                          "set /config/interface/gpon{1 1 5}/onu{3}/ip-host/address = 10.0.0.1/8",
                          "set /config/interface/gpon{1 1 5}/onu{3}/ip-host/default-gateway = "
                          "10.0.0.2",
                          "created /config/interface/gpon{1 1 5}/onu{20}"));
}

TEST_F(ConfdDiff, TheIterationMayStartBelowACreatedNode) {
  open(gpon_link(5, onu(1, uses_line("fast"))));
  EXPECT_THAT(
      changes("/config/interface/gpon{1 1 5}"),
      ElementsAre(
          "created /config/interface/gpon{1 1 5}", "created /config/interface/gpon{1 1 5}/onu{1}",
          "set /config/interface/gpon{1 1 5}/onu{1}/profile-references/line-profile = fast"));
  EXPECT_THAT(
      changes("/config/interface/gpon{1 1 5}/onu{1}/profile-references"),
      ElementsAre(
          "set /config/interface/gpon{1 1 5}/onu{1}/profile-references/line-profile = fast"));
  EXPECT_THAT(changes("/config/interface/gpon{1 1 5}/onu{2}"), IsEmpty());
  EXPECT_THAT(changes("/config/interface/gpon{1 1 5}/onu{1}/rg-override"), IsEmpty());
}

TEST_F(ConfdDiff, ADeletedEntryReportsNothingBelow) {
  open(gpon_link(3, "", "delete"));
  EXPECT_THAT(changes("/config"), ElementsAre("deleted /config/interface/gpon{1 1 3}"));
}

TEST_F(ConfdDiff, TheIterationMayStartBelowADeletedNode) {
  open(gpon_link(3, "", "delete"));
  EXPECT_THAT(changes("/config/interface/gpon{1 1 3}/onu"),
              ElementsAre("deleted /config/interface/gpon{1 1 3}/onu{9}",
                          "deleted /config/interface/gpon{1 1 3}/onu{10}"));
  EXPECT_THAT(
      changes("/config/interface/gpon{1 1 3}/onu{10}/auth-method"),
      ElementsAre("deleted /config/interface/gpon{1 1 3}/onu{10}/auth-method/serial-number"));
  EXPECT_THAT(changes("/config/interface/gpon{1 1 3}/onu{10}/ip-host"),
              ElementsAre("deleted /config/interface/gpon{1 1 3}/onu{10}/ip-host"));
}

TEST_F(ConfdDiff, PresenceContainersComeAndGoAndAreNotModified) {
  open(gpon_link(3, onu(10, "<ip-host><default-gateway>10.0.0.9</default-gateway></ip-host>") +
                        onu(9,
                            "<ip-host><address>10.0.0.6/24</address><default-gateway>10.0.0.1"
                            "</default-gateway></ip-host>")));
  EXPECT_THAT(changes("/config/interface/gpon{1 1 3}/onu{10}/ip-host"),
              ElementsAre("set /config/interface/gpon{1 1 3}/onu{10}/ip-host/default-gateway = "
                          "10.0.0.9"));
  EXPECT_THAT(changes("/config/interface/gpon{1 1 3}/onu{9}/ip-host", ITER_CONTINUE),
              ElementsAre("created /config/interface/gpon{1 1 3}/onu{9}/ip-host"));
  open(gpon_link(3, onu(10, "<ip-host nc:operation='delete'/>")));
  EXPECT_THAT(changes("/config/interface/gpon{1 1 3}/onu"),
              ElementsAre("modified /config/interface/gpon{1 1 3}/onu{10}",
                          "deleted /config/interface/gpon{1 1 3}/onu{10}/ip-host"));
}

TEST_F(ConfdDiff, EmptyLeavesAreCreatedAndDeleted) {
  open("<gpon><slot>1/1</slot><rg-one-shot-prov nc:operation='delete'/></gpon>" +
       gpon_link(3, onu(9, "<snmp><real-time/></snmp>")));
  EXPECT_THAT(
      changes("/config"),
      ElementsAre("modified /config/gpon{1/1}", "deleted /config/gpon{1/1}/rg-one-shot-prov",
                  "modified /config/interface/gpon{1 1 3}",
                  "modified /config/interface/gpon{1 1 3}/onu{9}",
                  "created /config/interface/gpon{1 1 3}/onu{9}/snmp/real-time"));
}

TEST_F(ConfdDiff, LeavesAreSetAndDeleted) {
  open(gpon_link(3, onu(10,
                        "<description>new</description>"
                        "<rg-profile nc:operation='delete'/>")));
  EXPECT_THAT(changes("/config/interface/gpon{1 1 3}/onu{10}/rg-profile"),
              ElementsAre("deleted /config/interface/gpon{1 1 3}/onu{10}/rg-profile"));
  EXPECT_THAT(changes("/config/interface/gpon{1 1 3}/onu{10}/description"),
              ElementsAre("set /config/interface/gpon{1 1 3}/onu{10}/description = new"));
  EXPECT_THAT(changes("/config/interface/gpon{1 1 3}/onu{10}/auth-method/serial-number"),
              IsEmpty());
}

TEST_F(ConfdDiff, ALeafThatFallsBackToItsDefaultHasThatAsNewValue) {
  open(gpon_link(3, "<upstream-fec nc:operation='delete'/>"));
  EXPECT_THAT(changes("/config/interface/gpon{1 1 3}/upstream-fec"),
              ElementsAre("set /config/interface/gpon{1 1 3}/upstream-fec = true"));
  open(gpon_link(3, "<downstream-fec>true</downstream-fec>"));
  EXPECT_THAT(changes("/config"), IsEmpty());
}

TEST_F(ConfdDiff, LeafListsAreOneChange) {
  const auto mapping = [](const std::string& name, const std::string& ports) {
    return service_profile(
        "triple", "<vlan-mapping><name>" + name + "</name><uni>" + ports + "</uni></vlan-mapping>");
  };
  const char* path = "/config/profile/gpon/service-profile{triple}/vlan-mapping{m1}";
  open(mapping("m1", "<ethernet>2</ethernet>"));
  EXPECT_THAT(changes(path), ElementsAre(std::string("modified ") + path,
                                         "set " + std::string(path) + "/uni/ethernet = 1 2 3"));
  EXPECT_THAT(changes((std::string(path) + "/uni/ethernet").c_str()),
              ElementsAre("set " + std::string(path) + "/uni/ethernet = 1 2 3"));
  open(mapping("m1",
               "<ethernet nc:operation='delete'>1</ethernet>"
               "<ethernet nc:operation='delete'>3</ethernet>"));
  EXPECT_THAT(changes((std::string(path) + "/uni").c_str()),
              ElementsAre("deleted " + std::string(path) + "/uni/ethernet"));
  open(mapping("m3", "<ethernet>4</ethernet><ethernet>2</ethernet>"));
  EXPECT_THAT(changes("/config/profile/gpon/service-profile{triple}/vlan-mapping{m3}"),
              ElementsAre("created /config/profile/gpon/service-profile{triple}/vlan-mapping{m3}",
                          "set /config/profile/gpon/service-profile{triple}/vlan-mapping{m3}/uni/"
                          "ethernet = 2 4"));
  open(service_profile("triple", "", "delete"));
  EXPECT_THAT(changes((std::string(path) + "/uni/ethernet").c_str()),
              ElementsAre("deleted " + std::string(path) + "/uni/ethernet"));
}

TEST_F(ConfdDiff, ABranchThatIsReplacedIsReportedLeafByLeaf) {
  open("<service-port><id>7</id><xgspon><id>1/1/4</id></xgspon></service-port>");
  EXPECT_THAT(changes("/config/service-port{7}"),
              ElementsAre("modified /config/service-port{7}",
                          "set /config/service-port{7}/xgspon/id = 1/1/4",
                          "deleted /config/service-port{7}/gpon/id",
                          "deleted /config/service-port{7}/gpon/onu/id",
                          "deleted /config/service-port{7}/gpon/onu/gem/gem-id"));
  EXPECT_THAT(changes("/config/service-port{7}/gpon/onu"),
              ElementsAre("deleted /config/service-port{7}/gpon/onu/id",
                          "deleted /config/service-port{7}/gpon/onu/gem/gem-id"));
  EXPECT_THAT(changes("/config/service-port{7}/xgspon/id"),
              ElementsAre("set /config/service-port{7}/xgspon/id = 1/1/4"));
}

TEST_F(ConfdDiff, EntriesComeInKeyOrder) {
  open(service_port(50, "gpon", "1/1/3", 1, 1) + deleted_service_port(100) +
       service_port(8, "gpon", "1/1/3", 1, 1) + service_port(7, "gpon", "1/1/3", 1, 1));
  EXPECT_THAT(changes("/config/service-port", ITER_CONTINUE),
              ElementsAre("modified /config/service-port{7}", "created /config/service-port{8}",
                          "created /config/service-port{50}", "deleted /config/service-port{100}"));
}

TEST_F(ConfdDiff, AnEntryReplacedIsAtMostModified) {
  open(
      "<service-port nc:operation=\"replace\"><id>7</id><upstream-rate>1</upstream-rate>"
      "</service-port>");
  EXPECT_THAT(changes("/config/service-port", ITER_CONTINUE),
              ElementsAre("modified /config/service-port{7}"));
}

TEST_F(ConfdDiff, OnlyChangesAtAndBelowThePathAreReported) {
  open(gpon_link(3, onu(9, "<description>x</description>")) +
       gpon_link(12, onu(1, "<description>y</description>")));
  EXPECT_THAT(changes("/config/interface/gpon{1 1 12}/onu"),
              ElementsAre("modified /config/interface/gpon{1 1 12}/onu{1}",
                          "set /config/interface/gpon{1 1 12}/onu{1}/description = y"));
  EXPECT_THAT(changes("/config/interface/gpon{1 1 12}/onu{}"), IsEmpty());
  EXPECT_THAT(changes("/config/profile"), IsEmpty());
}

TEST_F(ConfdDiff, AKeypathNamesWhereItStarts) {
  open(gpon_link(3, onu(9, "<description>x</description>")));
  // The callback's own keypath serves as the start of a second iteration.
  Report inner;
  struct Outer {
    Report* inner;
    ConfdDiff* test;
    int sock;
    int th;
  } outer = {&inner, this, sock(), th()};
  const auto again = [](confd_hkeypath_t* keypath, maapi_iter_op, confd_value_t*, confd_value_t*,
                        void* state) {
    const auto& outer_state = *static_cast<Outer*>(state);
    maapi_keypath_diff_iterate(outer_state.sock, outer_state.th, note, 0, outer_state.inner, "%h",
                               keypath);
    return ITER_STOP;
  };
  EXPECT_EQ(maapi_keypath_diff_iterate(sock(), th(), again, 0, &outer, "/config/interface/gpon"),
            CONFD_OK);
  EXPECT_THAT(inner.lines, ElementsAre("modified /config/interface/gpon{1 1 3}",
                                       "modified /config/interface/gpon{1 1 3}/onu{9}",
                                       "set /config/interface/gpon{1 1 3}/onu{9}/description = x"));
}

TEST_F(ConfdDiff, BadPathsAndCallbacksFail) {
  open(gpon_link(5));
  for (const char* path : {"/config/nothing", "/config/interface/gpon/onu", ""}) {
    EXPECT_THAT(changes(path), IsEmpty()) << path;
    EXPECT_EQ(result_, CONFD_ERR);
    expect_error(CONFD_ERR_BADPATH);
  }
  EXPECT_EQ(changes("/config", static_cast<maapi_iter_ret>(0)).size(), 1U);
  EXPECT_EQ(result_, CONFD_ERR);
  expect_error(CONFD_ERR_PROTOUSAGE);
  fail_call(PlatformCall::maapi_keypath_diff_iterate);
  EXPECT_THAT(changes("/config"), IsEmpty());
  EXPECT_EQ(result_, CONFD_ERR);
  expect_error(CONFD_ERR_UNAVAILABLE);
}

TEST_F(ConfdDiff, AnExceptionOfTheCallbackPassesThrough) {
  open(gpon_link(5));
  const auto throwing = [](confd_hkeypath_t*, maapi_iter_op, confd_value_t*, confd_value_t*,
                           void*) -> maapi_iter_ret { throw std::runtime_error("callback"); };
  EXPECT_THROW(maapi_keypath_diff_iterate(sock(), th(), throwing, 0, nullptr, "/config"),
               std::runtime_error);
}

}  // namespace
}  // namespace tarnd::test
