#include <gmock/gmock.h>

#include <set>
#include <sstream>

#include "tests/catalogue/requests.h"
#include "tests/cli/gponval_run.h"

namespace gponval::test {
namespace {

using nlohmann::json;
using ::testing::HasSubstr;
using ::testing::StartsWith;

using PointsTest = CommandTest;

TEST_F(PointsTest, ThereIsEveryRequestInTheOrderOfTheModel) {
  const Outcome run = gponval({"points", "--format", "json"});
  EXPECT_EQ(run.status, 0) << run.err;
  const json points = run.json().at("points");
  std::set<std::string> requests;
  for (const json& point : points) requests.insert(point.at("request"));
  std::set<std::string> known;
  for (const tarnd::test::Request& request : tarnd::test::requests()) known.insert(request.name);
  EXPECT_EQ(requests, known);
  EXPECT_EQ(points.front(), json({{"request", "one_shot_prov_check"},
                                  {"path", "/config/gpon"},
                                  {"call-once", true},
                                  {"priority", 0}}));
  EXPECT_EQ(points.back(), json({{"request", "service_port_delete_all_warning_check"},
                                 {"path", "/config/service-port"},
                                 {"call-once", true},
                                 {"priority", 0}}));
}

TEST_F(PointsTest, TheTextListsEveryPointInALine) {
  const Outcome text = gponval({"points"});
  EXPECT_EQ(text.status, 0) << text.err;
  std::istringstream lines(text.out);
  std::size_t number = 0;
  const json points = gponval({"points", "--format", "json"}).json().at("points");
  for (std::string line; std::getline(lines, line); ++number) {
    ASSERT_LT(number, points.size());
    EXPECT_THAT(line, StartsWith(points.at(number).at("request").get<std::string>()));
    EXPECT_THAT(line, HasSubstr(points.at(number).at("path").get<std::string>()));
    EXPECT_EQ(line.find(" list ") != std::string::npos, points.at(number).at("call-once"));
  }
  EXPECT_EQ(number, points.size());
}

}  // namespace
}  // namespace gponval::test
