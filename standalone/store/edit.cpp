#include "standalone/store/edit.h"

#include <map>

#include "standalone/store/libyang_compat.h"
#include "standalone/store/transaction.h"

namespace tarnd::store {
namespace {

constexpr std::string_view kEditNamespace = "urn:ietf:params:xml:ns:netconf:base:1.0";
constexpr std::string_view kEditModule = "ietf-netconf";
constexpr std::string_view kOperation = "operation";

using TreeOwner = std::unique_ptr<lyd_node, decltype(&lyd_free_all)>;

enum class Operation { kMerge, kReplace, kCreate, kDelete, kRemove };

Operation operation_named(std::string_view name) {
  static const std::map<std::string_view, Operation> kOperations = {
      {"merge", Operation::kMerge},   {"replace", Operation::kReplace},
      {"create", Operation::kCreate}, {"delete", Operation::kDelete},
      {"remove", Operation::kRemove},
  };
  const auto found = kOperations.find(name);
  if (found == kOperations.end()) {
    throw InputError("unknown edit operation '" + std::string(name) + "'");
  }
  return found->second;
}

// An element that libyang could not read as data keeps its attributes in text form.
Operation operation_of_opaque(const lyd_node* node) {
  const auto* opaque = reinterpret_cast<const lyd_node_opaq*>(node);
  for (const lyd_attr* attribute = opaque->attr; attribute != nullptr;
       attribute = attribute->next) {
    const char* module = attribute->name.module_ns;
    if (attribute->name.name == kOperation && module != nullptr &&
        (module == kEditNamespace || module == kEditModule)) {
      return operation_named(attribute->value);
    }
  }
  return Operation::kMerge;
}

Operation operation_of(const lyd_node* node) {
  if (node->schema == nullptr) return operation_of_opaque(node);
  for (const lyd_meta* meta = node->meta; meta != nullptr; meta = meta->next) {
    if (meta->name == kOperation && meta->annotation->module->name == kEditModule) {
      return operation_named(lyd_get_meta_value(meta));
    }
  }
  return Operation::kMerge;
}

bool is_plain(const lyd_node* node) {
  if (node->schema == nullptr) return false;
  for (const lyd_meta* meta = node->meta; meta != nullptr; meta = meta->next) {
    if (!is_internal(meta)) return false;
  }
  for (const lyd_node* child = lyd_child(node); child != nullptr; child = child->next) {
    if (!is_plain(child)) return false;
  }
  return true;
}

bool is_default(const lyd_node* node) {
  return (node->flags & LYD_DEFAULT) != 0;
}

bool is_inner(const lyd_node* node) {
  return (node->schema->nodetype & (LYS_CONTAINER | LYS_LIST)) != 0;
}

// A container that holds nothing given is as good as none, which libyang notes as a default.
bool mark_empty_containers(lyd_node* node) {
  bool empty = schema_of(node).kind == NodeKind::kContainer;
  for (lyd_node* child = lyd_child(node); child != nullptr; child = child->next) {
    const bool child_is_empty = is_inner(child) ? mark_empty_containers(child) : is_default(child);
    empty = empty && child_is_empty;
  }
  if (empty) node->flags |= LYD_DEFAULT;
  return empty;
}

// libyang leaves containers that count as defaults without their own defaults, and an empty one in
// an edit counts as one.
void bring_defaults(lyd_node* tree) {
  lyd_node* node = nullptr;
  LYD_TREE_DFS_BEGIN(tree, node) {
    if (is_inner(node)) node->flags &= ~static_cast<std::uint32_t>(LYD_DEFAULT);
    LYD_TREE_DFS_END(tree, node);
  }
  lyd_new_implicit_tree(tree, LYD_IMPLICIT_NO_STATE, nullptr);
  mark_empty_containers(tree);
}

const lysc_node* case_around(const lysc_node* schema) {
  const lysc_node* around = schema->parent;
  return around != nullptr && around->nodetype == LYS_CASE ? around : nullptr;
}

// An edit that gives nodes of two cases of one choice has no meaning.
void check_cases(const lyd_node* node) {
  std::map<const lysc_node*, const lyd_node*> first_of_choice;
  for (const lyd_node* child = lyd_child(node); child != nullptr; child = child->next) {
    if (child->schema == nullptr) continue;
    check_cases(child);
    const lysc_node* around = case_around(child->schema);
    const Operation operation = operation_of(child);
    if (around == nullptr || operation == Operation::kDelete || operation == Operation::kRemove) {
      continue;
    }
    const lyd_node*& first = first_of_choice[around->parent];
    if (first == nullptr) first = child;
    if (case_around(first->schema) != around) {
      throw InputError("'" + schema_of(first).name + "' and '" + schema_of(child).name +
                       "' exclude each other below " + path_of(node));
    }
  }
}

// libyang's own words about the first thing in the text that is no edit of the model.
[[noreturn]] void throw_parse_error(const Schema& schema, const std::string& text, Format format) {
  lyd_node* tree = nullptr;
  lyd_parse_data_mem(schema.context(), text.c_str(), libyang_format(format),
                     LYD_PARSE_ONLY | LYD_PARSE_STRICT, 0, &tree);
  lyd_free_all(tree);
  throw InputError(take_libyang_error(schema.context()));
}

class Editor {
 public:
  Editor(Datastore& datastore, TreeKeeper& keeper, EditLog& log, const std::string& text,
         Format format)
      : datastore_(datastore), keeper_(keeper), log_(log), text_(text), format_(format) {}

  void apply_root(lyd_node* edit) {
    switch (operation_of(edit)) {
      case Operation::kMerge:
        return apply_children(edit, datastore_.root());
      case Operation::kCreate:
        if (has_given_content(datastore_.root())) throw_exists(datastore_.root());
        return apply_children(edit, datastore_.root());
      case Operation::kReplace:
        clear(datastore_.root());
        return apply_children(edit, datastore_.root());
      case Operation::kDelete:
        if (!has_given_content(datastore_.root())) throw_missing(edit);
        return clear(datastore_.root());
      case Operation::kRemove:
        return clear(datastore_.root());
    }
  }

 private:
  void apply_children(lyd_node* edit, lyd_node* parent) {
    lyd_node* next = nullptr;
    for (lyd_node* child = lyd_child(edit); child != nullptr; child = next) {
      next = child->next;
      if (child->schema == nullptr) {
        apply_opaque(child, parent);
      } else if (!lysc_is_key(child->schema)) {
        apply(child, parent);
      }
    }
  }

  void apply(lyd_node* edit, lyd_node* parent) {
    lyd_node* target = find(edit, parent);
    const bool given = target != nullptr && has_given_content(target);
    switch (operation_of(edit)) {
      case Operation::kMerge:
        return merge(edit, parent, target);
      case Operation::kCreate:
        if (given) throw_exists(target);
        return merge(edit, parent, target);
      case Operation::kReplace:
        if (target != nullptr) take_away(target);
        return merge(edit, parent, find(edit, parent));
      case Operation::kDelete:
        if (!given) throw_missing(edit);
        return take_away(target);
      case Operation::kRemove:
        if (given) take_away(target);
        return;
    }
  }

  // A leaf that goes needs no value, and without one few types read it.
  void apply_opaque(const lyd_node* edit, const lyd_node* parent) {
    const SchemaNode* leaf = schema_of(parent).child(LYD_NAME(edit));
    const Operation operation = operation_of(edit);
    const bool goes = operation == Operation::kDelete || operation == Operation::kRemove;
    if (!goes || leaf == nullptr || leaf->kind != NodeKind::kLeaf || leaf->is_key()) {
      throw_parse_error(datastore_.schema(), text_, format_);
    }
    lyd_node* target = datastore_.child(parent, *leaf);
    if (target != nullptr && !is_default(target)) {
      take_away(target);
    } else if (operation == Operation::kDelete) {
      throw InputError("cannot delete " + path_of(parent) + "/" + leaf->name +
                       ": it does not exist");
    }
  }

  void merge(lyd_node* edit, lyd_node* parent, lyd_node* target) {
    if (target == nullptr) return add(edit, parent);
    if (is_inner(edit)) return apply_children(edit, target);
    if (edit->schema->nodetype == LYS_LEAFLIST) return;
    if (value_text(edit) == value_text(target) && !is_default(target)) return;
    log_.remove(target);
    log_.insert(parent, without_edit_marks(edit));
  }

  // A whole new subtree moves from the edit into the tree; one with operations inside is built up.
  void add(lyd_node* edit, lyd_node* parent) {
    leave_other_cases(edit, parent);
    if (is_plain(edit)) {
      lyd_unlink_tree(edit);
      insert_new(parent, edit);
      return;
    }
    lyd_node* node = without_edit_marks(edit);
    insert_new(parent, node);
    if (is_inner(node)) apply_children(edit, node);
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

  // Takes the node out; what the model keeps in its place (a default, an empty container) comes
  // back.
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
    // libyang makes a leaf only in its place; the log is to see it come.
    lyd_node* node = nullptr;
    lyd_new_term(parent, nullptr, leaf.name.c_str(),
                 lyd_value_get_canonical(datastore_.schema().context(), schema->dflt), 0, &node);
    if (node == nullptr) throw InputError(take_libyang_error(datastore_.schema().context()));
    lyd_unlink_tree(node);
    node->flags |= LYD_DEFAULT;
    log_.insert(parent, node);
  }

  // A node of one case of a choice ends the other cases.
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

  [[noreturn]] static void throw_exists(const lyd_node* target) {
    throw InputError("cannot create " + path_of(target) + ": it exists already");
  }

  [[noreturn]] static void throw_missing(const lyd_node* edit) {
    throw InputError("cannot delete " + path_of(edit) + ": it does not exist");
  }

  Datastore& datastore_;
  TreeKeeper& keeper_;
  EditLog& log_;
  const std::string& text_;
  Format format_;
};

// The container of a case that lost all it held is gone with its case.
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

void apply_edit(Datastore& datastore, TreeKeeper& keeper, EditLog& log, const std::string& text,
                Format format) {
  check_text(text);
  const Schema& schema = datastore.schema();
  lyd_node* parsed = nullptr;
  const LY_ERR result = lyd_parse_data_mem(schema.context(), text.c_str(), libyang_format(format),
                                           LYD_PARSE_ONLY | LYD_PARSE_OPAQ, 0, &parsed);
  const TreeOwner edit(parsed, lyd_free_all);
  if (result != LY_SUCCESS) throw_parse_error(schema, text, format);
  if (parsed == nullptr || parsed->schema != schema.root().lysc || parsed->next != nullptr) {
    throw InputError("the change has no top-level '" + schema.root().name + "'");
  }
  encrypt_leaves(parsed);
  check_cases(parsed);
  Editor(datastore, keeper, log, text, format).apply_root(parsed);
  drop_empty_cases(log);
}

}  // namespace tarnd::store
