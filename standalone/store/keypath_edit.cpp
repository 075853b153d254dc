#include "standalone/store/keypath_edit.h"

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "standalone/store/input_text.h"
#include "standalone/store/path.h"
#include "standalone/store/path_text.h"
#include "standalone/store/tree_builder.h"
#include "standalone/store/value_help.h"

namespace tarnd::store {
namespace {

constexpr std::string_view kClearText = "$0$";
constexpr std::string_view kEncryptedText = "$8$";
constexpr std::string_view kNameEnds = "/{[=";
constexpr std::string_view kPredicateNameEnds = " =]";

class NoLines : public Locator {
 public:
  [[nodiscard]] std::size_t line() const override { return 1; }
};

bool goes(Operation operation) {
  return operation == Operation::kDelete || operation == Operation::kRemove;
}

// "gpon{chassis-id slot-id port-id}"
std::string entry_form(const SchemaNode& node) {
  if (node.kind == NodeKind::kLeafList) return node.name + "{VALUE}";
  std::string keys;
  for (std::size_t i = 0; i < node.num_keys; ++i) {
    keys += (i > 0 ? " " : "") + node.children[i]->name;
  }
  return node.name + "{" + keys + "}";
}

class KeypathReader {
 public:
  KeypathReader(const Schema& schema, const KeypathEdit& edit)
      : schema_(schema),
        operation_(edit.operation),
        whole_(edit.text),
        text_(edit.text),
        // The analyzer does not see the builder's constructor, which is in another source.
        // NOLINTNEXTLINE(clang-analyzer-optin.cplusplus.UninitializedObject)
        builder_(schema, TreeUse::kChange, no_lines_) {}

  ReadChange read() {
    read_root();
    while (text_.take('/')) {
      if (!text_.at_end()) read_step();
    }
    read_end();
    while (builder_.open_node() != nullptr) builder_.leave();
    ReadChange change = builder_.take_change();
    if (goes(operation_)) change.notes.default_operation = Operation::kNone;
    return change;
  }

 private:
  // A name without the model's prefix.
  std::string_view read_name(std::string_view ends) {
    std::string_view name =
        text_.until([ends](char c) { return ends.find(c) != std::string_view::npos; });
    const std::string prefix = std::string(schema_.prefix()) + ":";
    if (name.starts_with(prefix)) name.remove_prefix(prefix.size());
    return name;
  }

  void read_root() {
    const std::string_view name = text_.take('/') ? read_name(kNameEnds) : std::string_view();
    if (name != schema_.root().name) {
      throw InputError(excerpt(whole_) + " is no path; one begins with /" + schema_.root().name);
    }
    builder_.enter_root();
    refuse_keys(schema_.root());
  }

  void read_step() {
    const std::string_view name = read_name(kNameEnds);
    if (name.empty()) builder_.fail("a name is missing after '/'");
    const SchemaNode& node = builder_.child(name);
    if (node.is_key()) {
      builder_.fail("'" + node.name +
                    "' is a key, which is given with the entry: " + entry_form(*node.parent));
    }
    builder_.enter(node);
    if (node.kind == NodeKind::kList) return read_entry(node);
    if (node.kind == NodeKind::kLeafList) return read_value_of_many(node);
    refuse_keys(node);
  }

  void refuse_keys(const SchemaNode& node) const {
    if (text_.peek() != '{' && text_.peek() != '[') return;
    builder_.fail("'" + node.name + "' is no list, so no keys can follow it");
  }

  [[noreturn]] void refuse_number_of_keys(const SchemaNode& node, std::size_t given) const {
    builder_.fail(
        (given == 0 ? "no key" : std::to_string(given) + (given == 1 ? " key" : " keys")) +
        " given; " + entry_form(node) + " is needed");
  }

  [[nodiscard]] std::vector<std::string> read_braces() {
    std::vector<std::string> keys;
    if (!text_.keys(keys)) builder_.fail("a brace, or a quote inside, is not closed");
    return keys;
  }

  bool take_brace() { return text_.take("{") || text_.take("/{"); }

  void read_entry(const SchemaNode& list) {
    if (!take_brace()) return read_key_predicates(list);
    std::vector<std::string> keys = read_braces();
    if (keys.size() != list.num_keys) refuse_number_of_keys(list, keys.size());
    for (std::size_t i = 0; i < keys.size(); ++i) add_key(*list.children[i], keys[i]);
  }

  void add_key(const SchemaNode& key, std::string& value) {
    make_canonical(key, value);
    builder_.enter(key);
    builder_.text(value);
    builder_.leave();
  }

  void read_key_predicates(const SchemaNode& list) {
    std::size_t given = 0;
    while (text_.take('[')) {
      do {
        const std::string_view name = read_predicate_name();
        const SchemaNode& key = builder_.child(name);
        if (!key.is_key())
          builder_.fail("'" + key.name + "' is no key; " + entry_form(list) + " is needed");
        std::string value = read_literal();
        // The last key makes the entry; later errors are reported with its path.
        if (given == list.num_keys) refuse_number_of_keys(list, given + 1);
        add_key(key, value);
        ++given;
      } while (text_.take("and "));
      end_predicate();
    }
    if (given != list.num_keys) refuse_number_of_keys(list, given);
  }

  void read_value_of_many(const SchemaNode& leaf_list) {
    std::vector<std::string> values;
    if (take_brace()) {
      values = read_braces();
    } else if (text_.take('[')) {
      if (read_predicate_name() != ".") builder_.fail("[.='VALUE'] is needed");
      values.push_back(read_literal());
      end_predicate();
    }
    if (values.size() != 1) refuse_number_of_values(leaf_list);
    make_canonical(leaf_list, values.front());
    builder_.text(values.front());
  }

  [[noreturn]] void refuse_number_of_values(const SchemaNode& leaf_list) const {
    builder_.fail("one value in the path is needed: " + entry_form(leaf_list));
  }

  std::string_view read_predicate_name() {
    text_.skip_blanks();
    const std::string_view name = read_name(kPredicateNameEnds);
    text_.skip_blanks();
    if (!text_.take('=')) builder_.fail("a predicate is not of the form [NAME='VALUE']");
    text_.skip_blanks();
    return name;
  }

  // XPath has no way to write a quote inside the same quotes.
  std::string read_literal() {
    std::string literal;
    if (const char quote = text_.peek(); text_.take('\'') || text_.take('"')) {
      literal = text_.until([quote](char c) { return c == quote; });
      if (!text_.take(quote)) builder_.fail("a quote is not closed");
    } else {
      literal = text_.until([](char c) { return c == ' ' || c == ']'; });
    }
    text_.skip_blanks();
    return literal;
  }

  void end_predicate() {
    if (!text_.take(']')) builder_.fail("a predicate is not closed with ']'");
  }

  void read_end() {
    std::optional<std::string> value;
    if (text_.take('=')) value = text_.rest();
    if (!value.has_value() && !text_.at_end()) {
      builder_.fail("'/' or '=' is needed before " + excerpt(text_.rest()));
    }
    const SchemaNode& node = *builder_.open_node();
    if (goes(operation_)) {
      if (value.has_value()) builder_.fail("a node that goes is named without a value");
    } else if (node.kind == NodeKind::kLeaf) {
      give_value(node, value);
    } else if (value.has_value()) {
      refuse_value_of(node);
    } else if (node.kind == NodeKind::kContainer && operation_ != Operation::kReplace) {
      builder_.fail("a container holds nothing by itself; name a node in it");
    }
    if (operation_ != Operation::kMerge) builder_.operation(operation_);
  }

  [[noreturn]] void refuse_value_of(const SchemaNode& node) const {
    if (node.kind == NodeKind::kLeafList) refuse_number_of_values(node);
    builder_.fail(std::string(node.kind == NodeKind::kList ? "an entry" : "a container") +
                  " takes no value; name a leaf in it");
  }

  void give_value(const SchemaNode& leaf, const std::optional<std::string>& value) {
    if (!value.has_value() && leaf.value != ValueKind::kEmpty) {
      builder_.fail("a value is missing after '='; it takes " + what_it_takes(leaf));
    }
    if (!value.has_value()) return;
    const bool as_in_files = value->starts_with(kClearText) || value->starts_with(kEncryptedText);
    if (leaf.value == ValueKind::kEncrypted && !as_in_files) builder_.text(kClearText);
    builder_.text(*value);
  }

  const Schema& schema_;
  const Operation operation_;
  const NoLines no_lines_;
  const std::string_view whole_;
  PathText text_;
  TreeBuilder builder_;
};

}  // namespace

ReadChange read_keypath_edit(const Schema& schema, const KeypathEdit& edit) {
  return KeypathReader(schema, edit).read();
}

}  // namespace tarnd::store
