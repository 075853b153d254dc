#pragma once

#include <memory>
#include <unordered_map>
#include <vector>

#include "standalone/store/tree_keeper.h"

namespace tarnd::store {

/// What happened at one place of the tree since the transaction began.
///
///   tracked   before == after: the node itself stands, its children have records
///   created   before null, after in the tree
///   deleted   before kept aside by the record, after null
///   swapped   both, and different nodes: before kept aside, after in the tree
///   nothing   both null: created and deleted again
struct EditRecord {
  const SchemaNode* schema = nullptr;
  EditRecord* parent = nullptr;
  lyd_node* before = nullptr;
  lyd_node* after = nullptr;
  std::vector<std::unique_ptr<EditRecord>> children;

  [[nodiscard]] bool tracked() const { return before != nullptr && before == after; }
};

/// Changes the tree node by node and can take all of it back. A node's record exists only where
/// something changed; what happens below a created or swapped node is covered by that node's.
class EditLog {
 public:
  /// Both stay with the caller; `root` is the datastore's own pointer to its tree.
  EditLog(TreeKeeper& keeper, lyd_node*& root);

  /// Links a node that stands alone below the parent, which stands in the tree.
  void insert(lyd_node* parent, lyd_node* node);
  /// Takes a node and all below out of the tree.
  void remove(lyd_node* node);
  /// Puts another whole tree in place.
  void swap_root(lyd_node* root);

  void undo();
  /// Frees what was kept aside; nothing can be taken back afterwards.
  void keep();

  /// The record of `config`, or null when nothing was touched.
  [[nodiscard]] const EditRecord* root_record() const { return root_record_.get(); }
  /// The node's own record, or null.
  [[nodiscard]] EditRecord* record_of(const lyd_node* node) const;

 private:
  EditRecord* track(lyd_node* node);
  EditRecord* add(EditRecord& parent, const SchemaNode& schema, lyd_node* before, lyd_node* after);
  void undo(EditRecord& record, lyd_node* parent);
  void forget_gone(const EditRecord& record);
  void keep(EditRecord& record);

  TreeKeeper& keeper_;
  lyd_node*& root_;
  std::unique_ptr<EditRecord> root_record_;
  std::unordered_map<const lyd_node*, EditRecord*> by_node_;
  // Nodes that are gone, by the hash of their name and keys: they may come back.
  std::unordered_multimap<std::uint32_t, EditRecord*> gone_;
};

}  // namespace tarnd::store
