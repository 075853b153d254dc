#pragma once

#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "tests/support/card_fixture.h"

namespace tarnd::test {

/// What a profile, VLAN mapping or WAN connection is called in place of a plain name.
using Naming = std::function<std::string(const std::string& plain)>;
std::string plain_name(const std::string& plain);

/// A card on which every validator finds something to read.
std::string whole_card(const Naming& name = plain_name);

/// One call of a validator as the daemon makes it, with the change that leads to it.
struct Validation {
  std::string name;  ///< the request, and what becomes of the change
  std::string request;
  std::string keypath;
  std::string change;

  friend std::ostream& operator<<(std::ostream& out, const Validation& one) {
    return out << one.name;
  }
};

/// On the `whole_card` of the same naming: each of the 26 validators at least once, on a change
/// that it has to follow to the end. More than once where no single change leads through all of a
/// validator.
std::vector<Validation> whole_validations(const Naming& name = plain_name);
/// One of them by its name.
Validation validation(const std::string& name);

/// What came of a call.
struct Outcome {
  int result = 0;
  std::string text;  ///< empty where none was set

  // NOLINTNEXTLINE(modernize-use-nullptr): the zero is the compiler's
  friend auto operator<=>(const Outcome&, const Outcome&) = default;
  friend std::ostream& operator<<(std::ostream& out, const Outcome& outcome) {
    return out << outcome.result << " \"" << outcome.text << '"';
  }
};

/// Calls the plug-in with the keypath in the session's transaction.
Outcome dispatch(ValidationSession& session, const std::string& request,
                 const std::string& keypath);
/// The same with a keypath and a new value of the test's own making.
Outcome dispatch(ValidationSession& session, const std::string& request, confd_hkeypath_t* keypath,
                 confd_value_t* new_value);

/// The validation's name, for a parameterized test.
std::string test_name(const testing::TestParamInfo<Validation>& info);

}  // namespace tarnd::test
