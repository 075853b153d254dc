#include "standalone/store/envelope.h"

#include <algorithm>
#include <array>

#include "standalone/store/input_text.h"

namespace tarnd::store {
namespace {

// One of NETCONF's elements that may surround the model's top-level node, or go before it, and the
// one that it is in; "" is the document itself.
struct Surrounding {
  std::string_view parent;
  std::string_view name;
  TreeUse use;
};

constexpr std::string_view kEditConfig = "edit-config";

constexpr std::array kSurroundings{
    Surrounding{"", "rpc", TreeUse::kChange},
    Surrounding{"", "edit-config", TreeUse::kChange},
    Surrounding{"", "config", TreeUse::kChange},
    Surrounding{"rpc", "edit-config", TreeUse::kChange},
    Surrounding{"edit-config", "target", TreeUse::kChange},
    Surrounding{"target", "running", TreeUse::kChange},
    Surrounding{"target", "candidate", TreeUse::kChange},
    Surrounding{"edit-config", "default-operation", TreeUse::kChange},
    Surrounding{"edit-config", "test-option", TreeUse::kChange},
    Surrounding{"edit-config", "error-option", TreeUse::kChange},
    Surrounding{"edit-config", "config", TreeUse::kChange},
    Surrounding{"", "config", TreeUse::kConfiguration},
    Surrounding{"", "data", TreeUse::kConfiguration},
    Surrounding{"", "rpc-reply", TreeUse::kConfiguration},
    Surrounding{"rpc-reply", "data", TreeUse::kConfiguration},
};

constexpr std::array<std::string_view, 3> kAroundRoot{"", "config", "data"};

struct DefaultOperation {
  std::string_view name;
  Operation operation;
};

constexpr std::array kDefaultOperations{DefaultOperation{"merge", Operation::kMerge},
                                        DefaultOperation{"replace", Operation::kReplace},
                                        DefaultOperation{"none", Operation::kNone}};

// A change is tested, and then applied as a whole or not at all.
constexpr std::array<std::string_view, 2> kTestOptions{"test-then-set", "set"};
constexpr std::array<std::string_view, 2> kErrorOptions{"stop-on-error", "rollback-on-error"};

bool is_one_of(std::string_view name, const auto& names) {
  return std::find(names.begin(), names.end(), name) != names.end();
}

std::string_view trimmed(std::string_view text) {
  constexpr std::string_view kWhiteSpace = " \t\r\n";
  const std::size_t begin = text.find_first_not_of(kWhiteSpace);
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(kWhiteSpace) - begin + 1);
}

}  // namespace

void Envelope::fail(const std::string& what, InputFault fault, const InputSubject& subject) const {
  throw InputError(what, locator_.line(), fault, subject);
}

bool Envelope::enter(std::string_view name_space, std::string_view name) {
  const std::string_view parent = open_.empty() ? std::string_view() : open_.back();
  if (name == schema_.root().name && name_space == schema_.namespace_uri()) {
    if (root_seen_) {
      fail("a second top-level '" + schema_.root().name + "'; one is needed",
           InputFault::kBadElement, {.element = schema_.root().name});
    }
    if (!is_one_of(parent, kAroundRoot)) refuse(name_space, name);
    refuse_text();
    root_seen_ = true;
    open_.emplace_back();
    return true;
  }
  const bool known = name_space == kNetconfNamespace &&
                     std::any_of(kSurroundings.begin(), kSurroundings.end(), [&](const auto& row) {
                       return row.parent == parent && row.name == name && row.use == use_;
                     });
  if (!known) refuse(name_space, name);
  refuse_text();
  if (parent == kEditConfig && name != "config") check_parameter_once(name);
  open_.emplace_back(name);
  return false;
}

void Envelope::refuse(std::string_view name_space, std::string_view name) const {
  const std::string needed = "'" + schema_.root().name + "' in the namespace '" +
                             std::string(schema_.namespace_uri()) + "' is needed";
  const std::string found =
      excerpt(name) +
      (name_space.empty() ? " in no namespace" : " in the namespace " + excerpt(name_space));
  const InputFault fault = name_space == schema_.namespace_uri() ? InputFault::kUnknownElement
                                                                 : InputFault::kUnknownNamespace;
  const InputSubject subject{.element = std::string(name), .name_space = std::string(name_space)};
  if (root_seen_) {
    fail(found + " is a second top-level node, after '" + schema_.root().name + "'", fault,
         subject);
  }
  if (open_.empty()) fail("found " + found + " at the top level; " + needed, fault, subject);
  fail("found " + found + " inside '" + open_.back() + "'; " + needed, fault, subject);
}

void Envelope::fail_text(std::string_view element, std::string_view found) const {
  fail("the text " + excerpt(found) + " is in no node of the model", InputFault::kBadElement,
       {.element = std::string(element)});
}

// Text before an element, with both in the same element.
void Envelope::refuse_text() {
  const std::string_view before = trimmed(text_);
  if (!before.empty()) fail_text(open_.back(), before);
  text_.clear();
}

// The parameters of an edit may be given once, and before its content.
void Envelope::check_parameter_once(std::string_view name) {
  if (root_seen_) fail("'" + std::string(name) + "' comes after the edit that it is for");
  if (is_one_of(name, parameters_)) fail("'" + std::string(name) + "' is given twice");
  parameters_.emplace_back(name);
}

void Envelope::text(std::string_view piece) {
  text_ += piece;
}

void Envelope::leave() {
  const std::string name = std::exchange(open_.back(), {});
  open_.pop_back();
  take_parameter(name, trimmed(text_));
  text_.clear();
}

void Envelope::take_parameter(std::string_view name, std::string_view value) {
  if (name == "default-operation") {
    const auto* found =
        std::find_if(kDefaultOperations.begin(), kDefaultOperations.end(),
                     [&](const DefaultOperation& known) { return known.name == value; });
    if (found == kDefaultOperations.end()) {
      fail("default-operation is " + excerpt(value) + "; merge, replace or none is needed");
    }
    default_operation_ = found->operation;
  } else if (name == "test-option") {
    if (!is_one_of(value, kTestOptions)) {
      fail("test-option is " + excerpt(value) + "; test-then-set or set is needed");
    }
  } else if (name == "error-option") {
    if (!is_one_of(value, kErrorOptions)) {
      fail("error-option is " + excerpt(value) +
           "; a change applies whole or not at all: stop-on-error or rollback-on-error is needed");
    }
  } else if (!value.empty()) {
    fail_text(name, value);
  }
}

void Envelope::finish() const {
  if (!root_seen_) fail("there is no '" + schema_.root().name + "' in it");
}

}  // namespace tarnd::store
