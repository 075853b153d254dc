#pragma once

#include <cstddef>
#include <memory>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "standalone/store/instance_key.h"
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
  /// How many more entries a list has than before; of the lists that lost or got some.
  std::vector<std::pair<const SchemaNode*, std::ptrdiff_t>> growth;

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
  /// Takes the edits out of the tree, which then is as it was before them, and puts them in again.
  /// In between nothing may be edited. Costs what the edits touched.
  void set_aside();
  void bring_back();
  /// Makes the edits of another log of this tree, all later than its own, its own; that log is
  /// empty afterwards.
  void take_over(EditLog& later);
  /// Frees what was kept aside; nothing can be taken back afterwards.
  void keep();

  /// The record of `config`, or null when nothing was touched.
  [[nodiscard]] const EditRecord* root_record() const { return root_record_.get(); }
  /// The node's own record, or null.
  [[nodiscard]] EditRecord* record_of(const lyd_node* node) const;
  /// The record of the node of this key that is gone from below the parent, or null.
  [[nodiscard]] const EditRecord* gone(const EditRecord& parent, const SchemaNode& schema,
                                       InstanceKey key) const;
  /// How many more entries of the list there are below the parent than before.
  [[nodiscard]] static std::ptrdiff_t growth(const EditRecord& parent, const SchemaNode& list);

 private:
  // Where a node may be gone from, and which.
  struct Place {
    const EditRecord* parent;
    const SchemaNode* schema;
    InstanceKey key;
  };
  struct Standing {
    const EditRecord* parent;
    const lyd_node* node;
  };
  struct GoneHash {
    using is_transparent = void;
    std::size_t operator()(const EditRecord* record) const;
    std::size_t operator()(const Place& place) const;
    std::size_t operator()(const Standing& standing) const;
  };
  struct GoneEqual {
    using is_transparent = void;
    bool operator()(const EditRecord* left, const EditRecord* right) const { return left == right; }
    bool operator()(const Place& place, const EditRecord* record) const;
    bool operator()(const Standing& standing, const EditRecord* record) const;
  };

  EditRecord* track(lyd_node* node);
  EditRecord* add(EditRecord& parent, const SchemaNode& schema, lyd_node* before, lyd_node* after);
  void note_insertion(lyd_node* parent, lyd_node* node);
  void note_removal(lyd_node* parent, lyd_node* node);
  void undo(EditRecord& record, lyd_node* parent);
  void set_aside(const EditRecord& record, lyd_node* parent);
  void bring_back(const EditRecord& record, lyd_node* parent);
  void take_over_children(const EditRecord& record);
  void take_over_root(const EditRecord& swapped);
  void forget();
  void keep(EditRecord& record);

  TreeKeeper& keeper_;
  lyd_node*& root_;
  std::unique_ptr<EditRecord> root_record_;
  std::unordered_map<const lyd_node*, EditRecord*> by_node_;
  // Records whose nodes are gone: they may come back.
  std::unordered_set<EditRecord*, GoneHash, GoneEqual> gone_;
};

}  // namespace tarnd::store
