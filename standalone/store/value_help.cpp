#include "standalone/store/value_help.h"

#include <cstdint>
#include <limits>
#include <vector>

#include "standalone/nearest_name.h"
#include "standalone/store/input_text.h"

namespace tarnd::store {
namespace {

// The longest list of names that a message shows.
constexpr std::size_t kMostNames = 12;

const lysc_type* type_of(const SchemaNode& leaf) {
  return leaf.kind == NodeKind::kLeafList
             ? reinterpret_cast<const lysc_node_leaflist*>(leaf.lysc)->type
             : reinterpret_cast<const lysc_node_leaf*>(leaf.lysc)->type;
}

bool is_unsigned(LY_DATA_TYPE type) {
  return type == LY_TYPE_UINT8 || type == LY_TYPE_UINT16 || type == LY_TYPE_UINT32 ||
         type == LY_TYPE_UINT64;
}

template <typename Integer>
std::string whole_range() {
  return std::to_string(std::numeric_limits<Integer>::min()) + " to " +
         std::to_string(std::numeric_limits<Integer>::max());
}

std::string whole_range(LY_DATA_TYPE type) {
  switch (type) {
    case LY_TYPE_INT8:
      return whole_range<std::int8_t>();
    case LY_TYPE_INT16:
      return whole_range<std::int16_t>();
    case LY_TYPE_INT32:
      return whole_range<std::int32_t>();
    case LY_TYPE_INT64:
      return whole_range<std::int64_t>();
    case LY_TYPE_UINT8:
      return whole_range<std::uint8_t>();
    case LY_TYPE_UINT16:
      return whole_range<std::uint16_t>();
    case LY_TYPE_UINT32:
      return whole_range<std::uint32_t>();
    default:
      return whole_range<std::uint64_t>();
  }
}

// "1 to 5 or 7"
std::string parts_of(const lysc_range& range, bool unsigned_parts) {
  const auto number = [unsigned_parts](std::uint64_t boundary) {
    return unsigned_parts ? std::to_string(boundary)
                          : std::to_string(static_cast<std::int64_t>(boundary));
  };
  std::string text;
  LY_ARRAY_COUNT_TYPE i = 0;
  LY_ARRAY_FOR(range.parts, i) {
    const std::string low = number(range.parts[i].min_u64);
    const std::string high = number(range.parts[i].max_u64);
    text += (i > 0 ? " or " : "") + low + (low != high ? " to " + high : "");
  }
  return text;
}

std::string number_taken(const lysc_type* type) {
  const lysc_range* range = reinterpret_cast<const lysc_type_num*>(type)->range;
  return "a number from " + (range != nullptr ? parts_of(*range, is_unsigned(type->basetype))
                                              : whole_range(type->basetype));
}

std::vector<std::string_view> names_of(const lysc_type* type) {
  std::vector<std::string_view> names;
  if (type->basetype == LY_TYPE_BOOL) return {"true", "false"};
  if (type->basetype == LY_TYPE_UNION) {
    const auto* members = reinterpret_cast<const lysc_type_union*>(type)->types;
    LY_ARRAY_COUNT_TYPE i = 0;
    LY_ARRAY_FOR(members, i) {
      for (const std::string_view name : names_of(members[i])) names.push_back(name);
    }
  }
  if (type->basetype != LY_TYPE_ENUM) return names;
  const auto* enums = reinterpret_cast<const lysc_type_enum*>(type)->enums;
  LY_ARRAY_COUNT_TYPE i = 0;
  LY_ARRAY_FOR(enums, i) {
    names.emplace_back(enums[i].name);
  }
  return names;
}

std::string listed(const std::vector<std::string_view>& names) {
  std::string text = names.size() > 1 ? "one of " : "";
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (i == kMostNames) return text + ", ...";
    text += (i > 0 ? ", " : "") + std::string(names[i]);
  }
  return text;
}

std::string text_taken(const lysc_type* type) {
  const auto* string = reinterpret_cast<const lysc_type_str*>(type);
  std::string text = "a text";
  if (string->length != nullptr) text += " of " + parts_of(*string->length, true) + " characters";
  return text;
}

std::string taken(const lysc_type* type) {
  switch (type->basetype) {
    case LY_TYPE_EMPTY:
      return "no value";
    case LY_TYPE_BOOL:
      return "true or false";
    case LY_TYPE_ENUM:
      return listed(names_of(type));
    case LY_TYPE_STRING:
      return text_taken(type);
    case LY_TYPE_UNION: {
      std::string text;
      const auto* members = reinterpret_cast<const lysc_type_union*>(type)->types;
      LY_ARRAY_COUNT_TYPE i = 0;
      LY_ARRAY_FOR(members, i) {
        text += (i > 0 ? " or " : "") + taken(members[i]);
      }
      return text;
    }
    default:
      return number_taken(type);
  }
}

std::size_t letters_in(std::string_view text) {
  std::size_t count = 0;
  for (const char c : text) count += (static_cast<unsigned char>(c) & 0xC0) != 0x80 ? 1 : 0;
  return count;
}

bool has_length(const lysc_type* type, std::size_t letters) {
  const lysc_range* length = reinterpret_cast<const lysc_type_str*>(type)->length;
  if (length == nullptr) return true;
  LY_ARRAY_COUNT_TYPE i = 0;
  LY_ARRAY_FOR(length->parts, i) {
    if (letters >= length->parts[i].min_u64 && letters <= length->parts[i].max_u64) return true;
  }
  return false;
}

// The model's own error message of a pattern, if libyang's error is one; it is the same with every
// release of libyang.
std::string words_of_pattern(const lysc_type* type, const ly_ctx* context) {
  const ly_err_item* error = ly_err_first(context);
  const std::string_view message =
      error != nullptr && error->msg != nullptr ? error->msg : std::string_view();
  std::string_view regex;
  const auto* string = reinterpret_cast<const lysc_type_str*>(type);
  LY_ARRAY_COUNT_TYPE i = 0;
  LY_ARRAY_FOR(string->patterns, i) {
    const lysc_pattern& pattern = *string->patterns[i];
    if (pattern.emsg != nullptr && message == pattern.emsg) return pattern.emsg;
    // cppcheck-suppress knownConditionTrueFalse; it considers one round of the loop only
    if (pattern.emsg == nullptr && regex.empty()) regex = pattern.expr;
  }
  return regex.empty() ? "The model refuses it." : "It does not match " + excerpt(regex) + ".";
}

std::string why_text_is_refused(const SchemaNode& leaf, std::string_view text) {
  const lysc_type* type = type_of(leaf);
  const std::string shown =
      leaf.value == ValueKind::kEncrypted ? std::string("the value") : excerpt(text);
  if (leaf.value == ValueKind::kIpv4) return shown + " is no IPv4 address such as 192.0.2.1";
  const std::size_t letters = letters_in(text);
  if (!has_length(type, letters)) {
    return shown + " has " + std::to_string(letters) + " characters, " + text_taken(type) +
           " is needed";
  }
  const ly_ctx* context = leaf.lysc->module->ctx;
  lyd_value_validate(context, leaf.lysc, text.data(), text.size(), nullptr, nullptr, nullptr);
  return shown + " is refused: " + words_of_pattern(type, context);
}

std::vector<const char*> messages_of(const lysc_range* range) {
  if (range == nullptr) return {};
  return {range->emsg};
}

// The error-messages that the model has for values of the type, and null for those that it has not.
std::vector<const char*> messages_of(const lysc_type* type) {
  switch (type->basetype) {
    case LY_TYPE_STRING: {
      const auto* string = reinterpret_cast<const lysc_type_str*>(type);
      std::vector<const char*> messages = messages_of(string->length);
      LY_ARRAY_COUNT_TYPE i = 0;
      LY_ARRAY_FOR(string->patterns, i) {
        messages.push_back(string->patterns[i]->emsg);
      }
      return messages;
    }
    case LY_TYPE_INT8:
    case LY_TYPE_INT16:
    case LY_TYPE_INT32:
    case LY_TYPE_INT64:
    case LY_TYPE_UINT8:
    case LY_TYPE_UINT16:
    case LY_TYPE_UINT32:
    case LY_TYPE_UINT64:
      return messages_of(reinterpret_cast<const lysc_type_num*>(type)->range);
    default:
      return {};
  }
}

// Its own words are no error-message of the model.
std::string message_of_model(const lysc_type* type, std::string_view message_of_libyang) {
  for (const char* message : messages_of(type)) {
    if (message != nullptr && message_of_libyang == message) return message;
  }
  return {};
}

}  // namespace

ModelWords words_of_model(const SchemaNode& leaf, std::string_view text) {
  if (!is_yang_text(text)) return {};
  ly_ctx* context = leaf.lysc->module->ctx;
  ly_err_clean(context, nullptr);
  lyd_value_validate(context, leaf.lysc, text.data(), text.size(), nullptr, nullptr, nullptr);
  const ly_err_item* error = ly_err_first(context);
  if (error == nullptr) return {};
  ModelWords words;
  if (error->apptag != nullptr) words.app_tag = error->apptag;
  if (error->msg != nullptr) words.message = message_of_model(type_of(leaf), error->msg);
  return words;
}

std::string what_it_takes(const SchemaNode& leaf) {
  return taken(type_of(leaf));
}

std::string why_refused(const SchemaNode& leaf, std::string_view text) {
  if (!is_yang_text(text)) return "the value holds a character that no text may hold";
  const lysc_type* type = type_of(leaf);
  if (type->basetype == LY_TYPE_STRING) return why_text_is_refused(leaf, text);
  if (type->basetype == LY_TYPE_EMPTY) return excerpt(text) + " is given; it takes no value";
  std::string why = excerpt(text) + " is not " + what_it_takes(leaf);
  if (const auto meant = nearest(text, names_of(type)); meant.has_value()) {
    why += "; did you mean '" + std::string(*meant) + "'?";
  }
  return why;
}

}  // namespace tarnd::store
