// Keypaths that end too early or name other nodes: every validator answers as in the catalogue, or
// ends the process with the assertion that names what it expected.

#include <map>

#include "tests/catalogue/dispatch.h"
#include "tests/support/assertion.h"
#include "tests/support/card_fixture.h"
#include "tests/support/trace_capture.h"

// Included last: it includes base.h, whose macros are plain words that other headers use.
#include "tests/support/keypaths.h"

namespace tarnd::test {
namespace {

class Keypaths : public CardFixture {
 protected:
  Keypaths() { running(whole_card()); }

  Outcome ask(const std::string& request, confd_hkeypath_t path) {
    confd_value_t no_value = none();
    return dispatch(open(), request, &path, &no_value);
  }
};

/// Every request that does not require the elements of its keypath, with its answer.
std::map<std::string, Outcome> answers_without_elements() {
  std::map<std::string, Outcome> answers;
  for (const Request& request : requests()) {
    if (const auto* answer = std::get_if<Outcome>(&request.without_elements)) {
      answers.emplace(request.name, *answer);
    }
  }
  return answers;
}

TEST_F(Keypaths, WithoutElementsAreAnswered) {
  for (const TraceLevel level : {TraceLevel::kOff, TraceLevel::kDetail}) {
    for (const auto& [request, answer] : answers_without_elements()) {
      const TraceCapture trace(level);
      EXPECT_EQ(ask(request, keypath({})), answer) << request;
    }
  }
}

TEST_F(Keypaths, OfImpossibleLengthAreAnsweredAsThoseWithoutElements) {
  for (const int length : {-1, MAXDEPTH + 1, 1000000}) {
    for (const auto& [request, answer] : answers_without_elements()) {
      confd_hkeypath_t path = keypath({});
      path.len = length;
      EXPECT_EQ(ask(request, path), answer) << request << " " << length;
    }
  }
}

TEST_F(Keypaths, OfTagsOnlyAreAnsweredAsThoseWithoutElements) {
  const std::vector<std::vector<confd_value_t>> tags(MAXDEPTH, {tag(base_onu)});
  for (const auto& [request, answer] : answers_without_elements()) {
    EXPECT_EQ(ask(request, keypath(tags)), answer) << request;
  }
}

TEST_F(Keypaths, OfUnknownTagsAreAnsweredAsThoseWithoutElements) {
  for (const auto& [request, answer] : answers_without_elements()) {
    EXPECT_EQ(ask(request, keypath({{tag(1)}, {tag(2)}, {tag(3)}})), answer) << request;
  }
}

using KeypathsDeathTest = Keypaths;

TEST_F(KeypathsDeathTest, WithoutElementsAreNamedByTheAssertion) {
  for (const Request& request : requests()) {
    const auto* named = std::get_if<Assertion>(&request.without_elements);
    if (named == nullptr) continue;
    EXPECT_EXIT(ask(request.name, keypath({})), testing::KilledBySignal(SIGABRT),
                assertion(request.source, named->function, named->expectation))
        << request.name;
  }
}

}  // namespace
}  // namespace tarnd::test
