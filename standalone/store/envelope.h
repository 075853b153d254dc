#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "standalone/store/tree_builder.h"

namespace tarnd::store {

constexpr std::string_view kNetconfNamespace = "urn:ietf:params:xml:ns:netconf:base:1.0";

/// Checks what surrounds the model's top-level node in a document, which may be NETCONF's own
/// elements. It is called for each element until the top-level node begins, and for each one after
/// that has ended. Throws InputError with the line.
class Envelope {
 public:
  /// The caller owns the schema and the locator.
  Envelope(const Schema& schema, TreeUse use, const Locator& locator)
      : schema_(schema), use_(use), locator_(locator) {}

  /// An element begins. Returns true if it is the model's top-level node.
  bool enter(std::string_view name_space, std::string_view name);
  /// Text inside a surrounding element.
  void text(std::string_view piece);
  /// The element that began last ends: the model's top-level node or one around it.
  void leave();
  /// The document ends. Throws if it had no top-level node of the model.
  void finish() const;

  /// The edit's `default-operation`, or merge if it has none.
  [[nodiscard]] Operation default_operation() const { return default_operation_; }

  [[noreturn]] void fail(const std::string& what, InputFault fault = InputFault::kOther,
                         const InputSubject& subject = {}) const;

 private:
  [[noreturn]] void refuse(std::string_view name_space, std::string_view name) const;
  [[noreturn]] void fail_text(std::string_view element, std::string_view found) const;
  void refuse_text();
  void check_parameter_once(std::string_view name);
  void take_parameter(std::string_view name, std::string_view value);

  const Schema& schema_;
  const TreeUse use_;
  const Locator& locator_;
  std::vector<std::string> open_;  // an empty name is that of the model's top-level node
  std::string text_;
  Operation default_operation_ = Operation::kMerge;
  bool root_seen_ = false;
  std::vector<std::string> parameters_;  // of an edit, as far as they were read
};

}  // namespace tarnd::store
