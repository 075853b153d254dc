#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>

namespace tarnd {

/// The user's input is wrong: unreadable text, an unknown node, a value out of range. The text is
/// one line for the user.
class InputError : public std::runtime_error {
 public:
  explicit InputError(const std::string& text, std::size_t line = 0)
      : std::runtime_error(text), line_(line) {}

  /// The line of the text that was read, counted from 1, or 0 if the error is in no single line.
  [[nodiscard]] std::size_t line() const { return line_; }

 private:
  std::size_t line_;
};

}  // namespace tarnd
