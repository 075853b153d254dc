#pragma once

#include <memory>
#include <string>
#include <vector>

#include "standalone/store/datastore.h"

namespace tarnd::store {

/// What a transaction does to one node. The root change is that of `config`; below it stand only
/// nodes on the way to a change.
///
///   created   before null, after in the tree      (its children are not listed: all are new)
///   deleted   before kept aside, after null       (its children are not listed: all are gone)
///   changed   both; of a leaf the old and the new value, else the children say what changed
///
/// A leaf with a default always has an instance: deleting it where the default differs is a change.
/// A leaf-list is one change for all its values, told by `values_before` and `values_after`,
/// both in ascending order.
struct Change {
  const SchemaNode* schema = nullptr;
  const lyd_node* before = nullptr;
  const lyd_node* after = nullptr;
  std::vector<const lyd_node*> values_before;
  std::vector<const lyd_node*> values_after;
  std::vector<Change> children;  ///< in the order of the model, within a list in key order
};

/// True where the subtree of a created or deleted node holds what counts as a change: an entry, a
/// presence container or a leaf that was given, not only defaults and empty containers.
bool has_given_content(const lyd_node* node);

/// One edit of the datastore, in place. At most one is open at a time. Destroyed without commit()
/// it puts everything back as it was.
class Transaction {
 public:
  explicit Transaction(Datastore& datastore);
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  ~Transaction();

  /// Applies edit-config content: merge by default, nc:operation on any element. Throws InputError;
  /// the transaction is then as it was before this edit.
  void edit(const std::string& text, Format format);

  /// Makes the text the whole new configuration. Throws InputError; the transaction is then as it
  /// was.
  void replace(const std::string& text, Format format);

  /// Ends the edits: brings defaults into effect, checks what was edited against the model and
  /// settles what changed. Throws InputError.
  void prepare();

  /// After prepare(): the change of `config`, or null when nothing differs.
  [[nodiscard]] const Change* changes() const;

  /// Keeps the tree as it is now. What is edited afterwards can be committed again.
  void commit();

  /// Takes back all that was edited since the last commit.
  void discard();

  /// True when something was edited since the last commit, also if nothing differs any more.
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

/// While it lives, the datastore shows what is committed and not what the open transaction edited;
/// it can be read, searched and printed, not edited. At most one lives at a time. Costs what was
/// edited, not what the configuration holds.
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
