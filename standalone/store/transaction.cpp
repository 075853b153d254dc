#include "standalone/store/transaction.h"

#include <algorithm>
#include <optional>

#include "standalone/store/change_tree.h"
#include "standalone/store/edit.h"
#include "standalone/store/edit_log.h"
#include "standalone/store/libyang_compat.h"

namespace tarnd::store {
namespace {

lyd_node* copy(const lyd_node* node, lyd_node* parent, std::uint32_t extent) {
  lyd_node* result = nullptr;
  lyd_dup_single(node, reinterpret_cast<lyd_node_inner*>(parent), extent | LYD_DUP_WITH_FLAGS,
                 &result);
  return result;
}

const EditRecord* child_record(const EditRecord* record, const lyd_node* child) {
  if (record == nullptr) return nullptr;
  for (const auto& candidate : record->children) {
    if (candidate->after == child) return candidate.get();
  }
  return nullptr;
}

// A copy of what was edited, with whatever stands directly around it: each edited node's leaves and
// containers, but of a list only the edited entries. No rule of the model reaches further, so the
// copy is valid exactly when the whole is.
class EditedSlice {
 public:
  explicit EditedSlice(const Datastore& datastore) : datastore_(datastore) {}

  [[nodiscard]] TreeOwner of(const EditRecord& root) const {
    TreeOwner slice(copy(root.after, nullptr, 0), lyd_free_all);
    add_children(root.after, &root, slice.get());
    return slice;
  }

 private:
  void add_children(const lyd_node* node, const EditRecord* record, lyd_node* slice) const {
    for (const SchemaNode* schema : schema_of(node).children) {
      if (schema->kind == NodeKind::kList || schema->is_key()) continue;
      if (schema->kind == NodeKind::kLeafList) {
        for (const lyd_node* value : datastore_.leaf_list(node, *schema)) copy(value, slice, 0);
      } else if (const lyd_node* child = datastore_.child(node, *schema); child != nullptr) {
        add_child(child, child_record(record, child), slice);
      }
    }
    if (record == nullptr) return;
    for (const auto& edited : record->children) {
      if (edited->schema->kind == NodeKind::kList && edited->after != nullptr) {
        add_child(edited->after, edited.get(), slice);
      }
    }
  }

  void add_child(const lyd_node* child, const EditRecord* record, lyd_node* slice) const {
    if (record != nullptr && !record->tracked()) {
      copy(child, slice, LYD_DUP_RECURSIVE);
      return;
    }
    lyd_node* shell = copy(child, slice, 0);
    if (schema_of(child).kind != NodeKind::kLeaf) add_children(child, record, shell);
  }

  const Datastore& datastore_;
};

// What was edited into a whole new configuration is not known: then all of it is looked at.
void validate_edits(const Datastore& datastore, const EditRecord& root) {
  TreeOwner slice = root.tracked()
                        ? EditedSlice(datastore).of(root)
                        : TreeOwner(copy(root.after, nullptr, LYD_DUP_RECURSIVE), lyd_free_all);
  lyd_node* tree = slice.release();
  const LY_ERR valid = lyd_validate_all(&tree, nullptr, LYD_VALIDATE_PRESENT, nullptr);
  slice.reset(tree);
  if (valid != LY_SUCCESS) throw InputError(take_libyang_error(datastore.schema().context()));
}

}  // namespace

class Transaction::Impl {
 public:
  Impl(TreeKeeper& tree_keeper, lyd_node*& root) : keeper(tree_keeper), log(tree_keeper, root) {}

  TreeKeeper& keeper;
  EditLog log;
  std::optional<Change> changes;
  /// A whole new configuration stands here as it was read, and reading it validated it.
  bool valid_as_read = false;
};

Transaction::Transaction(Datastore& datastore)
    : datastore_(datastore), impl_(std::make_unique<Impl>(*datastore.keeper_, datastore.root_)) {}

Transaction::~Transaction() {
  impl_->changes.reset();
  impl_->log.undo();
}

void Transaction::edit(const std::string& text, Format format) {
  impl_->valid_as_read = false;
  apply_edit(datastore_, impl_->keeper, impl_->log, read_change(datastore_.schema(), text, format));
}

void Transaction::replace(const std::string& text, Format format) {
  ReadConfiguration read = read_configuration(datastore_.schema(), text, format);
  impl_->log.swap_root(read.root.release());
  impl_->keeper.unordered_lists.merge(read.unordered);
  impl_->valid_as_read = true;
}

void Transaction::prepare() {
  const EditRecord* root = impl_->log.root_record();
  if (root == nullptr) return;
  if (!impl_->valid_as_read) validate_edits(datastore_, *root);
  impl_->changes = change_tree(*root);
}

const Change* Transaction::changes() const {
  return impl_->changes.has_value() ? &*impl_->changes : nullptr;
}

void Transaction::commit() {
  impl_->changes.reset();
  impl_->log.keep();
}

namespace {

// Where a path leads in the configuration before the edits: the node and, while it still stands in
// the tree, the record of what happened below it.
struct CommittedPlace {
  const lyd_node* node = nullptr;
  const EditRecord* record = nullptr;
};

bool matches(const lyd_node* node, const PathStep& step) {
  if (node->schema != step.node->lysc) return false;
  if (step.node->kind == NodeKind::kLeafList) return value_text(node) == step.keys.front();
  const lyd_node* key = lyd_child(node);
  for (const std::string& text : step.keys) {
    if (value_text(key) != text) return false;
    key = key->next;
  }
  return true;
}

const lyd_node* standing_child(const Datastore& datastore, const lyd_node* parent,
                               const PathStep& step) {
  if (step.node->kind == NodeKind::kList) return datastore.entry(parent, *step.node, step.keys);
  if (step.node->kind != NodeKind::kLeafList) return datastore.child(parent, *step.node);
  for (const lyd_node* value : datastore.leaf_list(parent, *step.node)) {
    if (matches(value, step)) return value;
  }
  return nullptr;
}

CommittedPlace step_down(const Datastore& datastore, const EditLog& log,
                         const CommittedPlace& place, const PathStep& step) {
  const lyd_node* standing = standing_child(datastore, place.node, step);
  if (place.record == nullptr) return {standing, nullptr};
  if (standing != nullptr) {
    const EditRecord* record = log.record_of(standing);
    if (record == nullptr) return {standing, nullptr};
    return {record->before, record->tracked() ? record : nullptr};
  }
  for (const auto& record : place.record->children) {
    if (record->after == nullptr && record->before != nullptr && matches(record->before, step)) {
      return {record->before, nullptr};
    }
  }
  return {};
}

CommittedPlace committed_place(const Datastore& datastore, const EditLog& log,
                               std::span<const PathStep> steps) {
  const EditRecord* root = log.root_record();
  CommittedPlace place{datastore.root(), nullptr};
  if (root != nullptr) place = {root->before, root->tracked() ? root : nullptr};
  for (const PathStep& step : steps.subspan(1)) {
    const bool of_many =
        step.node->kind == NodeKind::kList || step.node->kind == NodeKind::kLeafList;
    if (place.node == nullptr || (of_many && !step.keyed)) return {};
    place = step_down(datastore, log, place, step);
  }
  return place;
}

}  // namespace

const lyd_node* Transaction::committed(const Path& path) const {
  if (path.names_impossible_entry()) return nullptr;
  return committed_place(datastore_, impl_->log, path.steps()).node;
}

std::size_t Transaction::committed_entries(const Path& path) const {
  const std::span<const PathStep> steps(path.steps());
  const CommittedPlace parent =
      committed_place(datastore_, impl_->log, steps.first(steps.size() - 1));
  if (parent.node == nullptr) return 0;
  std::size_t count = datastore_.entries(parent.node, *path.last().node).size();
  if (parent.record == nullptr) return count;
  for (const auto& record : parent.record->children) {
    if (record->schema != path.last().node) continue;
    if (record->before == nullptr && record->after != nullptr) --count;
    if (record->before != nullptr && record->after == nullptr) ++count;
  }
  return count;
}

}  // namespace tarnd::store
