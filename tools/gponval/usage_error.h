#pragma once

#include <stdexcept>

namespace gponval {

/// The user's command cannot be carried out: wrong options, a file that cannot be read or written.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace gponval
