#include <gtest/gtest.h>

#include <string>

#include "standalone/store/path.h"
#include "tests/support/model.h"

namespace tarnd::store {
namespace {

std::string reread(const std::string& text) {
  std::string why;
  const auto path = Path::parse(test::model(), text, &why);
  if (!path.has_value()) return "refused: " + why;
  std::string result;
  for (const PathStep& step : path->steps()) {
    result += "/" + step.node->name;
    if (!step.keyed) continue;
    result += "{";
    for (std::size_t i = 0; i < step.keys.size(); ++i) {
      result += (i > 0 ? "|" : "") + step.keys[i];
    }
    result += "}";
  }
  return result;
}

struct Row {
  const char* text;
  const char* read_as;
};

TEST(PathIsRead, InEachOfItsForms) {
  const Row rows[] = {
      {"/config", "/config"},
      {"/base:config/service-port{7}", "/config/service-port{7}"},
      {"/config/interface/gpon/", "/config/interface/gpon"},
      {"/config/interface/gpon{1 1 3}/onu", "/config/interface/gpon{1|1|3}/onu"},
      {"/config/interface/gpon/{1 1 3}/onu", "/config/interface/gpon{1|1|3}/onu"},
      {"/config/interface/gpon{ 1  1 3 }/onu/", "/config/interface/gpon{1|1|3}/onu"},
      {"/config/service-port{007}", "/config/service-port{7}"},
      {"/config/service-port{00}", "/config/service-port{0}"},
      {"/config/gpon{1/1}/onu-auth-method", "/config/gpon{1/1}/onu-auth-method"},
      {"/config/gpon{\"a b\"}", "/config/gpon{a b}"},
      {R"(/config/gpon{"a \"b\" \\ }"})", "/config/gpon{a \"b\" \\ }}"},
      {"/config/gpon{\"\"}", "/config/gpon{}"},
      {"/config/profile/gpon/line-profile{}/gem{1}/gem-id",
       "/config/profile/gpon/line-profile{}/gem{1}/gem-id"},
      {"/config/profile/gpon/rg-profile{r}/wan-ip-connection{w}/itf-grouping/"
       "ports{enum<4>}/vlan",
       "/config/profile/gpon/rg-profile{r}/wan-ip-connection{w}/itf-grouping/ports{wl0}/"
       "vlan"}};
  for (const Row& row : rows) EXPECT_EQ(reread(row.text), row.read_as) << row.text;
}

TEST(PathIsRead, OrRefusedWithTheReason) {
  const Row rows[] = {
      {"", "refused: no node in the path "},
      {"/", "refused: no node in the path /"},
      {"config", "refused: '/' expected in the path config"},
      {"/nowhere", "refused: no node 'nowhere' in the path /nowhere"},
      {"/other:config", "refused: no node 'other:config' in the path /other:config"},
      {"/config/interface/gpon{1 1",
       "refused: a brace is not closed in the path "
       "/config/interface/gpon{1 1"},
      {"/config/gpon{\"a", "refused: a brace is not closed in the path /config/gpon{\"a"},
      {"/config/interface{1}",
       "refused: keys behind 'interface', which is no list, in the path "
       "/config/interface{1}"},
      {"/config/service-port{1}{2}",
       "refused: '/' expected in the path /config/service-port{1}{2}"},
      {"/config/service-port{1}/{2}",
       "refused: keys without a list in the path /config/service-port{1}/{2}"}};
  for (const Row& row : rows) EXPECT_EQ(reread(row.text), row.read_as) << row.text;
}

TEST(PathTest, KnowsEntriesThatCannotExist) {
  const auto impossible = [](const char* text) {
    return Path::parse(test::model(), text, nullptr)->names_impossible_entry();
  };
  EXPECT_TRUE(impossible("/config/service-port{}"));
  EXPECT_TRUE(impossible("/config/interface/gpon{1 1}"));
  EXPECT_TRUE(impossible("/config/interface/gpon{1 1 1 1}/onu"));
  EXPECT_FALSE(impossible("/config/interface/gpon{1 1 1}/onu"));
}

TEST(PathTest, QuotesKeysThatWouldNotReadBack) {
  EXPECT_EQ(quote_key("plain"), "plain");
  EXPECT_EQ(quote_key("1/1"), "1/1");
  EXPECT_EQ(quote_key("a b"), "\"a b\"");
  EXPECT_EQ(quote_key(""), "\"\"");
  EXPECT_EQ(quote_key("a\"b\\}"), R"("a\"b\\}")");
}

}  // namespace
}  // namespace tarnd::store
