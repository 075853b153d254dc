#pragma once

#include <string>
#include <string_view>

#include "standalone/store/schema.h"

namespace tarnd::store {

/// The message for a text that is no value of the leaf or leaf-list: "'5000' is not a number from 1
/// to 4094". The text of an encrypted leaf is not shown.
std::string why_refused(const SchemaNode& leaf, std::string_view text);

/// What the model itself says of a text that is no value of the leaf: the error-app-tag and the
/// error-message of the range, length or pattern that it violates. Empty if the model has none.
struct ModelWords {
  std::string app_tag;
  std::string message;
};
ModelWords words_of_model(const SchemaNode& leaf, std::string_view text);

/// The values that the leaf may have: "a number from 0 to 7 or one of any".
std::string what_it_takes(const SchemaNode& leaf);

}  // namespace tarnd::store
