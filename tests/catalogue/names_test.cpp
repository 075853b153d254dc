// The catalogue against the dispatch table and the model: none of the three knows a request that
// another lacks. With this every suite that runs over the catalogue covers a new request, too.

#include <gmock/gmock.h>

#include <map>
#include <set>

#include "tests/catalogue/dispatch_table.h"
#include "tests/catalogue/requests.h"
#include "tests/support/model.h"

namespace tarnd::test {
namespace {

using testing::ElementsAreArray;
using testing::IsEmpty;

constexpr const char* kSources = VALIDATION_SOURCES;

/// The nodes at which the model calls each request, in its order.
std::map<std::string, std::vector<std::string>> nodes_of_the_model() {
  std::map<std::string, std::vector<std::string>> nodes;
  for (const store::SchemaNode& node : model().nodes()) {
    for (const store::ValidationPoint& point : node.points) {
      nodes[point.request].push_back(node.path());
    }
  }
  return nodes;
}

TEST(Catalogue, DispatchTableAndModelKnowTheSameRequests) {
  std::map<std::string, std::set<std::string>> names;
  for (const Request& request : requests())
    names["tests/catalogue/requests.cpp"].insert(request.name);
  for (const DispatchRow& row : dispatch_table(kSources)) {
    names["src/validation/gpon_card_valid.cpp"].insert(row.request);
  }
  for (const auto& [request, nodes] : nodes_of_the_model())
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

// The order decides which request a leading part of a name reaches.
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
  std::map<std::string, std::vector<std::string>> expected;
  for (const Request& request : requests()) expected[request.name] = request.nodes;
  EXPECT_EQ(nodes_of_the_model(), expected);
}

TEST(Catalogue, NamesARequestOnce) {
  std::multiset<std::string> names;
  for (const Request& request : requests()) names.insert(request.name);
  for (const std::string& name : names) EXPECT_EQ(names.count(name), 1U) << name;
}

// What runs over the scenarios passes by a request that has none.
TEST(Catalogue, HasAScenarioForEveryRequest) {
  for (const Request& request : requests()) EXPECT_FALSE(request.scenarios.empty()) << request.name;
  std::multiset<std::string> names;
  for (const Scenario& one : scenarios()) names.insert(one.name);
  for (const std::string& name : names) EXPECT_EQ(names.count(name), 1U) << name;
}

}  // namespace
}  // namespace tarnd::test
