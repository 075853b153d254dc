// MAAPI calls that read one node of the transaction.

#include "tests/standalone/confd_test.h"

namespace tarnd::test {
namespace {

using ConfdReads = ConfdTest;

TEST_F(ConfdReads, ExistsReportsWhatIsThere) {
  open();
  const struct {
    const char* path;
    int exists;
  } cases[] = {
      {"/config/interface/gpon{1 1 3}/upstream-fec", 1},
      {"/config/interface/gpon{1 1 3}/downstream-fec", 1},  // a default in effect
      {"/config/interface/gpon{1 1 3}", 1},
      {"/config/interface/gpon{1 1 4}", 0},
      {"/config/interface/gpon{1 1 3}/onu{10}/description", 0},
      {"/config/interface/gpon{1 1 4}/onu{10}/description", 0},
      {"/config/interface/gpon{1 1 3}/onu{10}/ip-host", 1},
      {"/config/interface/gpon{1 1 3}/onu{9}/ip-host", 0},
      {"/config/interface/gpon{1 1 3}/onu{9}/snmp", 1},  // no presence: exists with its parent
      {"/config/interface/gpon{1 1 3}/onu{8}/snmp", 0},
      {"/config/service-port{7}/xgspon", 1},  // also if its choice has another case
      {"/config/service-port{7}/xgspon/onu", 1},
      {"/config/service-port{7}/xgspon/onu/id", 0},
      {"/config/service-port{8}/xgspon/onu", 0},
      {"/config/gpon{1/1}/rg-one-shot-prov", 1},
      {"/config/profile/gpon/service-profile{triple}/vlan-mapping{m1}/uni/ethernet", 1},
      {"/config/profile/gpon/service-profile{triple}/vlan-mapping{m2}/uni/ethernet", 0},
      {"/config/profile/gpon/service-profile{x}/vlan-mapping{m2}/uni/ethernet", 0},
      {"/config/profile/gpon/service-profile{triple}/vlan-mapping{m1}/uni/ethernet{3}", 1},
      {"/config/profile/gpon/service-profile{triple}/vlan-mapping{m1}/uni/ethernet{2}", 0},
      {"/config/interface/gpon", 1},
      {"/config/interface/xgspon", 0},
      {"/config/interface/xgspon{1 1 3}/onu", 0},
      {"/config", 1},
  };
  for (const auto& c : cases) EXPECT_EQ(maapi_exists(sock(), th(), c.path), c.exists) << c.path;
}

TEST_F(ConfdReads, AnEmptyKeyNamesAnEntryThatDoesNotExist) {
  open();
  EXPECT_EQ(
      maapi_exists(sock(), th(), "/config/profile/gpon/line-profile{%s}/gem{%d}/gem-id", "", 1), 0);
}

TEST_F(ConfdReads, ExistsSeesTheTransaction) {
  open(gpon_link(3, onu(77)) + gpon_link(3, onu(9, "", "delete")));
  EXPECT_EQ(maapi_exists(sock(), th(), "/config/interface/gpon{1 1 3}/onu{77}"), 1);
  EXPECT_EQ(maapi_exists(sock(), th(), "/config/interface/gpon{1 1 3}/onu{9}"), 0);
}

TEST_F(ConfdReads, ExistsFailsOnBadPaths) {
  open();
  for (const char* path : {"/config/nothing", "config", "", "/config/interface/gpon{1 1 3",
                           "/config/interface{1}", "/config/interface/gpon/onu{10}"}) {
    EXPECT_EQ(maapi_exists(sock(), th(), path), CONFD_ERR) << path;
    expect_error(CONFD_ERR_BADPATH);
  }
}

TEST_F(ConfdReads, NumInstancesCountsEntries) {
  open(gpon_link(3, onu(77)));
  EXPECT_EQ(maapi_num_instances(sock(), th(), "/config/interface/gpon"), 2);
  EXPECT_EQ(maapi_num_instances(sock(), th(), "/config/interface/gpon{1 1 3}/onu"), 3);
  EXPECT_EQ(maapi_num_instances(sock(), th(), "/config/interface/xgspon"), 0);
  EXPECT_EQ(maapi_num_instances(sock(), th(), "/config/interface/gpon{1 1 4}/onu"), 0);
}

TEST_F(ConfdReads, NumInstancesFailsIfTheNodeIsNoList) {
  open();
  for (const char* path :
       {"/config/interface", "/config/interface/gpon{1 1 3}", "/config/interface/bpon"}) {
    EXPECT_EQ(maapi_num_instances(sock(), th(), path), CONFD_ERR) << path;
    expect_error(CONFD_ERR_BADPATH);
  }
}

TEST_F(ConfdReads, GetElemReturnsTheLeafsType) {
  open();
  const struct {
    const char* path;
    confd_vtype type;
    const char* text;
  } cases[] = {
      {"/config/interface/gpon{1 1 3}/port-id", C_UINT32, "3"},
      {"/config/interface/gpon{1 1 3}/upstream-fec", C_BOOL, "false"},
      {"/config/interface/gpon{1 1 3}/downstream-fec", C_BOOL, "true"},
      {"/config/gpon{1/1}/onu-auth-method", C_ENUM_VALUE, "enum<2>"},
      {"/config/gpon{1/1}/rg-one-shot-prov", C_XMLTAG, "rg-one-shot-prov"},
      {"/config/interface/gpon{1 1 3}/onu{10}/rg-profile", C_BUF, "home"},
      {"/config/interface/gpon{1 1 3}/onu{10}/ip-host/address", C_IPV4_AND_PLEN, "10.0.0.5/24"},
      {"/config/interface/gpon{1 1 3}/onu{10}/ip-host/default-gateway", C_IPV4, "10.0.0.1"},
      {"/config/service-port{7}/match/vlan/vlan-id", C_INT32, "100"},
      {"/config/profile/gpon/service-profile{triple}/vlan-mapping{m1}/match/outer/cos",
       C_ENUM_VALUE, "enum<0>"},
      {"/config/profile/gpon/service-profile{triple}/vlan-mapping{m1}/uni/ethernet", C_LIST, "1 3"},
      {"/config/profile/gpon/service-profile{triple}/vlan-mapping{m1}/uni/ethernet{3}", C_UINT8,
       "3"},
  };
  for (const auto& c : cases) {
    confd_value_t value;
    ASSERT_EQ(maapi_get_elem(sock(), th(), &value, c.path), CONFD_OK) << c.path;
    EXPECT_EQ(value.type, c.type) << c.path;
    char text[64];
    confd_pp_value(text, sizeof text, &value);
    EXPECT_STREQ(text, c.text) << c.path;
    confd_free_value(&value);
  }
}

TEST_F(ConfdReads, AUnionHasTheTypeOfItsMember) {
  open();
  confd_value_t value;
  const char* path = "/config/profile/gpon/service-profile{triple}/vlan-mapping{%s}/match/outer/%s";
  ASSERT_EQ(maapi_get_elem(sock(), th(), &value, path, "m1", "vlan-id"), CONFD_OK);
  EXPECT_THAT(value.type, testing::AnyOf(C_INT32, C_UINT16));
  ASSERT_EQ(maapi_get_elem(sock(), th(), &value, path, "m1", "cos"), CONFD_OK);
  EXPECT_EQ(value.type, C_ENUM_VALUE);
}

TEST_F(ConfdReads, TextsAreNulTerminatedAndEncryptedOnesStayEncrypted) {
  open();
  confd_value_t value;
  ASSERT_EQ(
      maapi_get_elem(sock(), th(), &value, "/config/profile/gpon/tr069-acs-profile{acs}/password"),
      CONFD_OK);
  const std::string text = CONFD_GET_CBUFPTR(&value);
  EXPECT_EQ(text.size(), CONFD_GET_BUFSIZE(&value));
  EXPECT_THAT(text, testing::StartsWith("$8$"));
  confd_free_value(&value);
}

TEST_F(ConfdReads, TypedReadsGiveTheValue) {
  open();
  int boolean = -1;
  EXPECT_EQ(
      maapi_get_bool_elem(sock(), th(), &boolean, "/config/interface/gpon{1 1 3}/upstream-fec"),
      CONFD_OK);
  EXPECT_EQ(boolean, 0);
  std::uint32_t number = 0;
  EXPECT_EQ(
      maapi_get_u_int32_elem(sock(), th(), &number, "/config/service-port{100}/upstream-rate"),
      CONFD_OK);
  EXPECT_EQ(number, 5000U);
  std::int32_t enumeration = -1;
  EXPECT_EQ(maapi_get_enum_value_elem(sock(), th(), &enumeration,
                                      "/config/service-port{100}/action/type"),
            CONFD_OK);
  EXPECT_EQ(enumeration, 1);
  in_addr address = {};
  EXPECT_EQ(maapi_get_ipv4_elem(sock(), th(), &address,
                                "/config/interface/gpon{1 1 3}/onu{10}/ip-host/default-gateway"),
            CONFD_OK);
  EXPECT_EQ(ntohl(address.s_addr), 0x0A000001U);
  confd_ipv4_prefix prefix = {};
  EXPECT_EQ(maapi_get_ipv4_and_plen_elem(sock(), th(), &prefix,
                                         "/config/interface/gpon{1 1 3}/onu{10}/ip-host/address"),
            CONFD_OK);
  EXPECT_EQ(ntohl(prefix.ip.s_addr), 0x0A000005U);
  EXPECT_EQ(prefix.len, 24);
}

TEST_F(ConfdReads, GetStrCopiesWhatFitsWithItsNul) {
  open();
  const char* path = "/config/interface/gpon{1 1 3}/onu{10}/rg-profile";  // "home"
  char buf[5] = "????";
  EXPECT_EQ(maapi_get_str_elem(sock(), th(), buf, 5, path), CONFD_OK);
  EXPECT_STREQ(buf, "home");

  char untouched[5] = "????";
  for (const int size : {4, 1, 0}) {
    EXPECT_EQ(maapi_get_str_elem(sock(), th(), untouched, size, path), CONFD_ERR) << size;
    expect_error(CONFD_ERR_PROTOUSAGE);
  }
  EXPECT_STREQ(untouched, "????");
}

TEST_F(ConfdReads, GetListReturnsTheValuesInOrder) {
  open();
  confd_value_t* values = nullptr;
  int n = -1;
  ASSERT_EQ(maapi_get_list_elem(sock(), th(), &values, &n,
                                "/config/profile/gpon/service-profile{triple}/vlan-mapping{m1}/"
                                "uni/ethernet"),
            CONFD_OK);
  ASSERT_EQ(n, 2);
  EXPECT_EQ(CONFD_GET_UINT8(&values[0]), 1);
  EXPECT_EQ(CONFD_GET_UINT8(&values[1]), 3);
  std::free(values);
}

// Reads the path with every call that reads a value; returns the calls that succeeded.
class ConfdFailedReads : public ConfdTest {
 protected:
  std::vector<PlatformCall> successes(const char* path) {
    std::vector<PlatformCall> calls;
    const auto note = [&](PlatformCall call, int result) {
      if (result == CONFD_OK) calls.push_back(call);
      if (result != CONFD_OK) errors_.push_back(confd_errno);
    };
    note(PlatformCall::maapi_get_elem, maapi_get_elem(sock(), th(), &value_, path));
    note(PlatformCall::maapi_get_bool_elem, maapi_get_bool_elem(sock(), th(), &int_, path));
    note(PlatformCall::maapi_get_u_int32_elem, maapi_get_u_int32_elem(sock(), th(), &u32_, path));
    note(PlatformCall::maapi_get_enum_value_elem,
         maapi_get_enum_value_elem(sock(), th(), &i32_, path));
    note(PlatformCall::maapi_get_ipv4_elem, maapi_get_ipv4_elem(sock(), th(), &addr_, path));
    note(PlatformCall::maapi_get_ipv4_and_plen_elem,
         maapi_get_ipv4_and_plen_elem(sock(), th(), &prefix_, path));
    note(PlatformCall::maapi_get_str_elem,
         maapi_get_str_elem(sock(), th(), text_, sizeof text_, path));
    note(PlatformCall::maapi_get_list_elem,
         maapi_get_list_elem(sock(), th(), &list_, &list_size_, path));
    return calls;
  }

  void expect_results_untouched() const {
    EXPECT_EQ(value_.type, C_INT64);
    EXPECT_EQ(value_.val.i64, 42);
    EXPECT_EQ(int_, 42);
    EXPECT_EQ(u32_, 42U);
    EXPECT_EQ(i32_, 42);
    EXPECT_EQ(addr_.s_addr, 42U);
    EXPECT_EQ(prefix_.len, 42);
    EXPECT_STREQ(text_, "42");
    EXPECT_EQ(list_, nullptr);
    EXPECT_EQ(list_size_, 42);
  }

  std::vector<int> errors_;
  confd_value_t value_ = {C_INT64, {.i64 = 42}};
  int int_ = 42;
  std::uint32_t u32_ = 42;
  std::int32_t i32_ = 42;
  in_addr addr_ = {42};
  confd_ipv4_prefix prefix_ = {{42}, 42};
  char text_[64] = "42";
  confd_value_t* list_ = nullptr;
  int list_size_ = 42;
};

TEST_F(ConfdFailedReads, AMissingLeafIsNoExists) {
  open();
  for (const char* path :
       {"/config/interface/gpon{1 1 3}/onu{9}/rg-profile",
        "/config/interface/gpon{1 1 4}/onu{9}/rg-profile",
        "/config/interface/gpon{1 1 3}/onu{9}/ip-host/address", "/config/service-port{7}/xgspon/id",
        "/config/profile/gpon/service-profile{triple}/vlan-mapping{m2}/uni/ethernet"}) {
    EXPECT_THAT(successes(path), testing::IsEmpty()) << path;
    EXPECT_THAT(errors_, testing::Each(CONFD_ERR_NOEXISTS)) << path;
  }
  expect_results_untouched();
}

TEST_F(ConfdFailedReads, WhatIsNoLeafIsABadPath) {
  open();
  for (const char* path : {"/config/interface", "/config/interface/gpon", "/config/service-port{7}",
                           "/config/interface/gpon{1 1 3}/onu{10}/ip-host", "/config/nothing"}) {
    EXPECT_THAT(successes(path), testing::IsEmpty()) << path;
    EXPECT_THAT(errors_, testing::Each(CONFD_ERR_BADPATH)) << path;
  }
  expect_results_untouched();
}

TEST_F(ConfdFailedReads, TypedReadsTakeTheirTypeOnly) {
  open();
  const struct {
    const char* path;
    PlatformCall call;
  } cases[] = {
      {"/config/interface/gpon{1 1 3}/upstream-fec", PlatformCall::maapi_get_bool_elem},
      {"/config/interface/gpon{1 1 3}/port-id", PlatformCall::maapi_get_u_int32_elem},
      {"/config/gpon{1/1}/onu-auth-method", PlatformCall::maapi_get_enum_value_elem},
      {"/config/interface/gpon{1 1 3}/onu{10}/ip-host/default-gateway",
       PlatformCall::maapi_get_ipv4_elem},
      {"/config/interface/gpon{1 1 3}/onu{10}/ip-host/address",
       PlatformCall::maapi_get_ipv4_and_plen_elem},
      {"/config/interface/gpon{1 1 3}/onu{10}/rg-profile", PlatformCall::maapi_get_str_elem},
      {"/config/profile/gpon/tr069-acs-profile{acs}/password", PlatformCall::maapi_get_str_elem},
      {"/config/profile/gpon/service-profile{triple}/vlan-mapping{m1}/uni/ethernet",
       PlatformCall::maapi_get_list_elem},
  };
  for (const auto& c : cases) {
    errors_.clear();
    EXPECT_THAT(successes(c.path), testing::ElementsAre(PlatformCall::maapi_get_elem, c.call))
        << c.path;
    EXPECT_THAT(errors_, testing::Each(CONFD_ERR_BADTYPE)) << c.path;
    confd_free_value(&value_);
  }
  for (int i = 0; i < list_size_; ++i) confd_free_value(&list_[i]);
  std::free(list_);
}

TEST_F(ConfdFailedReads, WithoutAnAnswerNothingIsRead) {
  open();
  set_call_hook([](PlatformCall) { return false; });
  EXPECT_THAT(successes("/config/interface/gpon{1 1 3}/port-id"), testing::IsEmpty());
  EXPECT_THAT(errors_, testing::Each(CONFD_ERR_UNAVAILABLE));
  EXPECT_EQ(maapi_exists(sock(), th(), "/config"), CONFD_ERR);
  expect_error(CONFD_ERR_UNAVAILABLE);
  EXPECT_EQ(maapi_num_instances(sock(), th(), "/config/service-port"), CONFD_ERR);
  expect_error(CONFD_ERR_UNAVAILABLE);
  expect_results_untouched();
}

TEST_F(ConfdReads, SocketAndHandleMustBeThoseOfATransaction) {
  open();
  EXPECT_EQ(maapi_exists(sock() + 1000, th(), "/config"), CONFD_ERR);
  expect_error(CONFD_ERR_NOSESSION);
  EXPECT_EQ(maapi_exists(sock(), th() + 1000, "/config"), CONFD_ERR);
  expect_error(CONFD_ERR_NOSESSION);
}

}  // namespace
}  // namespace tarnd::test
