#include "standalone/store/edit.h"

#include <exception>
#include <map>

#include "standalone/store/defaults.h"
#include "standalone/store/libyang_compat.h"
#include "standalone/store/transaction.h"
#include "standalone/store/validity.h"

namespace tarnd::store {
namespace {

bool is_default(const lyd_node* node) {
  return (node->flags & LYD_DEFAULT) != 0;
}

bool is_inner(const lyd_node* node) {
  return (node->schema->nodetype & (LYS_CONTAINER | LYS_LIST)) != 0;
}

const lysc_node* case_around(const lysc_node* schema) {
  const lysc_node* around = schema->parent;
  return around != nullptr && around->nodetype == LYS_CASE ? around : nullptr;
}

class Editor {
 public:
  Editor(Datastore& datastore, TreeKeeper& keeper, EditLog& log, const ChangeNotes& notes,
         const FailureSink& failed)
      : datastore_(datastore), keeper_(keeper), log_(log), notes_(notes), failed_(failed) {}

  void apply_root(lyd_node* edit) {
    check_cases(edit);
    switch (operation_of(edit, notes_.default_operation)) {
      case Operation::kMerge:
        return apply_children(edit, datastore_.root(), Operation::kMerge);
      case Operation::kNone:
        return apply_children(edit, datastore_.root(), Operation::kNone);
      case Operation::kCreate:
        if (has_given_content(datastore_.root())) fail_exists(edit);
        return apply_children(edit, datastore_.root(), Operation::kMerge);
      case Operation::kReplace:
        clear(datastore_.root());
        return apply_children(edit, datastore_.root(), Operation::kMerge);
      case Operation::kDelete:
        if (!has_given_content(datastore_.root())) fail_missing(edit);
        return clear(datastore_.root());
      case Operation::kRemove:
        return clear(datastore_.root());
    }
  }

 private:
  [[nodiscard]] Operation operation_of(const lyd_node* edit, Operation inherited) const {
    const auto found = notes_.operations.find(edit);
    return found != notes_.operations.end() ? found->second : inherited;
  }

  // An edit with nodes of two cases of one choice is contradictory.
  void check_cases(const lyd_node* node) const {
    std::map<const lysc_node*, const lyd_node*> first_of_choice;
    for (const lyd_node* child = lyd_child(node); child != nullptr; child = child->next) {
      if (is_inner(child)) check_cases(child);
      const lysc_node* around = case_around(child->schema);
      const Operation operation = operation_of(child, Operation::kMerge);
      if (around == nullptr || operation == Operation::kDelete || operation == Operation::kRemove) {
        continue;
      }
      const lyd_node*& first = first_of_choice[around->parent];
      if (first == nullptr) first = child;
      if (case_around(first->schema) != around) {
        fail(child,
             "'" + schema_of(first).name + "' and '" + schema_of(child).name +
                 "' exclude each other below " + path_of(node),
             InputFault::kBadElement);
      }
    }
  }

  // `inherited` is the operation of a node without one of its own: merge, or none if only nodes
  // below it are edited.
  void apply_children(lyd_node* edit, lyd_node* parent, Operation inherited) {
    const auto removals = notes_.removals.find(edit);
    if (removals != notes_.removals.end()) {
      for (const LeafRemoval& removal : removals->second) {
        attempt([&] { apply(removal, parent, inherited); });
      }
    }
    lyd_node* next = nullptr;
    for (lyd_node* child = lyd_child(edit); child != nullptr; child = next) {
      next = child->next;
      if (lysc_is_key(child->schema)) continue;
      attempt([&] { apply(child, parent, inherited); });
    }
  }

  // What is wrong with a node is found before the node is changed.
  template <typename Action>
  void attempt(Action action) const {
    try {
      action();
    } catch (const InputError& error) {
      failed_(error);
    }
  }

  void apply(lyd_node* edit, lyd_node* parent, Operation inherited) {
    lyd_node* target = find(edit, parent);
    const bool given = target != nullptr && has_given_content(target);
    switch (operation_of(edit, inherited)) {
      case Operation::kMerge:
        return merge(edit, parent, target);
      case Operation::kCreate:
        if (given) fail_exists(edit);
        return merge(edit, parent, target);
      case Operation::kReplace:
        if (target != nullptr) take_away(target);
        return merge(edit, parent, find(edit, parent));
      case Operation::kDelete:
        if (!given) fail_missing(edit);
        return take_away(target);
      case Operation::kRemove:
        if (given) take_away(target);
        return;
      case Operation::kNone:
        if (target == nullptr) fail(edit, path_of(edit) + " does not exist", InputFault::kMissing);
        if (is_inner(edit)) apply_children(edit, target, Operation::kNone);
        return;
    }
  }

  void apply(const LeafRemoval& removal, lyd_node* parent, Operation inherited) {
    const Operation operation = removal.operation.value_or(inherited);
    lyd_node* target = datastore_.child(parent, *removal.leaf);
    const bool given = target != nullptr && !is_default(target);
    if (operation == Operation::kDelete && !given) {
      fail_missing(path_of(parent) + "/" + removal.leaf->name, removal.line);
    }
    if (operation == Operation::kCreate && given) fail_exists(path_of(target), removal.line);
    if (operation != Operation::kNone && given) take_away(target);
  }

  void merge(lyd_node* edit, lyd_node* parent, lyd_node* target) {
    if (target == nullptr) return add(edit, parent);
    if (is_inner(edit)) return apply_children(edit, target, Operation::kMerge);
    if (edit->schema->nodetype == LYS_LEAFLIST) return;
    if (value_text(edit) == value_text(target) && !is_default(target)) return;
    log_.remove(target);
    log_.insert(parent, without_edit_marks(edit));
  }

  // A new subtree is moved from the edit into the tree as a whole, or built node by node if it has
  // operations inside.
  void add(lyd_node* edit, lyd_node* parent) {
    leave_other_cases(edit, parent);
    if (!notes_.noted.contains(edit)) {
      lyd_unlink_tree(edit);
      insert_new(parent, edit);
      return;
    }
    lyd_node* node = without_edit_marks(edit);
    insert_new(parent, node);
    if (!is_inner(node)) return;
    apply_children(edit, node, Operation::kMerge);
    leave_unused_cases(node);
  }

  // The log has no records of what is in a new node, so that drop_empty_cases() does not see it.
  void leave_unused_cases(lyd_node* created) {
    lyd_node* next = nullptr;
    for (lyd_node* child = lyd_child(created); child != nullptr; child = next) {
      next = child->next;
      if (is_out_of_use(child)) log_.remove(child);
    }
  }

  void insert_new(lyd_node* parent, lyd_node* node) {
    if (is_inner(node)) {
      bring_defaults(node);
      note_unordered_lists(node);
    }
    log_.insert(parent, node);
  }

  void note_unordered_lists(const lyd_node* tree) {
    const lyd_node* node = nullptr;
    LYD_TREE_DFS_BEGIN(tree, node) {
      if (node != tree && !follows_in_order(node)) {
        keeper_.mark_unordered(&node->parent->node, schema_of(node));
      }
      LYD_TREE_DFS_END(tree, node);
    }
  }

  // Removes the node, and then adds what the model has in its place (a default, an empty
  // container).
  void take_away(lyd_node* node) {
    const SchemaNode& schema = schema_of(node);
    if (schema.kind == NodeKind::kContainer && case_around(node->schema) == nullptr) {
      return clear(node);
    }
    lyd_node* parent = &node->parent->node;
    log_.remove(node);
    if (schema.kind == NodeKind::kLeaf) bring_default(parent, schema);
  }

  void clear(lyd_node* node) {
    lyd_node* next = nullptr;
    for (lyd_node* child = lyd_child(node); child != nullptr; child = next) {
      next = child->next;
      if (!lysc_is_key(child->schema) && has_given_content(child)) take_away(child);
    }
  }

  void bring_default(lyd_node* parent, const SchemaNode& leaf) {
    const auto* schema = reinterpret_cast<const lysc_node_leaf*>(leaf.lysc);
    if (schema->dflt == nullptr || case_around(leaf.lysc) != nullptr) return;
    // libyang makes a leaf only in its place, but the log must record that it was linked there.
    lyd_node* node = nullptr;
    lyd_new_term(parent, nullptr, leaf.name.c_str(),
                 lyd_value_get_canonical(datastore_.schema().context(), schema->dflt), 0, &node);
    if (node == nullptr) throw InputError(take_libyang_error(datastore_.schema().context()));
    unlink_node(node);
    node->flags |= LYD_DEFAULT;
    log_.insert(parent, node);
  }

  // Creating a node of one case of a choice removes the nodes of its other cases.
  void leave_other_cases(const lyd_node* edit, lyd_node* parent) {
    const lysc_node* own = case_around(edit->schema);
    if (own == nullptr) return;
    lyd_node* next = nullptr;
    for (const SchemaNode* sibling : schema_of(parent).children) {
      const lysc_node* other = case_around(sibling->lysc);
      if (other == nullptr || other == own || other->parent != own->parent) continue;
      for (lyd_node* child = lyd_child(parent); child != nullptr; child = next) {
        next = child->next;
        if (child->schema == sibling->lysc) log_.remove(child);
      }
    }
  }

  lyd_node* find(const lyd_node* edit, const lyd_node* parent) const {
    const SchemaNode& schema = schema_of(edit);
    if (schema.kind == NodeKind::kList) {
      std::vector<std::string> keys;
      const lyd_node* key = lyd_child(edit);
      for (std::size_t i = 0; i < schema.num_keys; ++i, key = key->next) {
        keys.emplace_back(value_text(key));
      }
      return datastore_.entry(parent, schema, keys);
    }
    if (schema.kind != NodeKind::kLeafList) return datastore_.child(parent, schema);
    for (lyd_node* value : datastore_.leaf_list(parent, schema)) {
      if (value_text(value) == value_text(edit)) return value;
    }
    return nullptr;
  }

  // A copy of the element alone, an entry with its keys.
  static lyd_node* without_edit_marks(const lyd_node* edit) {
    lyd_node* node = nullptr;
    lyd_dup_single(edit, nullptr, LYD_DUP_NO_META, &node);
    return node;
  }

  [[nodiscard]] std::size_t line_of(const lyd_node* edit) const {
    return place_of(notes_.lines, edit).value_or(0);
  }

  [[noreturn]] void fail(const lyd_node* edit, const std::string& what, InputFault fault) const {
    throw InputError(what, line_of(edit), fault,
                     {.path = path_of(edit), .element = schema_of(edit).name});
  }

  [[noreturn]] static void fail_exists(const std::string& path, std::size_t line) {
    throw InputError("cannot create " + path + ": it exists already", line, InputFault::kExists,
                     {.path = path});
  }
  [[noreturn]] void fail_exists(const lyd_node* edit) const {
    fail_exists(path_of(edit), line_of(edit));
  }

  [[noreturn]] static void fail_missing(const std::string& path, std::size_t line) {
    throw InputError("cannot delete " + path + ": it does not exist", line, InputFault::kMissing,
                     {.path = path});
  }
  [[noreturn]] void fail_missing(const lyd_node* edit) const {
    fail_missing(path_of(edit), line_of(edit));
  }

  Datastore& datastore_;
  TreeKeeper& keeper_;
  EditLog& log_;
  const ChangeNotes& notes_;
  const FailureSink& failed_;
};

// If a container loses its last node in a case, the case is no longer in use, and the container is
// removed.
void find_empty_cases(const EditRecord& record, std::vector<lyd_node*>& found) {
  if (record.after == nullptr) return;
  const bool is_case_container =
      record.schema->kind == NodeKind::kContainer && case_around(record.schema->lysc) != nullptr;
  if (is_case_container && !has_given_content(record.after)) {
    found.push_back(record.after);
    return;
  }
  if (!record.tracked()) return;
  for (const auto& child : record.children) find_empty_cases(*child, found);
}

void drop_empty_cases(EditLog& log) {
  std::vector<lyd_node*> empty;
  if (log.root_record() != nullptr) find_empty_cases(*log.root_record(), empty);
  for (lyd_node* node : empty) log.remove(node);
}

}  // namespace

void apply_edit(Datastore& datastore, TreeKeeper& keeper, EditLog& log, const ReadChange& change) {
  apply_edit(datastore, keeper, log, change,
             [](const InputError& /*error*/) { std::rethrow_exception(std::current_exception()); });
}

void apply_edit(Datastore& datastore, TreeKeeper& keeper, EditLog& log, const ReadChange& change,
                const FailureSink& failed) {
  Editor(datastore, keeper, log, change.notes, failed).apply_root(change.root.get());
  drop_empty_cases(log);
}

}  // namespace tarnd::store
