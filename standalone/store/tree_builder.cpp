#include "standalone/store/tree_builder.h"

#include <algorithm>
#include <array>
#include <utility>

#include "standalone/crypto.h"
#include "standalone/nearest_name.h"
#include "standalone/store/datastore.h"
#include "standalone/store/defaults.h"
#include "standalone/store/input_text.h"
#include "standalone/store/libyang_compat.h"
#include "standalone/store/node_maker.h"
#include "standalone/store/validity.h"
#include "standalone/store/value_help.h"

namespace tarnd::store {
namespace {

constexpr std::string_view kClearText = "$0$";
constexpr std::string_view kWhiteSpace = " \t\r\n";
// Deeper than any model; a deeper text is no configuration.
constexpr std::size_t kDeepest = 64;

bool is_white_space(char c) {
  return c == ' ' || c == '\n' || c == '\t' || c == '\r';
}

bool is_leaf(const SchemaNode& node) {
  return node.kind == NodeKind::kLeaf || node.kind == NodeKind::kLeafList;
}

bool has_instances(const SchemaNode& node) {
  return node.kind == NodeKind::kList || node.kind == NodeKind::kLeafList;
}

bool goes(Operation operation) {
  return operation == Operation::kDelete || operation == Operation::kRemove;
}

bool less(const lyd_node* left, const lyd_node* right) {
  return schema_of(left).kind == NodeKind::kList ? key_less(left, right) : value_less(left, right);
}

bool is_number_kind(ValueKind kind) {
  switch (kind) {
    case ValueKind::kInt8:
    case ValueKind::kInt16:
    case ValueKind::kInt32:
    case ValueKind::kUint8:
    case ValueKind::kUint16:
    case ValueKind::kUint32:
      return true;
    default:
      return false;  // RFC 7951 writes numbers of 64 bits as strings
  }
}

// A number of digits without a leading zero reads back as it was written.
bool is_canonical(const SchemaNode& leaf, std::string_view value) {
  if (!is_number_kind(leaf.value) || value.empty()) return false;
  if (value.front() == '0' && value.size() > 1) return false;
  return std::all_of(value.begin(), value.end(), [](char c) { return c >= '0' && c <= '9'; });
}

ValueForm form_of(ValueKind kind) {
  if (is_number_kind(kind)) return ValueForm::kNumber;
  if (kind == ValueKind::kBoolean) return ValueForm::kBoolean;
  return kind == ValueKind::kEmpty ? ValueForm::kEmpty : ValueForm::kString;
}

std::string_view name_of(ValueForm form) {
  switch (form) {
    case ValueForm::kNumber:
      return "a JSON number without quotes";
    case ValueForm::kBoolean:
      return "JSON's true or false without quotes";
    case ValueForm::kEmpty:
      return "[null]";
    default:
      return "a JSON string in quotes";
  }
}

std::vector<std::string_view> names_below(const SchemaNode& node) {
  std::vector<std::string_view> names;
  for (const SchemaNode* child : node.children) names.emplace_back(child->name);
  return names;
}

}  // namespace

TreeBuilder::TreeBuilder(const Schema& schema, TreeUse use, const Locator& locator)
    : schema_(schema), use_(use), locator_(locator), root_(nullptr, lyd_free_all) {
  // No node moves while another is added, so that a reference to an open one stays valid.
  frames_.reserve(kDeepest);
}

std::size_t TreeBuilder::line() const {
  return replayed_line_.has_value() ? *replayed_line_ : locator_.line();
}

void TreeBuilder::fail(const std::string& what, InputFault fault, InputSubject subject) const {
  fail_at(line(), what, fault, std::move(subject));
}

void TreeBuilder::fail_at(std::size_t line, const std::string& what, InputFault fault,
                          InputSubject subject) const {
  const std::string place = path();
  subject.path = place;
  throw InputError(place.empty() ? what : place + ": " + what, line, fault, std::move(subject));
}

void TreeBuilder::fail_twice(const SchemaNode& node, const std::string& what) const {
  fail(what, InputFault::kBadElement, {.element = node.name});
}

std::string TreeBuilder::path() const {
  if (depth_ == 0) return {};
  std::string path = path_of_frame(depth_);
  const SchemaNode* open = top().early_open;
  return open != nullptr ? path + open->path().substr(top().schema->path().size()) : path;
}

std::string TreeBuilder::path_of_frame(std::size_t depth) const {
  const Frame& frame = frames_[depth - 1];
  if (frame.node != nullptr) return path_of(frame.node);
  return path_of_frame(depth - 1) + "/" + frame.schema->name;
}

const SchemaNode& TreeBuilder::child(std::string_view name) const {
  const SchemaNode& parent = *open_node();
  const InputSubject unknown{.element = std::string(name)};
  if (is_leaf(parent)) {
    fail("holds " + excerpt(name) + ", but " + parent.name + " is a leaf",
         InputFault::kUnknownElement, unknown);
  }
  // Most texts have the children in the order of the model.
  const std::vector<const SchemaNode*>& children = parent.children;
  const std::size_t next = top().early_open == nullptr ? top().next_rank : 0;
  if (next < children.size() && children[next]->name == name) return *children[next];
  if (next > 0 && children[next - 1]->name == name) return *children[next - 1];
  if (const SchemaNode* node = parent.child(name); node != nullptr) return *node;
  const auto meant = nearest(name, names_below(parent));
  fail("there is no " + excerpt(name) + " here" +
           (meant.has_value() ? "; did you mean '" + std::string(*meant) + "'?" : ""),
       InputFault::kUnknownElement, unknown);
}

TreeBuilder::Frame& TreeBuilder::push(const SchemaNode& schema) {
  if (depth_ == kDeepest) fail("nested too deeply");
  if (depth_ == frames_.size()) frames_.emplace_back();
  Frame& frame = frames_[depth_++];
  frame.schema = &schema;
  frame.node = nullptr;
  frame.operation.reset();
  frame.early_open = nullptr;
  frame.tagged = false;
  if (is_leaf(schema)) return frame;
  frame.line = 0;
  frame.keys.resize(schema.num_keys);
  frame.known_keys = 0;
  frame.next_rank = 0;
  frame.seen.assign(schema.children.size(), false);
  frame.instances.clear();
  frame.child_operations.clear();
  frame.early.clear();
  frame.noted = false;
  frame.again = false;
  return frame;
}

void TreeBuilder::enter_root() {
  const SchemaNode& schema = schema_.root();
  lyd_node* node = nullptr;
  lyd_new_inner(nullptr, schema.lysc->module, schema.name.c_str(), 0, &node);
  root_.reset(node);
  Frame& frame = push(schema);
  frame.node = node;
  frame.line = line();
}

void TreeBuilder::enter(const SchemaNode& node) {
  if (waits(&node)) return record({Event::Kind::kEnter, &node, {}, {}, {}, 0, 0});
  check_once(top(), node);
  if (is_leaf(node)) {
    value_.clear();
    form_ = ValueForm::kXmlText;
    push(node);
  } else {
    enter_inner(node);
  }
}

void TreeBuilder::enter_inner(const SchemaNode& node) {
  lyd_node* parent = top().node;
  Frame& frame = push(node);
  frame.line = line();
  if (node.kind == NodeKind::kList) return;  // made when its keys are known
  if (use_ == TreeUse::kChange) {
    lyd_find_sibling_val(lyd_child(parent), node.lysc, nullptr, 0, &frame.node);
  }
  if (frame.node != nullptr) {
    frame.again = true;
  } else {
    frame.node = make_container(parent, node);
  }
}

void TreeBuilder::text(std::string_view piece) {
  if (is_leaf(*open_node())) {
    if (waits(nullptr)) {
      record({Event::Kind::kText, nullptr, std::string(piece), {}, {}, 0, 0});
    } else {
      value_ += piece;
    }
    return;
  }
  if (std::all_of(piece.begin(), piece.end(), is_white_space)) return;
  const std::size_t begin = piece.find_first_not_of(kWhiteSpace);
  const std::size_t end = piece.find_last_not_of(kWhiteSpace);
  fail("holds the text " + excerpt(piece.substr(begin, end - begin + 1)) +
           " where only elements can be",
       InputFault::kBadElement, {.element = open_node()->name});
}

void TreeBuilder::form(ValueForm form) {
  if (waits(nullptr)) return record({Event::Kind::kForm, nullptr, {}, form, {}, 0, 0});
  form_ = form;
}

Operation TreeBuilder::operation_named(std::string_view name) const {
  struct Row {
    std::string_view name;
    Operation operation;
  };
  static constexpr std::array kOperations{
      Row{"merge", Operation::kMerge}, Row{"replace", Operation::kReplace},
      Row{"create", Operation::kCreate}, Row{"delete", Operation::kDelete},
      Row{"remove", Operation::kRemove}};
  for (const Row& row : kOperations) {
    if (row.name == name) return row.operation;
  }
  fail("has the unknown operation " + excerpt(name) +
           "; merge, replace, create, delete or remove is needed",
       InputFault::kBadAttribute, {.element = open_node()->name, .attribute = "operation"});
}

void TreeBuilder::operation(Operation operation) {
  if (waits(nullptr)) return record({Event::Kind::kOperation, nullptr, {}, {}, operation, 0, 0});
  if (top().schema->is_key()) {
    fail("a key has no operation; the entry has", InputFault::kUnknownAttribute,
         {.element = top().schema->name, .attribute = "operation"});
  }
  top().operation = operation;
}

void TreeBuilder::operation_of(const SchemaNode& leaf, std::size_t index, Operation operation) {
  if (waits(nullptr)) {
    return record({Event::Kind::kOperationOf, &leaf, {}, {}, operation, index, 0});
  }
  if (leaf.is_key()) fail("the key '" + leaf.name + "' has no operation; the entry has");
  top().child_operations.push_back({&leaf, index, operation, line()});
}

void TreeBuilder::tag_as_default() {
  const SchemaNode& node = *open_node();
  if (node.kind != NodeKind::kLeaf || node.is_key()) {
    fail("is tagged as a default, but only a leaf that is no key can have one",
         InputFault::kUnknownAttribute, {.element = node.name, .attribute = "default"});
  }
  if (waits(nullptr)) return record({Event::Kind::kTag, nullptr, {}, {}, {}, 0, 0});
  top().tagged = true;
}

void TreeBuilder::leave() {
  if (waits(nullptr)) return record({Event::Kind::kLeave, nullptr, {}, {}, {}, 0, 0});
  if (is_leaf(*top().schema)) {
    leave_leaf();
  } else {
    leave_inner();
  }
}

// An entry's node can be made only with its keys, which may be last in the text: what is before
// them is kept until then.
bool TreeBuilder::waits(const SchemaNode* entered) const {
  const Frame& frame = top();
  if (frame.early_open != nullptr) return true;
  return entered != nullptr && frame.node == nullptr && frame.schema->kind == NodeKind::kList &&
         !entered->is_key();
}

void TreeBuilder::record(Event event) {
  Frame& frame = top();
  if (event.kind == Event::Kind::kEnter) frame.early_open = event.node;
  if (event.kind == Event::Kind::kLeave) {
    const SchemaNode* parent = frame.early_open->parent;
    frame.early_open = parent != frame.schema ? parent : nullptr;
  }
  event.line = line();
  frame.early.push_back(std::move(event));
}

void TreeBuilder::replay(const std::vector<Event>& events) {
  const std::optional<std::size_t> line_before = replayed_line_;
  for (const Event& event : events) {
    replayed_line_ = event.line;
    switch (event.kind) {
      case Event::Kind::kEnter:
        enter(*event.node);
        break;
      case Event::Kind::kText:
        text(event.text);
        break;
      case Event::Kind::kForm:
        form(event.form);
        break;
      case Event::Kind::kOperation:
        operation(event.operation);
        break;
      case Event::Kind::kOperationOf:
        operation_of(*event.node, event.index, event.operation);
        break;
      case Event::Kind::kTag:
        tag_as_default();
        break;
      case Event::Kind::kLeave:
        leave();
        break;
    }
  }
  replayed_line_ = line_before;
}

std::size_t TreeBuilder::rank_of(const Frame& parent, const SchemaNode& child) {
  const std::vector<const SchemaNode*>& children = parent.schema->children;
  std::size_t rank = parent.next_rank;
  if (rank < children.size() && children[rank] == &child) return rank;
  rank = 0;
  while (children[rank] != &child) ++rank;
  return rank;
}

// A change may have a container or an entry several times, for example if changes were joined in
// one file, but a leaf only once.
void TreeBuilder::check_once(Frame& parent, const SchemaNode& node) const {
  const std::size_t rank = rank_of(parent, node);
  parent.next_rank = rank + 1;
  if (has_instances(node) || (use_ == TreeUse::kChange && !is_leaf(node))) return;
  if (parent.seen[rank] || (parent.again && was_given(parent.node, node))) {
    fail_twice(node, "holds '" + node.name + "' twice");
  }
  parent.seen[rank] = true;
}

bool TreeBuilder::was_given(const lyd_node* parent, const SchemaNode& leaf) const {
  if (lyd_find_sibling_val(lyd_child(parent), leaf.lysc, nullptr, 0, nullptr) == LY_SUCCESS) {
    return true;
  }
  const auto removals = notes_.removals.find(parent);
  return removals != notes_.removals.end() &&
         std::any_of(removals->second.begin(), removals->second.end(),
                     [&](const LeafRemoval& removal) { return removal.leaf == &leaf; });
}

TreeBuilder::Instances& TreeBuilder::instances_of(Frame& parent, const SchemaNode& schema) {
  const auto at = std::find_if(parent.instances.begin(), parent.instances.end(),
                               [&](const Instances& of) { return of.schema == &schema; });
  if (at != parent.instances.end()) return *at;
  return parent.instances.emplace_back(Instances{&schema, nullptr, {}});
}

// The earlier instance with the same keys or value as this new one, or null.
lyd_node* TreeBuilder::earlier_instance(Frame& parent, lyd_node* node) {
  const SchemaNode& schema = schema_of(node);
  Instances& of = instances_of(parent, schema);
  if (!parent.again && (of.last == nullptr || less(of.last, node))) {
    of.last = node;
    return nullptr;
  }
  lyd_node* earlier = nullptr;
  unlink_node(node);
  lyd_find_sibling_first(lyd_child(parent.node), node, &earlier);
  lyd_insert_child(parent.node, node);
  if (earlier == nullptr) unordered_.emplace(parent.node, &schema);
  return earlier;
}

// Called after the last of the keys was read.
void TreeBuilder::create_entry(Frame& entry, lyd_node* parent) {
  bool canonical = true;
  for (std::size_t i = 0; i < entry.keys.size(); ++i) {
    canonical = canonical && is_canonical(*entry.schema->children[i], entry.keys[i]);
  }
  entry.node = make_entry(parent, *entry.schema, entry.keys, canonical);
  if (entry.node == nullptr) refuse_keys(entry);
}

void TreeBuilder::refuse_keys(const Frame& entry) {
  for (std::size_t i = 0; i < entry.keys.size(); ++i) {
    const SchemaNode& key = *entry.schema->children[i];
    const std::string value = entry.keys[i];
    const LY_ERR valid = lyd_value_validate(schema_.context(), key.lysc, value.data(), value.size(),
                                            nullptr, nullptr, nullptr);
    if (valid == LY_SUCCESS) continue;
    push(key);
    refuse_value(key, value);
  }
  fail("the entry cannot be made");
}

void TreeBuilder::take_key(const SchemaNode& key, const std::string& value) {
  if (!is_yang_text(value)) refuse_value(key, value);
  check_form(key, key.value);
  --depth_;  // from here on the entry is the open node
  Frame& entry = top();
  entry.keys[entry.next_rank - 1] = value;
  if (++entry.known_keys < entry.keys.size()) return;
  create_entry(entry, around().node);
  if (lyd_node* earlier = earlier_instance(around(), entry.node); earlier != nullptr) {
    if (use_ == TreeUse::kConfiguration) fail_twice(*entry.schema, "is given twice");
    free_node(std::exchange(entry.node, earlier));
    entry.again = true;
  }
  if (!entry.early.empty()) replay(std::exchange(entry.early, {}));
}

void TreeBuilder::leave_leaf() {
  const SchemaNode& leaf = *top().schema;
  const std::optional<Operation> own = top().operation;
  if (leaf.is_key()) return take_key(leaf, value_);
  const std::string& value = value_;
  Frame& parent = around();
  if (own.has_value() && goes(*own) && leaf.kind == NodeKind::kLeaf) {
    // Its value does not matter, and may be missing.
    const bool valid =
        value.empty() || lyd_value_validate(schema_.context(), leaf.lysc, value.data(),
                                            value.size(), nullptr, nullptr, nullptr) == LY_SUCCESS;
    if (!valid) refuse_value(leaf, value);
    note_removal(parent, {&leaf, own, line()});
  } else if (top().tagged) {
    check_default(leaf, value);
    if (use_ == TreeUse::kChange) note_removal(parent, {&leaf, own, line()});
  } else {
    lyd_node* node = create_value(parent, leaf, value);
    if (own.has_value()) {
      note(parent, node, *own, line());
    } else if (is_validated(leaf)) {
      notes_.lines.emplace_back(node, line());
    }
  }
  --depth_;
}

void TreeBuilder::check_default(const SchemaNode& leaf, const std::string& value) const {
  const char* canonical = nullptr;
  if (!is_yang_text(value) ||
      lyd_value_validate(schema_.context(), leaf.lysc, value.data(), value.size(), nullptr, nullptr,
                         &canonical) != LY_SUCCESS) {
    refuse_value(leaf, value);
  }
  const std::string given = canonical;
  lydict_remove(schema_.context(), canonical);
  const lyd_value* standard = reinterpret_cast<const lysc_node_leaf*>(leaf.lysc)->dflt;
  if (standard == nullptr) fail("is tagged as a default, but the model has none for it");
  const std::string needed = lyd_value_get_canonical(schema_.context(), standard);
  if (given != needed) {
    fail(excerpt(given) + " is tagged as the default, which is " + excerpt(needed));
  }
}

lyd_node* TreeBuilder::create_value(Frame& parent, const SchemaNode& leaf,
                                    const std::string& value) {
  if (!is_yang_text(value)) refuse_value(leaf, value);
  const bool clear = leaf.value == ValueKind::kEncrypted &&
                     std::string_view(value).substr(0, kClearText.size()) == kClearText;
  const std::string stored = clear ? encrypt_string(value.substr(kClearText.size())) : value;
  lyd_node* node = make_term(parent.node, leaf, stored, is_canonical(leaf, value));
  if (node == nullptr) refuse_value(leaf, value);
  check_form(leaf, value_kind(node));
  if (leaf.kind != NodeKind::kLeafList) return node;
  if (earlier_instance(parent, node) != nullptr) {
    fail_twice(leaf, excerpt(value) + " is given twice");
  }
  if (use_ == TreeUse::kChange) instances_of(parent, leaf).in_turn.push_back(node);
  return node;
}

// The answers to a change may be about it.
bool TreeBuilder::is_validated(const SchemaNode& node) const {
  return use_ == TreeUse::kChange && !node.points.empty();
}

void TreeBuilder::check_form(const SchemaNode& leaf, ValueKind kind) const {
  const bool right = form_ == ValueForm::kXmlText || form_ == form_of(kind);
  if (!right) fail("needs " + std::string(name_of(form_of(kind))) + ": " + what_it_takes(leaf));
}

void TreeBuilder::leave_inner() {
  Frame& frame = top();
  if (frame.node == nullptr) {
    for (std::size_t i = 0; i < frame.keys.size(); ++i) {
      if (frame.seen[i]) continue;
      const std::string& key = frame.schema->children[i]->name;
      fail_at(frame.line, "the entry has no key '" + key + "'", InputFault::kMissingElement,
              {.element = key});
    }
  }
  if (frame.again && (frame.operation.has_value() || notes_.operations.contains(frame.node))) {
    fail_at(frame.line, "is given twice, with an operation", InputFault::kBadElement,
            {.element = frame.schema->name});
  }
  for (const ChildOperation& of : frame.child_operations) settle(frame, of);
  // Other containers are identified by the entry around them.
  if (frame.schema->kind == NodeKind::kList || frame.operation.has_value() ||
      is_validated(*frame.schema)) {
    notes_.lines.emplace_back(frame.node, frame.line);
  }
  if (frame.operation.has_value()) notes_.operations.emplace(frame.node, *frame.operation);
  frame.noted = frame.noted || frame.operation.has_value();
  if (frame.noted) notes_.noted.insert(frame.node);
  --depth_;
  if (depth_ > 0) top().noted = top().noted || frame.noted;
}

void TreeBuilder::note(Frame& parent, const lyd_node* node, Operation operation, std::size_t line) {
  notes_.operations.emplace(node, operation);
  notes_.noted.insert(node);
  notes_.lines.emplace_back(node, line);
  parent.noted = true;
}

void TreeBuilder::note_removal(Frame& parent, const LeafRemoval& removal) {
  notes_.removals[parent.node].push_back(removal);
  parent.noted = true;
}

// It is one of the last.
void TreeBuilder::forget_line(const lyd_node* node) {
  const auto last = std::find_if(notes_.lines.rbegin(), notes_.lines.rend(),
                                 [node](const auto& known) { return known.first == node; });
  notes_.lines.erase(std::next(last).base());
}

// Metadata of a leaf, or of a leaf-list's value, after its whole parent was read.
void TreeBuilder::settle(Frame& frame, const ChildOperation& of) {
  const SchemaNode& leaf = *of.leaf;
  if (leaf.kind == NodeKind::kLeafList) {
    const std::vector<lyd_node*>& values = instances_of(frame, leaf).in_turn;
    if (of.index >= values.size()) {
      fail_at(of.line, "'@" + leaf.name + "' has more values than '" + leaf.name + "'");
    }
    return note(frame, values[of.index], of.operation, of.line);
  }
  lyd_node* node = nullptr;
  lyd_find_sibling_val(lyd_child(frame.node), leaf.lysc, nullptr, 0, &node);
  if (node != nullptr && is_validated(leaf)) forget_line(node);
  if (goes(of.operation)) {
    const std::size_t rank = rank_of(frame, leaf);
    const bool before = frame.again && !frame.seen[rank] && was_given(frame.node, leaf);
    if (before) fail_at(of.line, "holds '" + leaf.name + "' twice");
    if (node != nullptr) free_node(node);
    note_removal(frame, {&leaf, of.operation, of.line});
  } else if (node == nullptr) {
    fail_at(of.line, "'@" + leaf.name + "' needs a '" + leaf.name + "' beside it");
  } else {
    note(frame, node, of.operation, of.line);
  }
}

void TreeBuilder::refuse_value(const SchemaNode& leaf, const std::string& value) const {
  const std::string why = why_refused(leaf, value);
  const ModelWords words = words_of_model(leaf, value);
  ly_err_clean(schema_.context(), nullptr);
  fail(why, InputFault::kOther, {.app_tag = words.app_tag, .message = words.message});
}

ReadConfiguration TreeBuilder::take_configuration() {
  try {
    check_subtree(root_.get());
  } catch (const InvalidNode& error) {
    throw InputError(error.what(), place_of(notes_.lines, error.node()).value_or(1), error.fault(),
                     error.subject());
  }
  notes_ = {};  // the tree needs the memory
  bring_defaults(root_.get());
  return {std::move(root_), std::move(unordered_)};
}

ReadChange TreeBuilder::take_change() {
  return {std::move(root_), std::move(notes_)};
}

}  // namespace tarnd::store
