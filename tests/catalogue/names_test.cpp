// Compares the catalogue with the dispatch table and the model: all three have the same requests.
// So every suite that runs over the catalogue covers a new request, too.

#include <gmock/gmock.h>

#include <fstream>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "tests/catalogue/dispatch_table.h"
#include "tests/catalogue/requests.h"
#include "tests/support/model.h"

namespace tarnd::test {
namespace {

using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::UnorderedElementsAreArray;

constexpr const char* kSources = VALIDATION_SOURCES;

using PointsByRequest = std::map<std::string, std::vector<std::string>>;

std::string point(const std::string& node, bool call_once) {
  return node + (call_once ? " once" : "");
}

/// The nodes at which the model calls each request, in its order.
PointsByRequest points_of_the_model() {
  PointsByRequest points;
  for (const store::SchemaNode& node : model().nodes()) {
    for (const store::ValidationPoint& one : node.points) {
      points[one.request].push_back(point(node.path(), one.call_once));
    }
  }
  return points;
}

/// The requests whose platform calls docs/speed.md counts: the rows "| `request` | ..." of the
/// table under this title.
std::set<std::string> measured_requests() {
  std::ifstream page(SPEED_PAGE);
  std::string line;
  while (std::getline(page, line) && line != "## Platform calls of each request") {
  }
  std::set<std::string> measured;
  const std::string row = "| `";
  while (std::getline(page, line) && line.rfind("## ", 0) != 0) {
    if (line.rfind(row, 0) != 0) continue;
    measured.insert(line.substr(row.size(), line.find('`', row.size()) - row.size()));
  }
  return measured;
}

TEST(Catalogue, DispatchTableAndModelKnowTheSameRequests) {
  std::map<std::string, std::set<std::string>> names;
  for (const Request& request : requests())
    names["tests/catalogue/requests.cpp"].insert(request.name);
  for (const DispatchRow& row : dispatch_table(kSources)) {
    names["src/validation/gpon_card_valid.cpp"].insert(row.request);
  }
  for (const auto& [request, points] : points_of_the_model())
    names["model/base.yang"].insert(request);

  std::set<std::string> all;
  for (const auto& [place, some] : names) all.insert(some.begin(), some.end());
  std::vector<std::string> missing;
  for (const auto& [place, some] : names) {
    for (const std::string& name : all) {
      if (!some.contains(name)) missing.push_back(name + " is not in " + place);
    }
  }
  EXPECT_THAT(missing, IsEmpty());
}

// The order decides which request the beginning of a name calls.
TEST(Catalogue, HasTheRowsOfTheDispatchTableInTheirOrder) {
  std::vector<std::string> expected;
  for (const Request& request : requests()) {
    expected.push_back(request.validator + " for " + request.name);
  }
  std::vector<std::string> rows;
  for (const DispatchRow& row : dispatch_table(kSources)) {
    rows.push_back(row.validator + " for " + row.request);
  }
  EXPECT_THAT(rows, ElementsAreArray(expected));
}

TEST(Catalogue, HasTheNodesThatCallARequest) {
  const PointsByRequest points = points_of_the_model();
  for (const Request& request : requests()) {
    std::vector<std::string> expected;
    for (const std::string& node : request.nodes) {
      expected.push_back(point(node, request.call_once));
    }
    const auto found = points.find(request.name);
    EXPECT_THAT(found != points.end() ? found->second : std::vector<std::string>(),
                ElementsAreArray(expected))
        << request.name;
  }
}

TEST(Catalogue, NamesARequestOnce) {
  std::multiset<std::string> names;
  for (const Request& request : requests()) names.insert(request.name);
  for (const std::string& name : names) EXPECT_EQ(names.count(name), 1U) << name;
}

// Suites that run over the scenarios do not notice a request without one.
TEST(Catalogue, HasAScenarioForEveryRequest) {
  for (const Request& request : requests()) EXPECT_FALSE(request.scenarios.empty()) << request.name;
  std::multiset<std::string> names;
  for (const Scenario& one : scenarios()) names.insert(one.name);
  for (const std::string& name : names) EXPECT_EQ(names.count(name), 1U) << name;
}

// bench/calls holds the table against the plug-in.
TEST(Catalogue, SaysOfWhichRequestsThePlatformCallsAreCounted) {
  std::set<std::string> expected;
  for (const Request& request : requests()) {
    if (request.unmeasured.empty()) expected.insert(request.name);
  }
  EXPECT_THAT(measured_requests(), UnorderedElementsAreArray(expected));
}

}  // namespace
}  // namespace tarnd::test
