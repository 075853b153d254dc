#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "standalone/input_error.h"
#include "standalone/store/datastore.h"
#include "standalone/store/item_changes.h"
#include "standalone/store/keypath_edit.h"

namespace tarnd::store {

/// What a transaction does to one node. The root change is that of `config`; below it are only
/// nodes that changed or that have a change below.
///
///   created   before null, after in the tree          (its children are not listed: all are new)
///   deleted   before kept by the log, after null      (its children are not listed: all are gone)
///   changed   both: a leaf's old and new value; other nodes have changes below them
///
/// A leaf with a default always has an instance: deleting it is a change of its value, if that
/// differs from the default. All values of a leaf-list are one change, with `values_before` and
/// `values_after` in ascending order.
struct Change {
  const SchemaNode* schema = nullptr;
  const lyd_node* before = nullptr;
  const lyd_node* after = nullptr;
  std::vector<const lyd_node*> values_before;
  std::vector<const lyd_node*> values_after;
  std::vector<Change> children;  ///< in the order of the model, within a list in key order
};

/// Whether the subtree of a created or deleted node has more than defaults and empty containers: an
/// entry, a presence container, or a leaf whose value was set.
bool has_given_content(const lyd_node* node);

/// Edits of the datastore, in place. At most one transaction is open at a time. Its
/// destructor undoes all edits since the last commit().
class Transaction {
 public:
  explicit Transaction(Datastore& datastore);
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  ~Transaction();

  /// Applies edit-config content: merge by default, nc:operation on any element. Throws InputError;
  /// the transaction is then as it was before this edit.
  void edit(const std::string& text, Format format);

  /// The same, and then undoes this edit, but none before it, unless `keep` returns true. What
  /// `keep` throws passes through, after the edit is undone.
  void edit_if(const std::string& text, Format format, const std::function<bool()>& keep);

  /// Applies of an edit what can be applied, and returns the errors of the other nodes. Throws
  /// InputError, and applies nothing, if the text is no edit of this model.
  std::vector<InputError> edit_what_fits(const std::string& text, Format format);

  /// Applies the edit of one node, with the same guarantee.
  void edit(const KeypathEdit& edit);

  /// Replaces the whole configuration by that in the text. Throws InputError; the transaction is
  /// then as it was.
  void replace(const std::string& text, Format format);

  /// Ends the edits: adds defaults, checks what was edited against the model, and computes the
  /// changes. Throws InputError.
  void prepare();

  /// After prepare(): the change of `config`, or null if nothing changed.
  [[nodiscard]] const Change* changes() const;

  /// What commit() would change now, item by item.
  [[nodiscard]] std::vector<ItemChange> item_changes() const;

  /// Makes the tree as it is now the committed configuration. Further edits can follow, and be
  /// committed again.
  void commit();

  /// Undoes all edits since the last commit.
  void discard();

  /// go_back() will return to the committed configuration as it is now, unless a point of return is
  /// set already. From now on commits keep what they changed.
  void set_return();
  [[nodiscard]] bool has_return() const;
  /// The commits since then stay for good.
  void forget_return();
  /// What go_back() would change in the committed configuration.
  [[nodiscard]] std::vector<ItemChange> changes_to_go_back() const;
  /// Makes the configuration of set_return() the committed one again. If there are edits, the tree
  /// stays as it is, and what was taken back is one of the edits; if there are none, there are none
  /// afterwards either.
  void go_back();

  /// Whether there were edits since the last commit, even if they left no difference.
  [[nodiscard]] bool is_edited() const;

  [[nodiscard]] Datastore& datastore() const { return datastore_; }

  /// The committed configuration, as it was before this transaction: the node at the path or null.
  [[nodiscard]] const lyd_node* committed(const Path& path) const;
  /// The committed number of entries of the list at the path (its last step without keys).
  [[nodiscard]] std::size_t committed_entries(const Path& path) const;

 private:
  friend class CommittedSight;
  class Impl;
  Datastore& datastore_;
  std::unique_ptr<Impl> impl_;
};

/// While this object exists, the datastore is the committed configuration, without the edits of the
/// open transaction. It can be read, searched and printed, but not edited. At most one may exist at
/// a time. The cost grows with the edits, not with the configuration.
class CommittedSight {
 public:
  explicit CommittedSight(const Transaction& transaction);
  CommittedSight(const CommittedSight&) = delete;
  CommittedSight& operator=(const CommittedSight&) = delete;
  ~CommittedSight();

 private:
  Transaction::Impl& edits_;
};

}  // namespace tarnd::store
