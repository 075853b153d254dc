#include "standalone/store/transaction.h"

#include <optional>
#include <span>
#include <utility>

#include "standalone/store/change_tree.h"
#include "standalone/store/edit.h"
#include "standalone/store/edit_log.h"
#include "standalone/store/reversal.h"
#include "standalone/store/validity.h"

namespace tarnd::store {

class Transaction::Impl {
 public:
  Impl(TreeKeeper& tree_keeper, lyd_node*& tree)
      : keeper(tree_keeper), root(tree), log(tree_keeper, tree) {}

  // With its own log, an edit can be undone without the edits before. The first edit needs none.
  void apply(Datastore& datastore, const ReadChange& change) {
    changes.reset();
    EditLog own(keeper, root);
    EditLog& used = log.root_record() == nullptr ? log : own;
    try {
      apply_edit(datastore, keeper, used, change);
    } catch (...) {
      used.undo();
      throw;
    }
    log.take_over(own);
    valid_as_read = false;
  }

  // The same; returns what takes this edit back, once it is part of the log.
  Reversal apply_reversibly(Datastore& datastore, const ReadChange& change) {
    changes.reset();
    EditLog own(keeper, root);
    try {
      apply_edit(datastore, keeper, own, change);
    } catch (...) {
      own.undo();
      throw;
    }
    Reversal reversal(own);
    log.take_over(own);
    return reversal;
  }

  TreeKeeper& keeper;
  lyd_node*& root;
  EditLog log;
  /// What was committed since set_return().
  std::unique_ptr<EditLog> since_return;
  std::optional<Change> changes;
  /// Reading a whole new configuration has validated it already.
  bool valid_as_read = false;
};

namespace {

// Whether the tree has the innermost node of an edit of one node. For a leaf that is deleted it is
// the leaf's parent.
bool names_a_node(const Datastore& datastore, const ReadChange& change) {
  const lyd_node* innermost = change.root.get();
  while (const lyd_node* below = lyd_child_no_keys(innermost)) innermost = below;
  const auto path = Path::parse(datastore.schema(), path_of(innermost), nullptr);
  return path.has_value() && datastore.find(*path) != nullptr;
}

}  // namespace

Transaction::Transaction(Datastore& datastore)
    : datastore_(datastore), impl_(std::make_unique<Impl>(*datastore.keeper_, datastore.root_)) {}

Transaction::~Transaction() {
  discard();
  forget_return();
}

void Transaction::edit(const std::string& text, Format format) {
  impl_->apply(datastore_, read_change(datastore_.schema(), text, format));
}

void Transaction::edit_if(const std::string& text, Format format,
                          const std::function<bool()>& keep) {
  const ReadChange change = read_change(datastore_.schema(), text, format);
  const bool was_valid_as_read = std::exchange(impl_->valid_as_read, false);
  const bool was_edited = is_edited();
  datastore_.settle_order();
  Reversal reversal = impl_->apply_reversibly(datastore_, change);
  const auto undo = [&] {
    impl_->changes.reset();
    if (was_edited) {
      reversal.apply(impl_->log);
    } else {
      impl_->log.undo();
    }
    impl_->valid_as_read = was_valid_as_read;
  };
  try {
    if (!keep()) undo();
  } catch (...) {
    undo();
    throw;
  }
}

std::vector<InputError> Transaction::edit_what_fits(const std::string& text, Format format) {
  const ReadChange change = read_change(datastore_.schema(), text, format);
  std::vector<InputError> failures;
  EditLog own(impl_->keeper, impl_->root);
  impl_->changes.reset();
  try {
    apply_edit(datastore_, impl_->keeper, own, change,
               [&failures](const InputError& error) { failures.push_back(error); });
  } catch (...) {
    own.undo();
    throw;
  }
  impl_->log.take_over(own);
  impl_->valid_as_read = false;
  return failures;
}

void Transaction::edit(const KeypathEdit& edit) {
  const ReadChange change = read_keypath_edit(datastore_.schema(), edit);
  if (edit.operation == Operation::kRemove && !names_a_node(datastore_, change)) return;
  impl_->apply(datastore_, change);
}

void Transaction::replace(const std::string& text, Format format) {
  ReadConfiguration read = read_configuration(datastore_.schema(), text, format);
  impl_->changes.reset();
  impl_->log.swap_root(read.root.release());
  impl_->keeper.unordered_lists.merge(read.unordered);
  impl_->valid_as_read = true;
}

void Transaction::prepare() {
  const EditRecord* root = impl_->log.root_record();
  impl_->changes.reset();
  if (root == nullptr) return;
  if (!impl_->valid_as_read) check_edits(*root);
  impl_->changes = change_tree(*root);
}

const Change* Transaction::changes() const {
  return impl_->changes.has_value() ? &*impl_->changes : nullptr;
}

std::vector<ItemChange> Transaction::item_changes() const {
  const EditRecord* root = impl_->log.root_record();
  return root != nullptr ? store::item_changes(*root) : std::vector<ItemChange>();
}

void Transaction::commit() {
  impl_->changes.reset();
  if (has_return()) {
    impl_->since_return->take_over(impl_->log);
  } else {
    impl_->log.keep();
  }
}

void Transaction::set_return() {
  if (has_return()) return;
  impl_->since_return = std::make_unique<EditLog>(impl_->keeper, impl_->root);
}

bool Transaction::has_return() const {
  return impl_->since_return != nullptr;
}

void Transaction::forget_return() {
  if (!has_return()) return;
  impl_->since_return->keep();
  impl_->since_return.reset();
}

void Transaction::go_back() {
  if (!has_return()) return;
  EditLog& since = *impl_->since_return;
  impl_->changes.reset();
  impl_->valid_as_read = false;
  if (is_edited()) {
    since.take_over(impl_->log);
    impl_->log.take_over(since);
  } else {
    since.undo();
  }
  impl_->since_return.reset();
}

std::vector<ItemChange> Transaction::changes_to_go_back() const {
  if (!has_return() || impl_->since_return->root_record() == nullptr) return {};
  const CommittedSight sight(*this);
  return reversed(store::item_changes(*impl_->since_return->root_record()));
}

void Transaction::discard() {
  impl_->changes.reset();
  impl_->log.undo();
}

bool Transaction::is_edited() const {
  return impl_->log.root_record() != nullptr;
}

CommittedSight::CommittedSight(const Transaction& transaction) : edits_(*transaction.impl_) {
  edits_.log.set_aside();
}

CommittedSight::~CommittedSight() {
  edits_.log.bring_back();
}

namespace {

// The node to which a path leads in the configuration before the edits and, if the node is still in
// the tree, the record of the changes below it.
struct CommittedPlace {
  const lyd_node* node = nullptr;
  const EditRecord* record = nullptr;
};

const lyd_node* standing_child(const Datastore& datastore, const lyd_node* parent,
                               const PathStep& step) {
  if (step.node->kind == NodeKind::kList) return datastore.entry(parent, *step.node, step.keys);
  if (step.node->kind != NodeKind::kLeafList) return datastore.child(parent, *step.node);
  for (const lyd_node* value : datastore.leaf_list(parent, *step.node)) {
    if (has_key(value, step.keys)) return value;
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
  const EditRecord* gone = log.gone(*place.record, *step.node, step.keys);
  return {gone != nullptr ? gone->before : nullptr, nullptr};
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
  const SchemaNode& list = *path.last().node;
  const std::size_t count = datastore_.entries(parent.node, list).size();
  return parent.record != nullptr ? count - EditLog::growth(*parent.record, list) : count;
}

}  // namespace tarnd::store
