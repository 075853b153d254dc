#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "standalone/store/reader.h"

namespace tarnd::store {

/// Reports the parser's place in the text.
class Locator {
 public:
  Locator() = default;
  Locator(const Locator&) = delete;
  Locator& operator=(const Locator&) = delete;
  virtual ~Locator() = default;

  /// The line in which the item that the parser reports at present begins, or ends.
  [[nodiscard]] virtual std::size_t line() const = 0;
};

/// The form of a value in the text. XML has texts only; the type decides what they mean.
enum class ValueForm : std::uint8_t { kXmlText, kString, kNumber, kBoolean, kEmpty };

enum class TreeUse : std::uint8_t { kConfiguration, kChange };

/// Makes the tree of a document by the model, node by node as a parser reports them. Every function
/// throws InputError with the line and the path of the wrong node.
class TreeBuilder {
 public:
  /// The caller owns the schema and the locator.
  TreeBuilder(const Schema& schema, TreeUse use, const Locator& locator);

  /// Begins the top-level node.
  void enter_root();
  /// The child of the open node with this name. Throws if the model does not have it.
  [[nodiscard]] const SchemaNode& child(std::string_view name) const;
  /// Begins a child of the open node: a container, an entry of a list, or a value of a leaf or a
  /// leaf-list.
  void enter(const SchemaNode& node);
  /// More of the open leaf's value; elsewhere only white space passes.
  void text(std::string_view piece);
  /// Sets the form of the open leaf's value; by default kXmlText.
  void form(ValueForm form);
  /// The edit operation of that name. Throws if NETCONF does not have it.
  [[nodiscard]] Operation operation_named(std::string_view name) const;
  /// Sets the edit operation of the open node.
  void operation(Operation operation);
  /// Sets the operation of a leaf of the open node, or of the value at `index` of its leaf-list;
  /// the leaf may follow later in the text.
  void operation_of(const SchemaNode& leaf, std::size_t index, Operation operation);
  /// The open leaf is tagged as a default (RFC 6243, section 6): its value must be the default that
  /// the model has, and it is not set.
  void tag_as_default();
  /// Ends the open node.
  void leave();

  /// The model's node of the open node; null before and after the top-level one.
  [[nodiscard]] const SchemaNode* open_node() const {
    if (depth_ == 0) return nullptr;
    const Frame& frame = frames_[depth_ - 1];
    return frame.early_open != nullptr ? frame.early_open : frame.schema;
  }
  [[nodiscard]] TreeUse use() const { return use_; }

  /// The subject's path is that of the open node.
  [[noreturn]] void fail(const std::string& what, InputFault fault = InputFault::kOther,
                         InputSubject subject = {}) const;
  /// The path of the open node, with the keys that are known.
  [[nodiscard]] std::string path() const;

  /// The result, after the top-level node has ended.
  ReadConfiguration take_configuration();
  ReadChange take_change();

 private:
  // What a parser reported in an entry before the entry's keys.
  struct Event {
    enum class Kind : std::uint8_t { kEnter, kText, kForm, kOperation, kOperationOf, kTag, kLeave };
    Kind kind = Kind::kEnter;
    const SchemaNode* node = nullptr;
    std::string text;
    ValueForm form = ValueForm::kXmlText;
    Operation operation = Operation::kMerge;
    std::size_t index = 0;
    std::size_t line = 0;
  };
  struct ChildOperation {
    const SchemaNode* leaf = nullptr;
    std::size_t index = 0;
    Operation operation = Operation::kMerge;
    std::size_t line = 0;
  };
  // The instances of one list or leaf-list that were read so far.
  struct Instances {
    const SchemaNode* schema = nullptr;
    lyd_node* last = nullptr;        ///< the last of those that are in order
    std::vector<lyd_node*> in_turn;  ///< in a change: values in the text's own order
  };
  // A node that is open.
  struct Frame {
    const SchemaNode* schema = nullptr;
    lyd_node* node = nullptr;  ///< null for a leaf, and for an entry without all its keys
    std::size_t line = 0;
    std::vector<std::string> keys;  ///< of an entry, in the model's order
    std::size_t known_keys = 0;
    std::vector<bool> seen;  ///< children, by their rank in the model
    std::vector<Instances> instances;
    std::vector<ChildOperation> child_operations;
    std::vector<Event> early;                ///< what was read before the keys
    const SchemaNode* early_open = nullptr;  ///< the innermost open node of that
    std::size_t next_rank = 0;               ///< the place where the next child is expected
    std::optional<Operation> operation;
    bool tagged = false;  ///< as a default
    bool noted = false;   ///< it or a node below has a note
    bool again = false;   ///< in a change: it was open before
  };

  Frame& top() { return frames_[depth_ - 1]; }
  [[nodiscard]] const Frame& top() const { return frames_[depth_ - 1]; }
  Frame& around() { return frames_[depth_ - 2]; }
  Frame& push(const SchemaNode& schema);
  [[nodiscard]] std::size_t line() const;
  [[nodiscard]] std::string path_of_frame(std::size_t depth) const;
  [[noreturn]] void fail_at(std::size_t line, const std::string& what,
                            InputFault fault = InputFault::kOther, InputSubject subject = {}) const;
  [[noreturn]] void fail_twice(const SchemaNode& node, const std::string& what) const;
  [[noreturn]] void refuse_value(const SchemaNode& leaf, const std::string& value) const;

  [[nodiscard]] bool waits(const SchemaNode* entered) const;
  void record(Event event);
  void replay(const std::vector<Event>& events);
  static std::size_t rank_of(const Frame& parent, const SchemaNode& child);
  void check_once(Frame& parent, const SchemaNode& node) const;
  [[nodiscard]] bool was_given(const lyd_node* parent, const SchemaNode& leaf) const;
  lyd_node* earlier_instance(Frame& parent, lyd_node* node);
  static Instances& instances_of(Frame& parent, const SchemaNode& schema);
  void enter_inner(const SchemaNode& node);
  void create_entry(Frame& entry, lyd_node* parent);
  void leave_inner();
  void leave_leaf();
  void check_default(const SchemaNode& leaf, const std::string& value) const;
  void take_key(const SchemaNode& key, const std::string& value);
  [[noreturn]] void refuse_keys(const Frame& entry);
  lyd_node* create_value(Frame& parent, const SchemaNode& leaf, const std::string& value);
  [[nodiscard]] bool is_validated(const SchemaNode& node) const;
  void check_form(const SchemaNode& leaf, ValueKind kind) const;
  void note(Frame& parent, const lyd_node* node, Operation operation, std::size_t line);
  void forget_line(const lyd_node* node);
  void note_removal(Frame& parent, const LeafRemoval& removal);
  void settle(Frame& frame, const ChildOperation& of);

  const Schema& schema_;
  const TreeUse use_;
  const Locator& locator_;
  std::vector<Frame> frames_;  // elements of nodes that have ended are reused
  std::size_t depth_ = 0;
  std::string value_;  // of the open leaf
  ValueForm form_ = ValueForm::kXmlText;
  std::optional<std::size_t> replayed_line_;
  TreeOwner root_;
  UnorderedLists unordered_;
  ChangeNotes notes_;
};

}  // namespace tarnd::store
