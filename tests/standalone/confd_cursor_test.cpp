// Cursors: keys entry by entry, and whole entries as value arrays.

#include <algorithm>

#include "tests/standalone/confd_test.h"

namespace tarnd::test {
namespace {

class ConfdCursor : public ConfdTest {
 protected:
  ~ConfdCursor() override {
    for (confd_value_t& value : values_) confd_free_value(&value);
  }

  std::vector<std::string> walk(const char* path) {
    std::vector<std::string> entries;
    maapi_cursor cursor;
    EXPECT_EQ(maapi_init_cursor(sock(), th(), &cursor, "%s", path), CONFD_OK) << path;
    EXPECT_NE(cursor.n, 0);
    EXPECT_EQ(maapi_get_next(&cursor), CONFD_OK);
    while (cursor.n != 0) {
      std::string& keys = entries.emplace_back();
      for (int i = 0; i < cursor.n; ++i) keys += (i > 0 ? " " : "") + printed(cursor.keys[i]);
      EXPECT_EQ(cursor.keys[cursor.n].type, C_NOEXISTS);
      EXPECT_EQ(maapi_get_next(&cursor), CONFD_OK);
    }
    maapi_destroy_cursor(&cursor);
    return entries;
  }

  static std::string printed(const confd_value_t& value) {
    char text[64];
    confd_pp_value(text, sizeof text, &value);
    return text;
  }

  // Room for entries, filled with values that show where nothing was written.
  confd_value_t* room_for(std::size_t values) {
    for (confd_value_t& value : values_) confd_free_value(&value);
    confd_value_t untouched;
    CONFD_SET_INT8(&untouched, 99);
    values_.assign(values, untouched);
    return values_.data();
  }

  [[nodiscard]] std::vector<std::string> texts() const {
    std::vector<std::string> result;
    for (const confd_value_t& value : values_) {
      result.push_back(value.type == C_NOEXISTS ? "-" : printed(value));
    }
    return result;
  }

  std::vector<confd_value_t> values_;
};

TEST_F(ConfdCursor, EntriesComeInKeyOrder) {
  open(gpon_link(7) + gpon_link(3, onu(100)) + gpon_link(3, onu(1)));
  EXPECT_THAT(walk("/config/interface/gpon"), testing::ElementsAre("1 1 3", "1 1 7", "1 1 12"));
  EXPECT_THAT(walk("/config/interface/gpon{1 1 3}/onu"),
              testing::ElementsAre("1", "9", "10", "100"));
  EXPECT_THAT(walk("/config/profile/gpon/line-profile"), testing::ElementsAre("fast", "it's50%"));
  EXPECT_THAT(walk("/config/profile/gpon/rg-profile{home}/wan-ip-connection{internet}/"
                   "itf-grouping/ports/"),
              testing::ElementsAre("enum<1>", "enum<4>"));
}

TEST_F(ConfdCursor, AnEmptyListAndAListWithoutParentHaveNoEntries) {
  open();
  EXPECT_THAT(walk("/config/interface/xgspon"), testing::IsEmpty());
  EXPECT_THAT(walk("/config/interface/xgspon{1 1 3}/onu"), testing::IsEmpty());
}

TEST_F(ConfdCursor, ABadPathShowsAtTheFirstStep) {
  open();
  for (const char* path : {"/config/nothing", "/config/interface", "/config/interface/gpon{1 1 3}",
                           "/config/interface/gpon/onu"}) {
    maapi_cursor cursor;
    EXPECT_EQ(maapi_init_cursor(sock(), th(), &cursor, "%s", path), CONFD_ERR) << path;
    expect_error(CONFD_ERR_BADPATH);
    EXPECT_NE(cursor.n, 0);
    EXPECT_EQ(maapi_get_next(&cursor), CONFD_ERR);
    EXPECT_EQ(cursor.n, 0);
    maapi_destroy_cursor(&cursor);
  }
}

TEST_F(ConfdCursor, WithoutAnAnswerAStepEndsTheWalk) {
  open();
  maapi_cursor cursor;
  fail_call(PlatformCall::maapi_init_cursor);
  EXPECT_EQ(maapi_init_cursor(sock(), th(), &cursor, "/config/service-port"), CONFD_ERR);
  expect_error(CONFD_ERR_UNAVAILABLE);

  let_calls_pass();
  ASSERT_EQ(maapi_init_cursor(sock(), th(), &cursor, "/config/service-port"), CONFD_OK);
  fail_call(PlatformCall::maapi_get_next, 2);
  EXPECT_EQ(maapi_get_next(&cursor), CONFD_OK);
  EXPECT_EQ(cursor.n, 1);
  EXPECT_EQ(maapi_get_next(&cursor), CONFD_ERR);
  expect_error(CONFD_ERR_UNAVAILABLE);
  EXPECT_EQ(cursor.n, 0);
  maapi_destroy_cursor(&cursor);
}

TEST_F(ConfdCursor, DestroyingReleasesAndMayComeTwice) {
  ValidationSession& session = open();
  maapi_cursor cursor;
  ASSERT_EQ(maapi_init_cursor(sock(), th(), &cursor, "/config/service-port"), CONFD_OK);
  EXPECT_EQ(session.open_resources().cursors, 1);
  maapi_cursor copy = cursor;
  maapi_destroy_cursor(&cursor);
  maapi_destroy_cursor(&cursor);
  EXPECT_EQ(session.open_resources().cursors, 0);
  EXPECT_EQ(maapi_get_next(&copy), CONFD_ERR);
  expect_error(CONFD_ERR_NOSESSION);
}

TEST_F(ConfdCursor, ACursorEndsWithItsTransaction) {
  open();
  maapi_cursor cursor;
  ASSERT_EQ(maapi_init_cursor(sock(), th(), &cursor, "/config/service-port"), CONFD_OK);
  open();
  EXPECT_EQ(maapi_get_next(&cursor), CONFD_ERR);
  expect_error(CONFD_ERR_NOSESSION);
  EXPECT_EQ(cursor.n, 0);
  maapi_destroy_cursor(&cursor);
}

TEST_F(ConfdCursor, ServicePortsAreArraysOf26Values) {
  open();
  maapi_cursor cursor;
  ASSERT_EQ(maapi_init_cursor(sock(), th(), &cursor, "/config/service-port"), CONFD_OK);
  int count = 2;
  EXPECT_EQ(maapi_get_objects(&cursor, room_for(52), 26, &count), 26);
  EXPECT_EQ(count, 2);
  EXPECT_THAT(texts(),
              testing::ElementsAre("7", "xgspon", "-", "onu", "-", "gem", "-", "gpon", "1/1/3",
                                   "onu", "10", "gem", "1", "match", "-", "vlan", "100", "-",
                                   "action", "-", "vlan", "-", "-", "-", "-", "-",  //
                                   "100", "xgspon", "1/1/5", "onu", "2", "gem", "-", "gpon", "-",
                                   "onu", "-", "gem", "-", "match", "-", "vlan", "-", "-", "action",
                                   "enum<1>", "vlan", "-", "-", "-", "5000", "-"));
  EXPECT_EQ(values_[0].type, C_UINT32);
  EXPECT_EQ(values_[1].type, C_XMLTAG);
  EXPECT_EQ(values_[8].type, C_BUF);
  EXPECT_EQ(values_[16].type, C_INT32);
  EXPECT_EQ(values_[45].type, C_ENUM_VALUE);
  maapi_destroy_cursor(&cursor);
}

TEST_F(ConfdCursor, BatchesFollowEachOtherUntilTheListEnds) {
  std::string ports;
  for (int id = 1; id <= 65; ++id) ports += gpon_link(1, onu(id));
  open(ports);
  maapi_cursor cursor;
  ASSERT_EQ(maapi_init_cursor(sock(), th(), &cursor, "/config/interface/gpon{1 1 1}/onu"),
            CONFD_OK);
  int count = 64;
  const int size = 20;
  const std::size_t room = 1280;  // for 64
  EXPECT_GT(maapi_get_objects(&cursor, room_for(room), size, &count), 0);
  EXPECT_EQ(count, 64);
  EXPECT_EQ(cursor.n, 1);
  EXPECT_EQ(printed(cursor.keys[0]), "64");
  EXPECT_EQ(printed(values_[room - size]), "64");

  EXPECT_GT(maapi_get_objects(&cursor, room_for(room), size, &count), 0);
  EXPECT_EQ(count, 1);
  EXPECT_EQ(cursor.n, 0);
  EXPECT_EQ(printed(values_[0]), "65");
  EXPECT_EQ(printed(values_[size]), "99");

  count = 64;
  EXPECT_EQ(maapi_get_objects(&cursor, room_for(room), size, &count), 0);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(cursor.n, 0);
  maapi_destroy_cursor(&cursor);
}

TEST_F(ConfdCursor, AFullLastBatchLeavesTheEndToTheNext) {
  open();
  maapi_cursor cursor;
  ASSERT_EQ(maapi_init_cursor(sock(), th(), &cursor, "/config/service-port"), CONFD_OK);
  int count = 2;
  EXPECT_EQ(maapi_get_objects(&cursor, room_for(52), 26, &count), 26);
  EXPECT_NE(cursor.n, 0);
  EXPECT_EQ(maapi_get_objects(&cursor, room_for(52), 26, &count), 0);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(cursor.n, 0);
  maapi_destroy_cursor(&cursor);
}

TEST_F(ConfdCursor, ObjectsContinueAfterTheLastStep) {
  open();
  maapi_cursor cursor;
  ASSERT_EQ(maapi_init_cursor(sock(), th(), &cursor, "/config/service-port"), CONFD_OK);
  EXPECT_EQ(maapi_get_next(&cursor), CONFD_OK);
  int count = 5;
  EXPECT_EQ(maapi_get_objects(&cursor, room_for(130), 26, &count), 26);
  EXPECT_EQ(count, 1);
  EXPECT_EQ(printed(values_[0]), "100");
  maapi_destroy_cursor(&cursor);
}

TEST_F(ConfdCursor, WhatDoesNotFitIsCountedAndNotWritten) {
  open();
  maapi_cursor cursor;
  ASSERT_EQ(maapi_init_cursor(sock(), th(), &cursor, "/config/service-port"), CONFD_OK);
  int count = 2;
  EXPECT_EQ(maapi_get_objects(&cursor, room_for(5), 2, &count), 26);
  EXPECT_EQ(count, 2);
  EXPECT_THAT(texts(), testing::ElementsAre("7", "xgspon", "100", "xgspon", "99"));
  maapi_destroy_cursor(&cursor);
}

// A presence container that exists has its children after it; a missing one is a single value.
TEST_F(ConfdCursor, PresenceContainersListsAndLeafListsHaveTheirPlaces) {
  open();
  maapi_cursor cursor;
  ASSERT_EQ(maapi_init_cursor(sock(), th(), &cursor, "/config/interface/gpon{1 1 3}/onu"),
            CONFD_OK);
  const std::vector<std::string> onu_9 = {
      "9",    "-", "auth-method", "-",           "-", "profile-references",
      "slow", "-", "-",           "rg-override", "-", "-",
      "-",    "-", "snmp",        "-",           "-", "-"};
  const std::vector<std::string> onu_10 = {"10",          "-",
                                           "auth-method", "ZQRT0000ABCD",
                                           "-",           "profile-references",
                                           "fast",        "-",
                                           "home",        "rg-override",
                                           "-",           "-",
                                           "-",           "-",
                                           "snmp",        "-",
                                           "-",           "ip-host",
                                           "10.0.0.5/24", "10.0.0.1"};
  int count = 1;
  EXPECT_EQ(maapi_get_objects(&cursor, room_for(18), 18, &count), 18);
  EXPECT_EQ(texts(), onu_9);
  EXPECT_EQ(maapi_get_objects(&cursor, room_for(20), 20, &count), 20);
  EXPECT_EQ(texts(), onu_10);
  maapi_destroy_cursor(&cursor);

  ASSERT_EQ(maapi_init_cursor(sock(), th(), &cursor,
                              "/config/profile/gpon/service-profile{triple}/vlan-mapping"),
            CONFD_OK);
  count = 2;
  EXPECT_EQ(maapi_get_objects(&cursor, room_for(24), 12, &count), 12);
  EXPECT_THAT(texts(), testing::ElementsAre("m1", "match", "outer", "100", "enum<0>", "uni", "1 3",
                                            "veip", "-", "action", "-", "-",  //
                                            "m2", "match", "outer", "enum<0>", "enum<0>", "uni", "",
                                            "veip", "veip", "action", "-", "-"));
  EXPECT_EQ(values_[6].type, C_LIST);
  EXPECT_EQ(values_[18].type, C_LIST);
  EXPECT_EQ(CONFD_GET_LISTSIZE(&values_[18]), 0U);
  EXPECT_EQ(values_[20].type, C_XMLTAG);
  maapi_destroy_cursor(&cursor);
}

TEST_F(ConfdCursor, EditedLeavesAreAtTheirPlaces) {
  open(
      "<service-port><id>7</id><downstream-rate>9</downstream-rate></service-port>"
      "<service-port><id>7</id><match><ethertype>33</ethertype></match></service-port>"
      "<service-port><id>7</id><action><vlan><cos>1</cos></vlan></action></service-port>"
      "<service-port><id>7</id><admin-enabled>true</admin-enabled></service-port>");
  maapi_cursor cursor;
  ASSERT_EQ(maapi_init_cursor(sock(), th(), &cursor, "/config/service-port"), CONFD_OK);
  int count = 1;
  EXPECT_EQ(maapi_get_objects(&cursor, room_for(26), 26, &count), 26);
  EXPECT_THAT(texts(),
              testing::ElementsAre("7", "xgspon", "-", "onu", "-", "gem", "-", "gpon", "1/1/3",
                                   "onu", "10", "gem", "1", "match", "33", "vlan", "100", "-",
                                   "action", "-", "vlan", "-", "1", "true", "-", "9"));
  maapi_destroy_cursor(&cursor);
}

TEST_F(ConfdCursor, FailedObjectReadsLeaveEverythingAsItWas) {
  open();
  maapi_cursor cursor;
  EXPECT_EQ(maapi_init_cursor(sock(), th(), &cursor, "/config/nothing"), CONFD_ERR);
  int count = 2;
  EXPECT_EQ(maapi_get_objects(&cursor, room_for(52), 26, &count), CONFD_ERR);
  EXPECT_EQ(count, 2);
  EXPECT_NE(cursor.n, 0);

  ASSERT_EQ(maapi_init_cursor(sock(), th(), &cursor, "/config/service-port"), CONFD_OK);
  fail_call(PlatformCall::maapi_get_objects);
  EXPECT_EQ(maapi_get_objects(&cursor, room_for(52), 26, &count), CONFD_ERR);
  expect_error(CONFD_ERR_UNAVAILABLE);
  EXPECT_EQ(count, 2);
  EXPECT_THAT(texts(), testing::Each("99"));
  count = -1;
  EXPECT_EQ(maapi_get_objects(&cursor, room_for(52), 26, &count), CONFD_ERR);
  expect_error(CONFD_ERR_PROTOUSAGE);
  maapi_destroy_cursor(&cursor);
}

}  // namespace
}  // namespace tarnd::test
