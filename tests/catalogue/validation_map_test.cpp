// Compares the map of the validators, src/validation/README.md, with the catalogue and the sources.

#include "tests/catalogue/validation_map.h"

#include <gmock/gmock.h>

#include <fstream>
#include <sstream>

#include "tests/catalogue/requests.h"
#include "tests/support/suite_name.h"

namespace tarnd::test {
namespace {

using testing::AnyOf;
using testing::HasSubstr;

std::string contents(const std::string& file) {
  std::ostringstream text;
  text << std::ifstream(file).rdbuf();
  return text.str();
}

TEST(ValidationMap, IsThatOfTheCatalogue) {
  const std::string page = contents(std::string(VALIDATION_SOURCES) + "/README.md");
  EXPECT_EQ(page, with_validation_map(page))
      << "build the target validation_map to bring it up to date";
}

TEST(ValidationMap, NamesTheSourceThatDefinesTheValidator) {
  for (const Request& request : requests()) {
    EXPECT_THAT(contents(std::string(VALIDATION_SOURCES) + "/" + request.source + ".cpp"),
                HasSubstr("\nstd::int32_t " + request.validator + "("))
        << request.name;
  }
}

TEST(ValidationMap, NamesTestsOfTheRequest) {
  for (const Request& request : requests()) {
    EXPECT_FALSE(request.unit_tests.empty()) << request.name;
    for (const std::string& test : request.unit_tests) {
      // Suites with parameters are named by their parameters.
      EXPECT_THAT(
          contents(std::string(UNIT_TESTS) + "/" + test + ".cpp"),
          AnyOf(HasSubstr("(" + suite_name(request.name)), HasSubstr("\"" + request.name + "\"")))
          << request.name << " in " << test;
    }
  }
}

}  // namespace
}  // namespace tarnd::test
