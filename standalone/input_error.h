#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace tarnd {

/// The kinds of errors that a program treats differently.
enum class InputFault : std::uint8_t {
  kOther,
  kUnknownNode,  ///< the model has no node of this name there
  kExists,       ///< what an edit creates exists already
  kMissing       ///< what an edit deletes, or a whole configuration needs, does not exist
};

/// The user's input is wrong: unreadable text, an unknown node, a value out of range. The text is
/// one line for the user.
class InputError : public std::runtime_error {
 public:
  explicit InputError(const std::string& text, std::size_t line = 0,
                      InputFault fault = InputFault::kOther)
      : std::runtime_error(text), line_(line), fault_(fault) {}

  /// The line of the text that was read, counted from 1, or 0 if the error is in no single line.
  [[nodiscard]] std::size_t line() const { return line_; }
  [[nodiscard]] InputFault fault() const { return fault_; }

 private:
  std::size_t line_;
  InputFault fault_;
};

}  // namespace tarnd
