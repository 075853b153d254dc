// Queries: the nodes that an expression names, with selected values, in chunks.

#include "tests/standalone/confd_test.h"

namespace tarnd::test {
namespace {

class ConfdQuery : public ConfdTest {
 protected:
  struct Request {
    const char* expression;
    std::vector<const char*> select;
    std::vector<const char*> sort = {};
    int chunk_size = 0;
    int offset = 1;
    confd_query_result_type type = CONFD_QUERY_TAG_VALUE;
    const char* context = nullptr;
  };

  int start(Request request) {
    return maapi_query_start(sock(), th(), request.expression, request.context, request.chunk_size,
                             request.offset, request.type, static_cast<int>(request.select.size()),
                             request.select.data(), static_cast<int>(request.sort.size()),
                             request.sort.data());
  }

  static std::string printed(const confd_value_t& value) {
    if (value.type == C_NOEXISTS) return "-";
    char text[64];
    confd_pp_value(text, sizeof text, &value);
    return text;
  }

  // All results of the query: the values of a result joined by blanks, chunks ended by "|".
  std::vector<std::string> run(const Request& request) {
    std::vector<std::string> texts;
    const int query = start(request);
    EXPECT_GT(query, 0) << confd_lasterr();
    for (;;) {
      confd_query_result* chunk = nullptr;
      if (maapi_query_result(sock(), query, &chunk) != CONFD_OK) return {"error"};
      EXPECT_EQ(chunk->type, CONFD_QUERY_TAG_VALUE);
      EXPECT_EQ(chunk->nelements, static_cast<int>(request.select.size()));
      const int count = chunk->nresults;
      for (int i = 0; i < count; ++i) {
        std::string& text = texts.emplace_back();
        for (int j = 0; j < chunk->nelements; ++j) {
          text += (j > 0 ? " " : "") + printed(chunk->results[i].tv[j].v);
        }
      }
      EXPECT_EQ(maapi_query_free_result(chunk), CONFD_OK);
      if (count == 0) break;
      texts.emplace_back("|");
    }
    EXPECT_EQ(maapi_query_stop(sock(), query), CONFD_OK);
    return texts;
  }
};

TEST_F(ConfdQuery, ReturnsTheSelectedValuesOfEveryResultInOrder) {
  open(gpon_link(3, onu(1)));
  EXPECT_THAT(run({"/config/interface/gpon/onu", {"id", "profile-references/line-profile"}}),
              testing::ElementsAre("1 -", "9 slow", "10 fast", "1 -", "|"));
  EXPECT_THAT(run({"/config/interface/gpon[chassis-id=1 and slot-id=1 and port-id=12]/onu",
                   {"rg-profile"}}),
              testing::ElementsAre("-", "|"));
  EXPECT_THAT(run({"/config/interface/xgspon/onu", {"rg-profile"}}), testing::IsEmpty());
}

TEST_F(ConfdQuery, TagsNameTheSelectedNodesEvenIfTheyDoNotExist) {
  open();
  const int query = start({"/config/interface/gpon[port-id=3]/onu", {"rg-profile"}});
  confd_query_result* chunk = nullptr;
  ASSERT_EQ(maapi_query_result(sock(), query, &chunk), CONFD_OK);
  ASSERT_EQ(chunk->nresults, 2);
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ(CONFD_GET_TAG_TAG(&chunk->results[i].tv[0]), 0x31a8c1d5U);
    EXPECT_EQ(CONFD_GET_TAG_NS(&chunk->results[i].tv[0]), 864307902U);
  }
  EXPECT_EQ(chunk->results[0].tv[0].v.type, C_NOEXISTS);
  EXPECT_EQ(chunk->results[1].tv[0].v.type, C_BUF);
  confd_free_value(&chunk->results[1].tv[0].v);  // the application may, the chunk need not
  maapi_query_free_result(chunk);
}

TEST_F(ConfdQuery, ChunksAndTheOffsetCountFromOne) {
  open(gpon_link(3, onu(1) + onu(2) + onu(3)));
  const Request pairs = {"/config/interface/gpon[port-id=3]/onu", {"id"}, {}, 2};
  EXPECT_THAT(run(pairs), testing::ElementsAre("1", "2", "|", "3", "9", "|", "10", "|"));
  Request later = pairs;
  later.offset = 4;
  EXPECT_THAT(run(later), testing::ElementsAre("9", "10", "|"));
  later.offset = 6;
  EXPECT_THAT(run(later), testing::IsEmpty());
  later.offset = 100;
  EXPECT_THAT(run(later), testing::IsEmpty());

  const int query = start(pairs);
  for (const int offset : {1, 3, 5, 6, 6}) {
    confd_query_result* chunk = nullptr;
    ASSERT_EQ(maapi_query_result(sock(), query, &chunk), CONFD_OK);
    EXPECT_EQ(chunk->offset, offset);
    maapi_query_free_result(chunk);
  }
  maapi_query_stop(sock(), query);
}

TEST_F(ConfdQuery, ChunkSizeZeroIsADefaultSize) {
  std::string onus;
  for (int id = 100; id < 350; ++id) onus += onu(id);
  open(gpon_link(1, onus));
  const auto texts = run({"/config/interface/gpon[port-id=1]/onu", {"id"}, {}, 0});
  EXPECT_EQ(std::count(texts.begin(), texts.end(), "|") + 250, std::ssize(texts));
  EXPECT_EQ(texts.front(), "100");
}

TEST_F(ConfdQuery, SortsByTypeStably) {
  open(gpon_link(3, onu(1, uses_line("slow"))));
  const char* onus = "/config/interface/gpon/onu";
  EXPECT_THAT(run({onus, {"id"}, {"profile-references/line-profile"}}),
              testing::ElementsAre("1", "10", "1", "9", "|"));
  EXPECT_THAT(run({onus, {"id"}, {"profile-references/line-profile", "id"}}),
              testing::ElementsAre("1", "10", "1", "9", "|"));
  EXPECT_THAT(run({onus, {"id", "../port-id"}, {"id"}}),
              testing::ElementsAre("1 3", "1 12", "9 3", "10 3", "|"));
  EXPECT_THAT(run({"/config/interface/gpon", {"port-id"}, {"upstream-fec"}}),
              testing::ElementsAre("3", "12", "|"));
  EXPECT_THAT(run({"/config/profile/gpon/rg-profile/wan-ip-connection/itf-grouping/ports",
                   {"port"},
                   {"vlan"}}),
              testing::ElementsAre("enum<4>", "enum<1>", "|"));
}

TEST_F(ConfdQuery, SelectsContainersLeafListsAndTheResultItself) {
  open();
  EXPECT_THAT(run({"/config/profile/gpon/service-profile/vlan-mapping",
                   {"base:name", "uni/ethernet", "./veip/veip", "match"}}),
              testing::ElementsAre("m1 1 3 - match", "m2 - veip match", "|"));
  EXPECT_THAT(run({"//line-profile/name", {"."}}), testing::ElementsAre("fast", "it's50%", "|"));
}

TEST_F(ConfdQuery, AContextNodeIsWhereRelativeExpressionsStart) {
  open();
  Request request = {"onu", {"id"}};
  request.context = "/config/interface/gpon{1 1 12}";
  EXPECT_THAT(run(request), testing::ElementsAre("1", "|"));
  request.context = "/config/interface/gpon{1 1 4}";
  EXPECT_EQ(start(request), CONFD_ERR);
  expect_error(CONFD_ERR_NOEXISTS);
  request.context = "/config/nothing";
  EXPECT_EQ(start(request), CONFD_ERR);
  expect_error(CONFD_ERR_BADPATH);
}

TEST_F(ConfdQuery, ResultsComeAsStringsToo) {
  open();
  Request request = {"/config/interface/gpon[port-id=3]/onu", {"id", "rg-profile"}};
  request.type = CONFD_QUERY_STRING;
  confd_query_result* chunk = nullptr;
  ASSERT_EQ(maapi_query_result(sock(), start(request), &chunk), CONFD_OK);
  EXPECT_EQ(chunk->type, CONFD_QUERY_STRING);
  EXPECT_STREQ(chunk->results[0].str[0], "9");
  EXPECT_STREQ(chunk->results[0].str[1], "");
  EXPECT_STREQ(chunk->results[1].str[1], "home");
  maapi_query_free_result(chunk);

  request = {"/config/gpon", {"onu-auth-method"}};
  request.type = CONFD_QUERY_STRING;
  ASSERT_EQ(maapi_query_result(sock(), start(request), &chunk), CONFD_OK);
  EXPECT_STREQ(chunk->results[0].str[0], "password");
  maapi_query_free_result(chunk);
}

TEST_F(ConfdQuery, ResultsComeAsKeypathsWithAndWithoutValues) {
  open();
  Request request = {"/config/interface/gpon[port-id=3]/onu", {"rg-profile", "id"}};
  request.type = CONFD_QUERY_HKEYPATH;
  confd_query_result* chunk = nullptr;
  ASSERT_EQ(maapi_query_result(sock(), start(request), &chunk), CONFD_OK);
  char text[128];
  confd_pp_kpath(text, sizeof text, &chunk->results[1].hkp[0]);
  EXPECT_STREQ(text, "/config/interface/gpon{1 1 3}/onu{10}/rg-profile");
  EXPECT_EQ(chunk->results[0].hkp[0].len, 0);
  maapi_query_free_result(chunk);

  request.type = CONFD_QUERY_HKEYPATH_VALUE;
  ASSERT_EQ(maapi_query_result(sock(), start(request), &chunk), CONFD_OK);
  confd_pp_kpath(text, sizeof text, &chunk->results[0].kv[1].hkp);
  EXPECT_STREQ(text, "/config/interface/gpon{1 1 3}/onu{9}/id");
  EXPECT_EQ(CONFD_GET_UINT32(&chunk->results[0].kv[1].val), 9U);
  EXPECT_EQ(chunk->results[0].kv[0].val.type, C_NOEXISTS);
  EXPECT_EQ(printed(chunk->results[1].kv[0].val), "home");
  maapi_query_free_result(chunk);
}

TEST_F(ConfdQuery, BadExpressionsDoNotStart) {
  ValidationSession& session = open();
  const Request cases[] = {
      {"/config/interface/gpon[", {"id"}},
      {"count(/config)", {"id"}},
      {"/config/interface/gpon/onu", {"nothing"}},
      {"/config/interface/gpon", {"onu/id"}},
      {"/config/interface/gpon/onu", {""}},
      {"/config/interface/gpon/onu", {"id"}, {"nothing"}},
      {"/config", {"../x"}},
  };
  for (const Request& request : cases) {
    EXPECT_EQ(start(request), CONFD_ERR) << request.expression << " " << request.select.front();
    expect_error(CONFD_ERR_XPATH);
  }
  for (const Request& request :
       {Request{"/config", {"interface"}, {}, -1}, Request{"/config", {"interface"}, {}, 0, 0},
        Request{"/config", {}}}) {
    EXPECT_EQ(start(request), CONFD_ERR);
    expect_error(CONFD_ERR_PROTOUSAGE);
  }
  EXPECT_EQ(session.open_resources().queries, 0);
}

TEST_F(ConfdQuery, AStoppedQueryIsGone) {
  ValidationSession& session = open();
  const int query = start({"/config/service-port", {"id"}});
  EXPECT_EQ(session.open_resources().queries, 1);
  EXPECT_EQ(maapi_query_stop(sock(), query), CONFD_OK);
  EXPECT_EQ(session.open_resources().queries, 0);
  confd_query_result* chunk = nullptr;
  EXPECT_EQ(maapi_query_result(sock(), query, &chunk), CONFD_ERR);
  expect_error(CONFD_ERR_NOEXISTS);
  EXPECT_EQ(chunk, nullptr);
  EXPECT_EQ(maapi_query_stop(sock(), query), CONFD_ERR);
  EXPECT_EQ(maapi_query_stop(sock() + 1000, query), CONFD_ERR);
  expect_error(CONFD_ERR_NOSESSION);
  EXPECT_EQ(maapi_query_free_result(nullptr), CONFD_OK);
}

TEST_F(ConfdQuery, WithoutAnAnswerEachStepFails) {
  ValidationSession& session = open();
  fail_call(PlatformCall::maapi_query_start);
  EXPECT_EQ(start({"/config/service-port", {"id"}}), CONFD_ERR);
  expect_error(CONFD_ERR_UNAVAILABLE);

  const int query = start({"/config/service-port", {"id"}, {}, 1});
  confd_query_result* chunk = nullptr;
  fail_call(PlatformCall::maapi_query_result);
  EXPECT_EQ(maapi_query_result(sock(), query, &chunk), CONFD_ERR);
  expect_error(CONFD_ERR_UNAVAILABLE);
  EXPECT_EQ(chunk, nullptr);
  ASSERT_EQ(maapi_query_result(sock(), query, &chunk), CONFD_OK);
  EXPECT_EQ(chunk->offset, 1);
  fail_call(PlatformCall::maapi_query_free_result);
  EXPECT_EQ(maapi_query_free_result(chunk), CONFD_OK);

  fail_call(PlatformCall::maapi_query_stop);
  EXPECT_EQ(maapi_query_stop(sock(), query), CONFD_ERR);
  expect_error(CONFD_ERR_UNAVAILABLE);
  EXPECT_EQ(session.open_resources().queries, 1);
  open();  // releases it
}

}  // namespace
}  // namespace tarnd::test
