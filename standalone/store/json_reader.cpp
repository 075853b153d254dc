#include "standalone/store/json_reader.h"

#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>
#include <vector>

#include "standalone/store/envelope.h"
#include "standalone/store/input_text.h"

namespace tarnd::store {
namespace {

using Json = nlohmann::json;

constexpr std::string_view kNetconfModule = "ietf-netconf";
constexpr std::string_view kOperationMetadata = "ietf-netconf:operation";
constexpr char kMetadataMark = '@';
constexpr std::size_t kDeepest = 200;

// How far the parser has read. The parser reports values, but not their places.
class ReadPosition : public Locator {
 public:
  explicit ReadPosition(std::string_view text) : read(text.data()), counted_(text.data()) {}

  [[nodiscard]] std::size_t line() const override {
    // The last letter that was read may be the line end after a reported number.
    const char* end = read > counted_ ? read - 1 : counted_;
    const std::string_view uncounted(counted_, static_cast<std::size_t>(end - counted_));
    line_ += line_at(uncounted, uncounted.size()) - 1;
    counted_ = end;
    return line_;
  }

  const char* read;

 private:
  // Lines are counted only when one is requested, each once.
  mutable const char* counted_;
  mutable std::size_t line_ = 1;
};

// Passes the text to the parser letter by letter and records the position.
class TrackedLetter {
 public:
  // The names that the standard library wants.
  // NOLINTBEGIN(readability-identifier-naming)
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char*;
  using reference = const char&;
  // NOLINTEND(readability-identifier-naming)

  TrackedLetter(const char* at, ReadPosition& position) : at_(at), position_(&position) {}
  reference operator*() const { return *at_; }
  TrackedLetter& operator++() {
    position_->read = ++at_;
    return *this;
  }
  TrackedLetter operator++(int) {
    TrackedLetter before = *this;
    ++*this;
    return before;
  }
  bool operator==(const TrackedLetter& other) const { return at_ == other.at_; }
  bool operator!=(const TrackedLetter& other) const { return at_ != other.at_; }

 private:
  const char* at_;
  ReadPosition* position_;
};

enum class Where : std::uint8_t {
  kDocument,      // before the top-level object
  kEnvelope,      // an object around the model's top-level node
  kNode,          // the object of a container or an entry
  kEntries,       // the array of a list
  kValues,        // the array of a leaf-list
  kEmptyLeaf,     // the array of a leaf of the type empty
  kMetadata,      // an object of metadata
  kMetadataList,  // the array of metadata of a leaf-list
};

// An object or array that is open.
struct Level {
  Where where = Where::kDocument;
  const SchemaNode* node = nullptr;  // of metadata: the leaf, or null for the node around it
  std::size_t index = 0;             // of the value in an array
  std::vector<std::string> members;  // names that were read
};

class JsonReader {
 public:
  JsonReader(const Schema& schema, TreeUse use, std::string_view text)
      : schema_(schema),
        text_(text),
        position_(text),
        envelope_(schema, use, position_),
        builder_(schema, use, position_) {
    levels_.emplace_back();
  }

  void read() {
    const TrackedLetter begin(text_.data(), position_);
    const TrackedLetter end(text_.data() + text_.size(), position_);
    Json::sax_parse(begin, end, this);
    envelope_.finish();
  }

  [[nodiscard]] TreeBuilder& builder() { return builder_; }
  [[nodiscard]] const Envelope& envelope() const { return envelope_; }

  // What the parser calls, with its own names.
  // NOLINTBEGIN(readability-identifier-naming)
  bool null() {
    Level& level = levels_.back();
    if (level.where == Where::kMetadataList) {
      ++level.index;
    } else if (level.where == Where::kEmptyLeaf) {
      if (level.index++ > 0) fail("needs [null]");
    } else {
      scalar(ValueForm::kEmpty, "null");
    }
    return true;
  }
  bool boolean(bool value) { return scalar(ValueForm::kBoolean, value ? "true" : "false"); }
  bool number_integer(Json::number_integer_t value) {
    return scalar(ValueForm::kNumber, std::to_string(value));
  }
  bool number_unsigned(Json::number_unsigned_t value) {
    return scalar(ValueForm::kNumber, std::to_string(value));
  }
  bool number_float(Json::number_float_t /*value*/, const std::string& text) {
    return scalar(ValueForm::kNumber, text);
  }
  bool string(const std::string& value) { return scalar(ValueForm::kString, value); }
  static bool binary(const Json::binary_t& /*value*/) { return false; }

  bool start_object(std::size_t /*size*/) {
    if (levels_.size() > kDeepest) fail("nested too deeply");
    const Level& level = levels_.back();
    switch (level.where) {
      case Where::kDocument:
        levels_.push_back({Where::kEnvelope, nullptr, 0, {}});
        break;
      case Where::kEnvelope:
        if (member_ == nullptr) {
          levels_.push_back({Where::kEnvelope, nullptr, 0, {}});
        } else {
          builder_.enter_root();
          levels_.push_back({Where::kNode, member_, 0, {}});
        }
        break;
      case Where::kNode:
        begin_object_of_member();
        break;
      case Where::kEntries:
        builder_.enter(*level.node);
        levels_.push_back({Where::kNode, level.node, 0, {}});
        break;
      case Where::kMetadataList:
        levels_.push_back({Where::kMetadata, level.node, level.index, {}});
        break;
      default:
        fail("an object is out of place");
    }
    return true;
  }

  bool key(const std::string& name) {
    Level& level = levels_.back();
    if (std::find(level.members.begin(), level.members.end(), name) != level.members.end()) {
      fail("holds the member " + excerpt(name) + " twice");
    }
    level.members.push_back(name);
    switch (level.where) {
      case Where::kEnvelope:
        enter_envelope(name);
        break;
      case Where::kMetadata:
        if (name != kOperationMetadata) {
          fail("has the unknown metadata " + excerpt(name) + "; '" +
               std::string(kOperationMetadata) + "' is needed");
        }
        break;
      default:
        take_member(name);
    }
    return true;
  }

  bool end_object() {
    const Where where = levels_.back().where;
    levels_.pop_back();
    if (where == Where::kNode) {
      builder_.leave();
      if (builder_.open_node() == nullptr) envelope_.leave();
    } else if (where == Where::kEnvelope && levels_.back().where == Where::kEnvelope) {
      envelope_.leave();
    } else if (where == Where::kMetadata && levels_.back().where == Where::kMetadataList) {
      ++levels_.back().index;
    }
    return true;
  }

  bool start_array(std::size_t /*size*/) {
    const Level& level = levels_.back();
    if (level.where != Where::kNode) {
      fail(level.where == Where::kDocument ? "found an array; an object is needed"
                                           : "an array is out of place");
    }
    if (is_metadata_) {
      if (member_ == nullptr || member_->kind != NodeKind::kLeafList) fail("needs an object");
      levels_.push_back({Where::kMetadataList, member_, 0, {}});
    } else if (member_->kind == NodeKind::kList) {
      levels_.push_back({Where::kEntries, member_, 0, {}});
    } else if (member_->kind == NodeKind::kLeafList) {
      levels_.push_back({Where::kValues, member_, 0, {}});
    } else if (member_->value == ValueKind::kEmpty) {
      levels_.push_back({Where::kEmptyLeaf, member_, 0, {}});
    } else {
      fail(excerpt(member_->name) + " is an array; " + wanted(*member_) + " is needed");
    }
    return true;
  }

  bool end_array() {
    const Level level = levels_.back();
    levels_.pop_back();
    if (level.where == Where::kEmptyLeaf) {
      if (level.index != 1) fail(excerpt(level.node->name) + " needs [null]");
      value(*level.node, ValueForm::kEmpty, "");
    }
    return true;
  }

  bool parse_error(std::size_t position, const std::string& /*last_token*/,
                   const Json::exception& error) {
    throw InputError("not JSON: " + reason_of(error),
                     line_at(text_, position > 0 ? position - 1 : 0));
  }
  // NOLINTEND(readability-identifier-naming)

 private:
  [[noreturn]] void fail(const std::string& what) const {
    if (builder_.open_node() != nullptr) builder_.fail(what);
    envelope_.fail(what);
  }

  // The parser's message without its number, its place and the bytes that it read last.
  static std::string reason_of(const Json::exception& error) {
    constexpr int kNumberOverflow = 406;
    if (error.id == kNumberOverflow) return "a number has too many digits";
    std::string text = error.what();
    const std::size_t column = text.find("column ");
    const std::size_t colon = text.find(": ", column != std::string::npos ? column : 0);
    if (colon != std::string::npos) text.erase(0, colon + 2);
    const std::size_t last = text.find("; last read");
    if (last == std::string::npos) return text;
    const std::size_t expected = text.find("; expected", last);
    text.erase(last, expected != std::string::npos ? expected - last : expected);
    return text;
  }

  static std::string wanted(const SchemaNode& node) {
    switch (node.kind) {
      case NodeKind::kList:
        return "an array of objects";
      case NodeKind::kLeafList:
        return "an array of values";
      case NodeKind::kLeaf:
        return node.value == ValueKind::kEmpty ? "[null]" : "a value";
      default:
        return "an object";
    }
  }

  bool scalar(ValueForm form, const std::string& text) {
    const Level& level = levels_.back();
    switch (level.where) {
      case Where::kDocument:
        fail("found a value; an object is needed");
      case Where::kEnvelope:
        if (member_ != nullptr) fail(excerpt(member_->name) + " needs an object");
        envelope_.text(text);
        envelope_.leave();
        break;
      case Where::kNode:
        if (is_metadata_) fail("metadata needs an object");
        if (member_->kind != NodeKind::kLeaf) {
          fail(excerpt(member_->name) + " is a value; " + wanted(*member_) + " is needed");
        }
        value(*member_, form, text);
        break;
      case Where::kValues:
        value(*level.node, form, text);
        break;
      case Where::kEmptyLeaf:
        fail(excerpt(level.node->name) + " needs [null]");
      case Where::kMetadata:
        take_operation(level, form, text);
        break;
      default:
        fail("a value is out of place; an object is needed");
    }
    return true;
  }

  void value(const SchemaNode& node, ValueForm form, const std::string& text) {
    builder_.enter(node);
    builder_.form(form);
    builder_.text(text);
    builder_.leave();
  }

  void begin_object_of_member() {
    if (is_metadata_) {
      const bool of_values = member_ != nullptr && member_->kind == NodeKind::kLeafList;
      if (of_values) fail("metadata of a leaf-list is an array, with an object for each value");
      levels_.push_back({Where::kMetadata, member_, 0, {}});
      return;
    }
    if (member_->kind != NodeKind::kContainer && member_->kind != NodeKind::kPresence) {
      fail(excerpt(member_->name) + " is an object; " + wanted(*member_) + " is needed");
    }
    builder_.enter(*member_);
    levels_.push_back({Where::kNode, member_, 0, {}});
  }

  // A name is "module:name", or the name alone if the module is that of the node around it.
  void enter_envelope(std::string_view name) {
    const std::size_t colon = name.find(':');
    if (colon == std::string_view::npos) {
      fail(excerpt(name) + " has no module; '" + std::string(module()) + ":" + schema_.root().name +
           "' is needed");
    }
    const std::string_view of = name.substr(0, colon);
    const std::string_view name_space = of == module()         ? schema_.namespace_uri()
                                        : of == kNetconfModule ? kNetconfNamespace
                                                               : of;
    member_ = envelope_.enter(name_space, name.substr(colon + 1)) ? &schema_.root() : nullptr;
  }

  void take_member(std::string_view name) {
    is_metadata_ = name.front() == kMetadataMark;
    if (is_metadata_) name.remove_prefix(1);
    if (is_metadata_ && builder_.use() == TreeUse::kConfiguration) {
      fail("has metadata; a configuration has none, a change may");
    }
    if (is_metadata_ && name.empty()) {
      member_ = nullptr;
      return;
    }
    const std::size_t colon = name.find(':');
    if (colon != std::string_view::npos) {
      if (name.substr(0, colon) != module()) {
        fail("holds " + excerpt(name) + " of another module; '" + std::string(module()) +
             "' is needed");
      }
      name.remove_prefix(colon + 1);
    }
    member_ = &builder_.child(name);
    check_member_once(name);
    const bool of_leaf = member_->kind == NodeKind::kLeaf || member_->kind == NodeKind::kLeafList;
    if (is_metadata_ && !of_leaf) {
      fail("has '@" + std::string(name) + "'; the metadata of " + std::string(name) +
           " is '@' inside it");
    }
  }

  // "base:id" is another name of "id".
  void check_member_once(std::string_view name) {
    std::vector<std::string>& members = levels_.back().members;
    std::string plain = (is_metadata_ ? "@" : "") + std::string(name);
    if (members.back() == plain) return;
    if (std::find(members.begin(), members.end(), plain) != members.end()) {
      fail("holds the member " + excerpt(plain) + " twice");
    }
    members.back() = std::move(plain);
  }

  void take_operation(const Level& level, ValueForm form, const std::string& text) {
    if (form != ValueForm::kString) fail("an operation is a string");
    const Operation operation = builder_.operation_named(text);
    if (level.node == nullptr) {
      builder_.operation(operation);
    } else {
      builder_.operation_of(*level.node, level.index, operation);
    }
  }

  [[nodiscard]] std::string_view module() const { return schema_.root().lysc->module->name; }

  const Schema& schema_;
  std::string_view text_;
  ReadPosition position_;
  Envelope envelope_;
  TreeBuilder builder_;
  std::vector<Level> levels_;
  // The member whose value is next. Null around the top-level node, and for metadata of the node
  // around it.
  const SchemaNode* member_ = nullptr;
  bool is_metadata_ = false;
};

}  // namespace

ReadConfiguration read_json_configuration(const Schema& schema, std::string_view text) {
  JsonReader reader(schema, TreeUse::kConfiguration, text);
  reader.read();
  return reader.builder().take_configuration();
}

ReadChange read_json_change(const Schema& schema, std::string_view text) {
  JsonReader reader(schema, TreeUse::kChange, text);
  reader.read();
  ReadChange change = reader.builder().take_change();
  change.notes.default_operation = reader.envelope().default_operation();
  return change;
}

}  // namespace tarnd::store
