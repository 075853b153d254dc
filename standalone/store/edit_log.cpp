#include "standalone/store/edit_log.h"

#include <functional>

namespace tarnd::store {
namespace {

std::size_t gone_hash(const EditRecord* parent, const SchemaNode* schema, std::size_t key) {
  constexpr std::size_t kFactor = 1'000'003;
  const std::size_t place = std::hash<const void*>{}(parent)*kFactor + schema->position;
  return place * kFactor + key;
}

void grow(EditRecord& parent, const SchemaNode& schema, std::ptrdiff_t by) {
  if (schema.kind != NodeKind::kList) return;
  for (auto& [list, growth] : parent.growth) {
    if (list != &schema) continue;
    growth += by;
    return;
  }
  parent.growth.emplace_back(&schema, by);
}

}  // namespace

std::size_t EditLog::GoneHash::operator()(const EditRecord* record) const {
  return gone_hash(record->parent, record->schema, key_hash(record->before));
}

std::size_t EditLog::GoneHash::operator()(const Place& place) const {
  return gone_hash(place.parent, place.schema, key_hash(place.key));
}

std::size_t EditLog::GoneHash::operator()(const Standing& standing) const {
  return gone_hash(standing.parent, &schema_of(standing.node), key_hash(standing.node));
}

bool EditLog::GoneEqual::operator()(const Place& place, const EditRecord* record) const {
  return record->parent == place.parent && record->schema == place.schema &&
         has_key(record->before, place.key);
}

bool EditLog::GoneEqual::operator()(const Standing& standing, const EditRecord* record) const {
  return record->parent == standing.parent && same_instance(record->before, standing.node);
}

EditLog::EditLog(TreeKeeper& keeper, lyd_node*& root) : keeper_(keeper), root_(root) {}

EditRecord* EditLog::record_of(const lyd_node* node) const {
  const auto found = by_node_.find(node);
  return found != by_node_.end() ? found->second : nullptr;
}

const EditRecord* EditLog::gone(const EditRecord& parent, const SchemaNode& schema,
                                InstanceKey key) const {
  const auto found = gone_.find(Place{&parent, &schema, key});
  return found != gone_.end() ? *found : nullptr;
}

std::ptrdiff_t EditLog::growth(const EditRecord& parent, const SchemaNode& list) {
  for (const auto& [schema, more] : parent.growth) {
    if (schema == &list) return more;
  }
  return 0;
}

// The tracked record of a node in the tree, made if it is missing; null if an ancestor was created
// or swapped, whose record covers the node.
EditRecord* EditLog::track(lyd_node* node) {
  if (EditRecord* record = record_of(node); record != nullptr) {
    return record->tracked() ? record : nullptr;
  }
  if (node == root_) {
    root_record_ =
        std::make_unique<EditRecord>(EditRecord{&schema_of(node), nullptr, node, node, {}, {}});
    by_node_[node] = root_record_.get();
    return root_record_.get();
  }
  EditRecord* parent = track(&node->parent->node);
  return parent != nullptr ? add(*parent, schema_of(node), node, node) : nullptr;
}

EditRecord* EditLog::add(EditRecord& parent, const SchemaNode& schema, lyd_node* before,
                         lyd_node* after) {
  parent.children.push_back(
      std::make_unique<EditRecord>(EditRecord{&schema, &parent, before, after, {}, {}}));
  EditRecord* record = parent.children.back().get();
  if (after != nullptr) by_node_[after] = record;
  return record;
}

void EditLog::insert(lyd_node* parent, lyd_node* node) {
  keeper_.insert(parent, node);
  note_insertion(parent, node);
}

void EditLog::note_insertion(lyd_node* parent, lyd_node* node) {
  EditRecord* parent_record = track(parent);
  if (parent_record == nullptr) return;
  grow(*parent_record, schema_of(node), 1);
  const auto found = gone_.find(Standing{parent_record, node});
  if (found == gone_.end()) {
    add(*parent_record, schema_of(node), nullptr, node);
    return;
  }
  EditRecord* record = *found;
  record->after = node;
  by_node_[node] = record;
  gone_.erase(found);
}

void EditLog::remove(lyd_node* node) {
  lyd_node* parent = &node->parent->node;
  keeper_.unlink(node);
  note_removal(parent, node);
}

// The node is already unlinked.
void EditLog::note_removal(lyd_node* parent, lyd_node* node) {
  EditRecord* parent_record = track(parent);
  EditRecord* record = record_of(node);
  if (record != nullptr && record->tracked()) {
    // The record keeps the node as it was before all edits.
    // NOLINTNEXTLINE(modernize-loop-convert): clang 14 does not compile libstdc++'s reversed views
    for (auto child = record->children.rbegin(); child != record->children.rend(); ++child) {
      undo(**child, node);
    }
    record->children.clear();
    record->growth.clear();
  }
  by_node_.erase(node);
  if (parent_record == nullptr) {
    keeper_.free(node);
    return;
  }
  grow(*parent_record, schema_of(node), -1);
  if (record == nullptr) record = add(*parent_record, schema_of(node), node, nullptr);
  if (record->before != node) keeper_.free(node);
  record->after = nullptr;
  if (record->before != nullptr) gone_.insert(record);
}

void EditLog::swap_root(lyd_node* root) {
  undo();
  root_record_ =
      std::make_unique<EditRecord>(EditRecord{&schema_of(root), nullptr, root_, root, {}, {}});
  by_node_[root] = root_record_.get();
  root_ = root;
}

void EditLog::undo(EditRecord& record, lyd_node* parent) {
  if (record.tracked()) {
    for (auto child = record.children.rbegin(); child != record.children.rend(); ++child) {
      undo(**child, record.after);
    }
    by_node_.erase(record.after);
    return;
  }
  if (record.after != nullptr) {
    by_node_.erase(record.after);
    keeper_.unlink(record.after);
    keeper_.free(record.after);
  }
  if (record.before == nullptr) return;
  if (record.after == nullptr) gone_.erase(&record);
  keeper_.insert(parent, record.before);
}

void EditLog::undo() {
  if (root_record_ == nullptr) return;
  if (root_record_->tracked()) {
    undo(*root_record_, nullptr);
  } else {
    keeper_.free(root_);
    root_ = root_record_->before;
  }
  forget();
}

void EditLog::set_aside(const EditRecord& record, lyd_node* parent) {
  if (record.tracked()) {
    for (auto child = record.children.rbegin(); child != record.children.rend(); ++child) {
      set_aside(**child, record.after);
    }
    return;
  }
  if (record.after != nullptr) keeper_.unlink(record.after);
  if (record.before != nullptr) keeper_.insert(parent, record.before);
}

void EditLog::set_aside() {
  if (root_record_ == nullptr) return;
  if (root_record_->tracked()) {
    set_aside(*root_record_, nullptr);
  } else {
    root_ = root_record_->before;
  }
}

void EditLog::bring_back(const EditRecord& record, lyd_node* parent) {
  if (record.tracked()) {
    for (const auto& child : record.children) bring_back(*child, record.after);
    return;
  }
  if (record.before != nullptr) keeper_.unlink(record.before);
  if (record.after != nullptr) keeper_.insert(parent, record.after);
}

void EditLog::bring_back() {
  if (root_record_ == nullptr) return;
  if (root_record_->tracked()) {
    bring_back(*root_record_, nullptr);
  } else {
    root_ = root_record_->after;
  }
}

void EditLog::take_over(EditLog& later) {
  if (later.root_record_ == nullptr) return;
  if (later.root_record_->tracked()) {
    take_over_children(*later.root_record_);
  } else {
    take_over_root(*later.root_record_);
  }
  later.forget();
}

void EditLog::take_over_children(const EditRecord& record) {
  for (const auto& child : record.children) {
    if (child->tracked()) {
      take_over_children(*child);
      continue;
    }
    if (child->before != nullptr) note_removal(record.after, child->before);
    if (child->after != nullptr) note_insertion(record.after, child->after);
  }
}

void EditLog::take_over_root(const EditRecord& swapped) {
  lyd_node* before = swapped.before;
  if (root_record_ != nullptr && root_record_->tracked()) undo(*root_record_, nullptr);
  if (root_record_ != nullptr && !root_record_->tracked()) {
    before = root_record_->before;
    keeper_.free(swapped.before);
  }
  forget();
  root_record_ = std::make_unique<EditRecord>(
      EditRecord{swapped.schema, nullptr, before, swapped.after, {}, {}});
  by_node_[swapped.after] = root_record_.get();
}

void EditLog::forget() {
  root_record_.reset();
  by_node_.clear();
  gone_.clear();
}

void EditLog::keep(EditRecord& record) {
  for (const auto& child : record.children) keep(*child);
  if (record.before != nullptr && !record.tracked()) keeper_.free(record.before);
}

void EditLog::keep() {
  if (root_record_ != nullptr) keep(*root_record_);
  forget();
}

}  // namespace tarnd::store
