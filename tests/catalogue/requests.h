#pragma once

#include <compare>
#include <cstdint>
#include <map>
#include <ostream>
#include <set>
#include <string>
#include <variant>
#include <vector>

#include "standalone/platform_calls.h"
#include "tests/catalogue/whole_card.h"

namespace tarnd::test {

/// The result of a call of the plug-in.
struct Outcome {
  int result = 0;
  std::string text = {};      ///< the user's; empty if none was set
  int cursors_left_open = 0;  ///< to the end of the transaction

  // NOLINTNEXTLINE(modernize-use-nullptr): the zero is the compiler's
  friend auto operator<=>(const Outcome&, const Outcome&) = default;
};
std::ostream& operator<<(std::ostream& out, const Outcome& outcome);

/// The answers to which the failure of one call may lead; each of them occurs.
using Answers = std::set<Outcome>;
/// No answer: the failure ends the process.
extern const Answers kEndsTheProcess;
using AnswersOfCalls = std::map<PlatformCall, Answers>;

/// How many keypaths, values and names of nodes are printed as texts.
struct Prints {
  std::uint64_t keypaths = 0;
  std::uint64_t values = 0;
  std::uint64_t names = 0;

  friend bool operator==(const Prints&, const Prints&) = default;
};

/// What a call prints for its verdict, and what the trace adds at the level FLOW and at the level
/// DETAIL.
struct Work {
  Prints verdict = {};
  Prints flow = {};
  Prints detail = {};
};

/// One call of a validator as the daemon makes it, on the `whole_card` after a change that leads
/// through the whole validator.
struct Scenario {
  std::string title =
      {};  ///< the difference from the request's first scenario, for which it is empty
  std::string keypath = {};  ///< if empty, the request's instance
  std::string change = {};
  Outcome answer = {};           ///< if no call fails, on a card with plain names
  AnswersOfCalls failures = {};  ///< the failures that may change the answer; no other does
  Work prints = {};

  // Filled in by `requests`.
  std::string request = {};
  std::string name = {};  ///< the request and the title, such as "onu_gem_check_deleted"
};
std::ostream& operator<<(std::ostream& out, const Scenario& scenario);

/// The process ends with a failed assertion in the request's source.
struct Assertion {
  std::string function;  ///< a regular expression
  std::string expectation;
};

/// Everything that the tests know of a request. It is independent of the dispatch table and of the
/// model, so that both can be compared with it.
struct Request {
  std::string name = {};
  std::string validator = {};
  std::string source = {};                   ///< in src/validation, without ".cpp"
  std::vector<std::string> unit_tests = {};  ///< in tests/unit, without ".cpp"
  std::vector<std::string> nodes = {};       ///< with validation points, in the order of the model
  bool call_once = false;                    ///< for a whole list, not for each of its entries
  std::string instance = {};                 ///< one of these nodes on the `whole_card`
  /// A text that only this validator writes to the trace, or sets, if it is called for the instance
  /// without a change. If empty, its begin record.
  std::string sign = {};
  /// At least one; more if no single change leads through the whole validator.
  std::vector<Scenario> scenarios = {};
  /// The result for a keypath without elements.
  std::variant<Outcome, Assertion> without_elements = {};
  /// Why docs/speed.md does not say how many platform calls it makes; empty when it does.
  std::string unmeasured = {};
};

/// Every request, in the order of the dispatch table.
std::vector<Request> requests(const Names& n = Names(plain_name));

/// The scenarios of all of them.
std::vector<Scenario> scenarios(const Names& n = Names(plain_name));
/// One of them by its name.
Scenario scenario(const std::string& name);

}  // namespace tarnd::test
