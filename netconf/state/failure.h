#pragma once

#include <stdexcept>
#include <string>

namespace tarnd::netconf::state {

/// A state cannot be opened, read or written. What it says is one line for a user.
class Failure : public std::runtime_error {
 public:
  enum class Cause {
    kOther,
    kNoRoom,  ///< the disk is full, or the file may not grow
    kInUse,   ///< another process writes to it
    kDamaged
  };

  explicit Failure(const std::string& what, Cause cause = Cause::kOther)
      : std::runtime_error(what), cause_(cause) {}

  [[nodiscard]] Cause cause() const { return cause_; }

 private:
  Cause cause_;
};

}  // namespace tarnd::netconf::state
