#include <gtest/gtest.h>

#include "tests/catalogue/requests.h"
#include "tests/support/suite_name.h"

namespace tarnd::test {
namespace {

/// Does `ctest -R` find a test of this program by the name?
bool is_found(const std::string& name) {
  const testing::UnitTest& program = *testing::UnitTest::GetInstance();
  for (int i = 0; i < program.total_test_suite_count(); ++i) {
    const testing::TestSuite& suite = *program.GetTestSuite(i);
    for (int j = 0; j < suite.total_test_count(); ++j) {
      const std::string test = std::string(suite.name()) + "." + suite.GetTestInfo(j)->name();
      if (test.find(name) != std::string::npos) return true;
    }
  }
  return false;
}

TEST(SuiteNames, LeadFromARequestToItsTests) {
  for (const Request& request : requests()) {
    EXPECT_TRUE(is_found(suite_name(request.name)))
        << "no test is named " << suite_name(request.name) << ", for " << request.name;
  }
}

}  // namespace
}  // namespace tarnd::test
