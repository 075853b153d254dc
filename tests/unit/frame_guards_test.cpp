#include <string>
#include <vector>

#include "tests/support/card_fixture.h"
#include "tests/support/platform_in_place.h"
#include "validation_guards.h"
#include "validation_texts.h"

// Its macros would change the headers above.
#include "base.h"

namespace tarnd::test {
namespace {

using AfterFailedStart = valid::ConfigSession::AfterFailedStart;

constexpr const char* kOnus = "/config/interface/gpon/onu";

class Guards : public CardFixture {
 protected:
  Guards() {
    running(gpon_link(1, onu(1, element("rg-profile", "a")) + onu(2) +
                             onu(10, element("rg-profile", "b"))) +
            line_profile("50%d", tcont(1, "bw") + tcont(2, "bw")));
    session = &open();
  }

  ValidationSession* session = nullptr;
};

TEST_F(Guards, ACursorWalksTheListInKeyOrder) {
  std::vector<std::uint32_t> ids;
  valid::Cursor onus(sock(), tctx(), "/config/interface/gpon{%d %d %d}/onu", 1, 1, 1);
  while (onus.next()) {
    EXPECT_EQ(onus.entry().n, 1);
    ids.push_back(CONFD_GET_UINT32(&onus.entry().keys[0]));
  }
  EXPECT_EQ(ids, (std::vector<std::uint32_t>{1, 2, 10}));
  EXPECT_FALSE(onus.next());
}

TEST_F(Guards, ACursorAcceptsATextAsAnArgument) {
  valid::Cursor tconts(sock(), tctx(), "/config/profile/gpon/line-profile{%s}/tcont", "50%d");
  EXPECT_TRUE(tconts.next());
  EXPECT_TRUE(tconts.next());
  EXPECT_FALSE(tconts.next());
}

TEST_F(Guards, ACursorIsClosedWithItsGuardUnlessReleased) {
  {
    valid::Cursor onus(sock(), tctx(), "/config/interface/gpon");
    EXPECT_EQ(session->open_resources().cursors, 1);
  }
  EXPECT_EQ(session->open_resources().cursors, 0);
  {
    valid::Cursor onus(sock(), tctx(), "/config/interface/gpon");
    onus.release();
    EXPECT_FALSE(onus.next());
  }
  EXPECT_EQ(session->open_resources().cursors, 1);
}

TEST_F(Guards, ACursorThatCannotBeReadHasNoEntries) {
  fail_call(PlatformCall::maapi_init_cursor);
  valid::Cursor not_opened(sock(), tctx(), "/config/interface/gpon");
  EXPECT_FALSE(not_opened.next());

  fail_call(PlatformCall::maapi_get_next, 2);
  valid::Cursor cut_short(sock(), tctx(), "/config/interface/gpon{1 1 1}/onu");
  EXPECT_TRUE(cut_short.next());
  EXPECT_FALSE(cut_short.next());
}

TEST_F(Guards, ACursorEndsAtAFailedStepThatLeavesKeys) {
  const InPlace in_place;
  InPlace::entry = [](maapi_cursor& cursor) { cursor.n = 1; };
  fail_call(PlatformCall::maapi_get_next, 2);
  valid::Cursor onus(sock(), tctx(), "/config/interface/gpon{1 1 1}/onu");
  EXPECT_TRUE(onus.next());
  EXPECT_FALSE(onus.next());
}

TEST_F(Guards, AQueryReturnsTheSelectedNodeOfEveryResult) {
  std::vector<std::string> profiles_seen;
  int chunks = 0;
  {
    valid::Query query(sock(), tctx(), kOnus, 2, "rg-profile");
    EXPECT_EQ(session->open_resources().queries, 1);
    while (const confd_query_result* chunk = query.next_chunk()) {
      ++chunks;
      for (int i = 0; i < chunk->nresults; ++i) {
        const confd_tag_value_t& selected = chunk->results[i].tv[0];
        profiles_seen.push_back(selected.v.type == C_NOEXISTS ? "none"
                                                              : valid::value_text(&selected.v));
      }
    }
    EXPECT_FALSE(query.failed());
  }
  EXPECT_EQ(chunks, 2);
  EXPECT_EQ(profiles_seen, (std::vector<std::string>{"a", "none", "b"}));
  EXPECT_EQ(session->open_resources().queries, 0);
  EXPECT_EQ(calls(PlatformCall::maapi_query_result), calls(PlatformCall::maapi_query_free_result));
}

TEST_F(Guards, AQueryLeftEarlyIsStopped) {
  {
    valid::Query query(sock(), tctx(), kOnus, 1, "rg-profile");
    ASSERT_NE(query.next_chunk(), nullptr);
  }
  EXPECT_EQ(session->open_resources().queries, 0);
  EXPECT_EQ(calls(PlatformCall::maapi_query_free_result), 1U);
}

TEST_F(Guards, AQueryThatCannotBeStartedFails) {
  fail_call(PlatformCall::maapi_query_start);
  {
    valid::Query query(sock(), tctx(), kOnus, 0, "rg-profile");
    EXPECT_EQ(query.next_chunk(), nullptr);
    EXPECT_TRUE(query.failed());
  }
  EXPECT_EQ(calls(PlatformCall::maapi_query_result), 0U);
  EXPECT_EQ(calls(PlatformCall::maapi_query_stop), 0U);
}

TEST_F(Guards, AQueryThatBreaksOffFailsAndFreesItsChunksOnce) {
  {
    valid::Query query(sock(), tctx(), kOnus, 1, "rg-profile");
    fail_call(PlatformCall::maapi_query_result, 2);
    EXPECT_NE(query.next_chunk(), nullptr);
    EXPECT_FALSE(query.failed());
    EXPECT_EQ(query.next_chunk(), nullptr);
    EXPECT_TRUE(query.failed());
  }
  EXPECT_EQ(calls(PlatformCall::maapi_query_free_result), 1U);
  EXPECT_EQ(session->open_resources().queries, 0);
}

TEST_F(Guards, AConfigurationSessionIsClosedOnce) {
  {
    valid::ConfigSession committed(tctx(), AfterFailedStart::kLeave);
    EXPECT_TRUE(committed.open());
    EXPECT_GT(committed.socket(), 0);
    EXPECT_EQ(session->open_resources().configuration_sessions, 1);
    committed.end();
    EXPECT_FALSE(committed.open());
    EXPECT_EQ(session->open_resources().configuration_sessions, 0);
  }
  EXPECT_EQ(calls(PlatformCall::qzconfd_config_session_end), 1U);
  { const valid::ConfigSession committed(tctx(), AfterFailedStart::kEnd); }
  EXPECT_EQ(session->open_resources().configuration_sessions, 0);
  EXPECT_EQ(calls(PlatformCall::qzconfd_config_session_end), 2U);
}

TEST_F(Guards, AfterAFailedStartASessionIsClosedOnlyOnRequest) {
  fail_call(PlatformCall::qzconfd_config_session_start);
  {
    const valid::ConfigSession committed(tctx(), AfterFailedStart::kLeave);
    EXPECT_FALSE(committed.open());
  }
  EXPECT_EQ(calls(PlatformCall::qzconfd_config_session_end), 0U);

  fail_call(PlatformCall::qzconfd_config_session_start);
  {
    const valid::ConfigSession committed(tctx(), AfterFailedStart::kEnd);
    EXPECT_FALSE(committed.open());
  }
  EXPECT_EQ(calls(PlatformCall::qzconfd_config_session_end), 1U);
}

TEST_F(Guards, TextsAreCutToTheirSize) {
  confd_hkeypath_t keypath{};
  keypath.len = 2;
  CONFD_SET_XMLTAG(&keypath.v[0][0], base_service_port, base__ns);
  CONFD_SET_XMLTAG(&keypath.v[1][0], base_config, base__ns);
  EXPECT_EQ(valid::keypath_text(&keypath), "/config/service-port");
  EXPECT_EQ(valid::keypath_text(&keypath, 8), "/config");

  std::string long_text(10'000, 'x');
  confd_value_t value;
  CONFD_SET_BUF(&value, reinterpret_cast<unsigned char*>(long_text.data()),
                static_cast<unsigned int>(long_text.size()));
  EXPECT_EQ(valid::value_text(&value), std::string(8'191, 'x'));
  EXPECT_EQ(valid::value_text(&value, 49), std::string(48, 'x'));
  CONFD_SET_UINT32(&value, 4294967295U);
  EXPECT_EQ(valid::value_text(&value), "4294967295");
}

}  // namespace
}  // namespace tarnd::test
