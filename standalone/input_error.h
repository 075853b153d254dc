#pragma once

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>

namespace tarnd {

/// The kinds of errors that a program treats differently.
enum class InputFault : std::uint8_t {
  kOther,             ///< mostly a value that the node cannot have
  kUnknownElement,    ///< no node of this name exists there
  kUnknownNamespace,  ///< an element in a namespace that is not the model's
  kMissingElement,    ///< such as an entry's key
  kBadElement,        ///< a node that cannot be there so: a second time, with a text inside, or
                      ///< beside a node that excludes it
  kUnknownAttribute,  ///< an attribute that the element does not have
  kMissingAttribute,  ///< an attribute that the element needs
  kBadAttribute,      ///< an attribute with a value that it cannot have
  kExists,            ///< what an edit creates exists already
  kMissing,           ///< what an edit deletes, or a whole configuration needs, does not exist
  kMissingChoice      ///< no node of a choice exists, of which one must
};

/// What an error is about. Members are empty if they are not known, or do not apply.
struct InputSubject {
  // With an initializer each, so that the compiler accepts some of them by name.
  // NOLINTBEGIN(readability-redundant-member-init)
  std::string path = {};        ///< of a node, such as "/config/service-port{16}"
  std::string element = {};     ///< a name in the text, or that of the missing key or choice
  std::string attribute = {};   ///< a name in the text
  std::string name_space = {};  ///< of the element
  std::string app_tag = {};     ///< the model's error-app-tag for the value
  std::string message = {};     ///< the model's error-message for the value
  // NOLINTEND(readability-redundant-member-init)
};

/// The user's input is wrong: unreadable text, an unknown node, a value out of range. The text is
/// one line for the user, the subject is for programs.
class InputError : public std::runtime_error {
 public:
  explicit InputError(const std::string& text, std::size_t line = 0,
                      InputFault fault = InputFault::kOther, InputSubject subject = {})
      : std::runtime_error(text), line_(line), fault_(fault), subject_(std::move(subject)) {}

  /// The line of the text that was read, counted from 1, or 0 if the error is in no single line.
  [[nodiscard]] std::size_t line() const { return line_; }
  [[nodiscard]] InputFault fault() const { return fault_; }
  [[nodiscard]] const InputSubject& subject() const { return subject_; }

 private:
  std::size_t line_;
  InputFault fault_;
  InputSubject subject_;
};

}  // namespace tarnd
