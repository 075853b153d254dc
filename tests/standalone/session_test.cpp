// Validation sessions: sockets, handles, messages, and what their end releases.

#include <set>

#include "session/qzconfd_session.h"
#include "tests/standalone/confd_test.h"

namespace tarnd::test {
namespace {

class Session : public ConfdTest {
 protected:
  void* opaque() { return tctx()->vcb_opaque; }
};

TEST_F(Session, TheContextCarriesWhatCallbacksNeed) {
  ValidationSession& session = open();
  EXPECT_NE(tctx()->vcb_opaque, nullptr);
  ASSERT_NE(tctx()->uinfo, nullptr);
  EXPECT_GT(tctx()->uinfo->usid, 0);
  EXPECT_EQ(qzconfd_maapi_socket_get(opaque()), session.maapi_socket());
  EXPECT_EQ(maapi_exists(session.maapi_socket(), session.context()->thandle, "/config"), 1);
}

TEST_F(Session, NoNumberIsUsedForTwoThings) {
  open();
  const std::set<int> numbers = {sock(), th(), tctx()->uinfo->usid,
                                 qzconfd_config_session_start(opaque()),
                                 qzconfd_config_session_start(opaque())};
  EXPECT_EQ(numbers.size(), 5U);
  EXPECT_GT(*numbers.begin(), 0);
  open();
  EXPECT_FALSE(numbers.contains(sock()));
  EXPECT_FALSE(numbers.contains(th()));
}

TEST_F(Session, BeginRequestSetsTheNameAndForgetsTheText) {
  ValidationSession& session = open();
  std::string name = "onu_gem_check";
  session.begin_request(name);
  name = "changed";
  EXPECT_STREQ(tctx()->validate_opaque, "onu_gem_check");
  confd_trans_seterr(tctx(), "%d", 5);
  EXPECT_EQ(session.error_text(), "5");
  session.begin_request("next");
  EXPECT_STREQ(tctx()->validate_opaque, "next");
  EXPECT_EQ(session.error_text(), std::nullopt);
}

TEST_F(Session, ATextGoesToTheTransactionOfTheContext) {
  ValidationSession& session = open();
  confd_trans_ctx copy = *tctx();
  confd_trans_seterr(&copy, "%s", "a copy of the context is enough");
  EXPECT_EQ(session.error_text(), "a copy of the context is enough");
  confd_trans_ctx other = copy;
  other.thandle += 1000;
  confd_trans_seterr(&other, "%s", "nobody's");
  confd_trans_seterr(nullptr, "%s", "nobody's");
  EXPECT_EQ(session.error_text(), "a copy of the context is enough");
}

TEST_F(Session, ConfigurationSessionsOpenAndClose) {
  ValidationSession& session = open();
  const int first = qzconfd_config_session_start(opaque());
  EXPECT_GT(first, 0);
  EXPECT_EQ(cdb_exists(first, "/config"), 1);
  const int second = qzconfd_config_session_start(opaque());
  EXPECT_EQ(session.open_resources().configuration_sessions, 2);
  qzconfd_config_session_end(opaque());
  EXPECT_LT(cdb_exists(second, "/config"), 0);
  EXPECT_EQ(cdb_exists(first, "/config"), 1);
  qzconfd_config_session_end(opaque());
  qzconfd_config_session_end(opaque());  // harmless
  EXPECT_EQ(session.open_resources().configuration_sessions, 0);
  EXPECT_LT(cdb_exists(first, "/config"), 0);
}

TEST_F(Session, UnknownHandlesGetNoSockets) {
  open();
  int something = 0;
  for (void* handle : {static_cast<void*>(nullptr), static_cast<void*>(&something)}) {
    EXPECT_LT(qzconfd_maapi_socket_get(handle), 0);
    EXPECT_LE(qzconfd_config_session_start(handle), 0);
    qzconfd_config_session_end(handle);
  }
}

TEST_F(Session, WithoutAnAnswerThereAreNoSockets) {
  ValidationSession& session = open();
  fail_call(PlatformCall::qzconfd_maapi_socket_get);
  EXPECT_EQ(qzconfd_maapi_socket_get(opaque()), -1);
  EXPECT_EQ(qzconfd_maapi_socket_get(opaque()), session.maapi_socket());
  fail_call(PlatformCall::qzconfd_config_session_start);
  EXPECT_EQ(qzconfd_config_session_start(opaque()), -1);
  EXPECT_EQ(session.open_resources().configuration_sessions, 0);
  EXPECT_GT(qzconfd_config_session_start(opaque()), 0);
}

TEST_F(Session, ItsEndReleasesWhatIsOpen) {
  ValidationSession& session = open();
  maapi_cursor cursor;
  ASSERT_EQ(maapi_init_cursor(sock(), th(), &cursor, "/config/service-port"), CONFD_OK);
  const char* select[] = {"id"};
  const int query = maapi_query_start(sock(), th(), "/config/service-port", nullptr, 0, 1,
                                      CONFD_QUERY_TAG_VALUE, 1, select, 0, nullptr);
  ASSERT_GT(query, 0);
  const int cdb = qzconfd_config_session_start(opaque());
  EXPECT_EQ(session.open_resources().cursors, 1);
  EXPECT_EQ(session.open_resources().queries, 1);
  EXPECT_EQ(session.open_resources().configuration_sessions, 1);

  const int old_sock = sock();
  const int old_th = th();
  void* old_opaque = opaque();
  const ValidationSession& next = open();
  EXPECT_EQ(maapi_get_next(&cursor), CONFD_ERR);
  confd_query_result* chunk = nullptr;
  EXPECT_EQ(maapi_query_result(old_sock, query, &chunk), CONFD_ERR);
  EXPECT_EQ(maapi_query_result(sock(), query, &chunk), CONFD_ERR);
  EXPECT_LT(cdb_exists(cdb, "/config"), 0);
  EXPECT_EQ(maapi_exists(old_sock, old_th, "/config"), CONFD_ERR);
  EXPECT_NE(qzconfd_maapi_socket_get(old_opaque), old_sock);
  EXPECT_EQ(next.open_resources().cursors, 0);
  EXPECT_EQ(next.open_resources().queries, 0);
  EXPECT_EQ(next.open_resources().configuration_sessions, 0);
}

TEST_F(Session, MessagesReachTheUserSessionOfThatNumber) {
  ValidationSession& session = open();
  const std::string to = std::to_string(tctx()->uinfo->usid);
  EXPECT_EQ(maapi_prio_message(sock(), to.c_str(), "100% first\n"), CONFD_OK);
  EXPECT_EQ(maapi_prio_message(sock(), to.c_str(), "second"), CONFD_OK);
  EXPECT_THAT(session.messages(), testing::ElementsAre("100% first\n", "second"));
}

TEST_F(Session, MessagesToNobodyFail) {
  ValidationSession& session = open();
  for (const std::string& to : {std::to_string(tctx()->uinfo->usid + 1000), std::string("admin"),
                                std::string(), std::to_string(tctx()->uinfo->usid) + "x"}) {
    EXPECT_EQ(maapi_prio_message(sock(), to.c_str(), "lost"), CONFD_ERR) << to;
    expect_error(CONFD_ERR_NOEXISTS);
  }
  const std::string to = std::to_string(tctx()->uinfo->usid);
  EXPECT_EQ(maapi_prio_message(sock() + 1000, to.c_str(), "lost"), CONFD_ERR);
  expect_error(CONFD_ERR_NOSESSION);
  fail_call(PlatformCall::maapi_prio_message);
  EXPECT_EQ(maapi_prio_message(sock(), to.c_str(), "lost"), CONFD_ERR);
  expect_error(CONFD_ERR_UNAVAILABLE);
  EXPECT_THAT(session.messages(), testing::IsEmpty());
}

TEST_F(Session, CallsAreCountedByName) {
  open();
  const std::uint64_t before = calls(PlatformCall::maapi_exists);
  maapi_exists(sock(), th(), "/config");
  maapi_exists(-1, -1, "/config");
  EXPECT_EQ(calls(PlatformCall::maapi_exists), before + 2);
  EXPECT_EQ(to_string(PlatformCall::maapi_exists), "maapi_exists");
  EXPECT_EQ(to_string(PlatformCall::cdb_get_str), "cdb_get_str");
}

TEST_F(Session, TheHookChoosesTheCallThatFails) {
  open();
  std::vector<PlatformCall> seen;
  set_call_hook([&](PlatformCall call) {
    seen.push_back(call);
    return call != PlatformCall::maapi_exists;
  });
  EXPECT_EQ(maapi_exists(sock(), th(), "/config"), CONFD_ERR);
  EXPECT_EQ(maapi_num_instances(sock(), th(), "/config/service-port"), 2);
  EXPECT_THAT(seen,
              testing::ElementsAre(PlatformCall::maapi_exists, PlatformCall::maapi_num_instances));
  set_call_hook({});
  EXPECT_EQ(maapi_exists(sock(), th(), "/config"), 1);
  EXPECT_EQ(seen.size(), 2U);
}

}  // namespace
}  // namespace tarnd::test
