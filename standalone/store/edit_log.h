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

/// What has happened at one place of the tree since the transaction began.
///
///   tracked   before == after: the node is still there, its children have records
///   created   before null, after in the tree
///   deleted   before kept by the record, after null
///   swapped   both, and different nodes: before kept by the record, after in the tree
///   nothing   both null: created and deleted again
struct EditRecord {
  const SchemaNode* schema = nullptr;
  EditRecord* parent = nullptr;
  lyd_node* before = nullptr;
  lyd_node* after = nullptr;
  std::vector<std::unique_ptr<EditRecord>> children;
  /// How many more entries each list that lost or got some has than before.
  std::vector<std::pair<const SchemaNode*, std::ptrdiff_t>> growth;

  [[nodiscard]] bool tracked() const { return before != nullptr && before == after; }
};

/// Changes the tree node by node and can undo all changes. A node has a record only if it or
/// something below it changed. Below a created or swapped node there are no further records.
class EditLog {
 public:
  /// The caller owns both; `root` is the datastore's own pointer to its tree.
  EditLog(TreeKeeper& keeper, lyd_node*& root);

  /// Links an unlinked node below the parent, which is in the tree.
  void insert(lyd_node* parent, lyd_node* node);
  /// Takes a node and everything below it out of the tree.
  void remove(lyd_node* node);
  /// Replaces the whole tree.
  void swap_root(lyd_node* root);

  void undo();
  /// set_aside() takes the edits out of the tree, bring_back() puts them in again; nothing may be
  /// edited in between. The cost grows with the edits.
  void set_aside();
  void bring_back();
  /// Moves the edits of another log of this tree into this one. They must be later than its own;
  /// the other log is empty afterwards.
  void take_over(EditLog& later);
  /// Frees the nodes that the records keep; nothing can be undone afterwards.
  void keep();

  /// The record of `config`, or null if nothing was changed.
  [[nodiscard]] const EditRecord* root_record() const { return root_record_.get(); }
  /// The node's own record, or null.
  [[nodiscard]] EditRecord* record_of(const lyd_node* node) const;
  /// The record of the removed child of the parent that had this key, or null.
  [[nodiscard]] const EditRecord* gone(const EditRecord& parent, const SchemaNode& schema,
                                       InstanceKey key) const;
  /// How many more entries of the list the parent has than before.
  [[nodiscard]] static std::ptrdiff_t growth(const EditRecord& parent, const SchemaNode& list);

 private:
  // A parent, and what identifies a node that may have been removed from it.
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
  // Records of removed nodes, to be found if such a node is created again.
  std::unordered_set<EditRecord*, GoneHash, GoneEqual> gone_;
};

}  // namespace tarnd::store
