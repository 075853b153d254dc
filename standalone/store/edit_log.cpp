#include "standalone/store/edit_log.h"

namespace tarnd::store {
namespace {

// Same place in the model, for an entry the same keys, for a leaf-list the same value.
bool same_instance(const lyd_node* left, const lyd_node* right) {
  if (left->schema != right->schema) return false;
  if ((left->schema->nodetype & (LYS_LIST | LYS_LEAFLIST)) == 0) return true;
  if (left->schema->nodetype == LYS_LEAFLIST) return value_text(left) == value_text(right);
  // NOLINTNEXTLINE(readability-suspicious-call-argument): both ways round
  return !key_less(left, right) && !key_less(right, left);
}

}  // namespace

EditLog::EditLog(TreeKeeper& keeper, lyd_node*& root) : keeper_(keeper), root_(root) {}

EditRecord* EditLog::record_of(const lyd_node* node) const {
  const auto found = by_node_.find(node);
  return found != by_node_.end() ? found->second : nullptr;
}

// The tracked record of a standing node, made where there is none; null where a created or swapped
// node above covers it.
EditRecord* EditLog::track(lyd_node* node) {
  if (EditRecord* record = record_of(node); record != nullptr) {
    return record->tracked() ? record : nullptr;
  }
  if (node == root_) {
    root_record_ =
        std::make_unique<EditRecord>(EditRecord{&schema_of(node), nullptr, node, node, {}});
    by_node_[node] = root_record_.get();
    return root_record_.get();
  }
  EditRecord* parent = track(&node->parent->node);
  return parent != nullptr ? add(*parent, schema_of(node), node, node) : nullptr;
}

EditRecord* EditLog::add(EditRecord& parent, const SchemaNode& schema, lyd_node* before,
                         lyd_node* after) {
  parent.children.push_back(
      std::make_unique<EditRecord>(EditRecord{&schema, &parent, before, after, {}}));
  EditRecord* record = parent.children.back().get();
  if (after != nullptr) by_node_[after] = record;
  return record;
}

void EditLog::insert(lyd_node* parent, lyd_node* node) {
  EditRecord* parent_record = track(parent);
  keeper_.insert(parent, node);
  if (parent_record == nullptr) return;
  const auto [first, last] = gone_.equal_range(node->hash);
  for (auto at = first; at != last; ++at) {
    EditRecord* record = at->second;
    if (record->parent != parent_record || !same_instance(record->before, node)) continue;
    record->after = node;
    by_node_[node] = record;
    gone_.erase(at);
    return;
  }
  add(*parent_record, schema_of(node), nullptr, node);
}

void EditLog::remove(lyd_node* node) {
  EditRecord* parent_record = track(&node->parent->node);
  EditRecord* record = record_of(node);
  if (record != nullptr && record->tracked()) {
    // What is kept aside is the node as it was before all edits.
    // NOLINTNEXTLINE(modernize-loop-convert): clang 14 does not compile libstdc++'s reversed views
    for (auto child = record->children.rbegin(); child != record->children.rend(); ++child) {
      undo(**child, node);
    }
    record->children.clear();
  }
  by_node_.erase(node);
  keeper_.unlink(node);
  if (parent_record == nullptr) {
    keeper_.free(node);
    return;
  }
  if (record == nullptr) record = add(*parent_record, schema_of(node), node, nullptr);
  if (record->before != node) keeper_.free(node);
  record->after = nullptr;
  if (record->before != nullptr) gone_.emplace(record->before->hash, record);
}

void EditLog::forget_gone(const EditRecord& record) {
  const auto [first, last] = gone_.equal_range(record.before->hash);
  for (auto at = first; at != last; ++at) {
    if (at->second != &record) continue;
    gone_.erase(at);
    return;
  }
}

void EditLog::swap_root(lyd_node* root) {
  undo();
  root_record_ =
      std::make_unique<EditRecord>(EditRecord{&schema_of(root), nullptr, root_, root, {}});
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
  if (record.after == nullptr) forget_gone(record);
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
  root_record_.reset();
  by_node_.clear();
  gone_.clear();
}

}  // namespace tarnd::store
