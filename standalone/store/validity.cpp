#include "standalone/store/validity.h"

#include <algorithm>
#include <string>
#include <vector>

#include "standalone/store/datastore.h"
#include "standalone/store/edit_log.h"
#include "standalone/store/transaction.h"

namespace tarnd::store {
namespace {

// `element` is what the fault is about, besides the node.
[[noreturn]] void refuse(const lyd_node* node, const std::string& reason, InputFault fault,
                         const std::string& element) {
  const std::string path = path_of(node);
  throw InvalidNode(node, path + ": " + reason, fault, {.path = path, .element = element});
}

std::string in_quotes(const std::string& name) {
  return "'" + name + "'";
}

[[noreturn]] void refuse_missing(const lyd_node* parent, const SchemaNode& node) {
  if (node.kind == NodeKind::kLeaf) {
    refuse(parent, "mandatory node " + in_quotes(node.name) + " does not exist",
           InputFault::kMissing, node.name);
  }
  // A container is mandatory if it contains something mandatory.
  std::string name = node.name;
  const SchemaNode* holds = &node;
  while (!holds->rules.mandatory.empty()) {
    holds = holds->rules.mandatory.front();
    name += "/" + holds->name;
  }
  refuse(parent, "mandatory node " + in_quotes(name) + " does not exist", InputFault::kMissing,
         node.name);
}

// Which nodes of a case exist.
struct CaseNodes {
  const SchemaNode* first = nullptr;
  bool given = false;  ///< some node that is neither a default nor an empty container
};

CaseNodes nodes_of(const lyd_node* parent, const CaseRule& one) {
  CaseNodes found;
  for (const SchemaNode* node : one.nodes) {
    const lyd_node* instance = child_instance(parent, *node);
    if (instance == nullptr) continue;
    if (found.first == nullptr) found.first = node;
    found.given = found.given || has_given_content(instance);
  }
  return found;
}

void check_rules(const lyd_node* parent, const ChildRules& rules);

void check_choice(const lyd_node* parent, const ChoiceRule& choice) {
  const CaseRule* in_use = nullptr;
  CaseNodes existing;
  for (const CaseRule& one : choice.cases) {
    const CaseNodes nodes = nodes_of(parent, one);
    if (nodes.first == nullptr) continue;
    if (existing.first != nullptr) {
      refuse(parent,
             in_quotes(existing.first->name) + " and " + in_quotes(nodes.first->name) +
                 " exclude each other",
             InputFault::kBadElement, nodes.first->name);
    }
    existing = nodes;
    in_use = &one;
  }
  if (existing.given) return check_rules(parent, in_use->rules);
  if (choice.mandatory) {
    refuse(parent, "no node of the mandatory choice " + in_quotes(choice.name) + " exists",
           InputFault::kMissingChoice, choice.name);
  }
}

void check_rules(const lyd_node* parent, const ChildRules& rules) {
  for (const SchemaNode* node : rules.mandatory) {
    const lyd_node* instance = child_instance(parent, *node);
    if (instance == nullptr) refuse_missing(parent, *node);
    // When a case comes into use, so does a container in it that was not edited.
    if (node->kind == NodeKind::kContainer) check_rules(instance, node->rules);
  }
  for (const ChoiceRule& choice : rules.choices) check_choice(parent, choice);
}

[[noreturn]] void refuse_second(const lyd_node* node) {
  refuse(node, "exists twice", InputFault::kBadElement, schema_of(node).name);
}

// Checks all instances of one list or leaf-list, beginning with this one. Most are in order
// already.
template <typename Less>
void check_run(const lyd_node* first, Less less) {
  const auto is_next = [&](const lyd_node* node) {
    return node->next != nullptr && node->next->schema == node->schema;
  };
  const lyd_node* node = first;
  while (is_next(node) && less(node, node->next)) node = node->next;
  if (!is_next(node)) return;

  std::vector<const lyd_node*> run;
  for (node = first; is_next(node); node = node->next) run.push_back(node);
  run.push_back(node);
  std::sort(run.begin(), run.end(), less);
  const auto twice =
      std::adjacent_find(run.begin(), run.end(),
                         [&](const auto* left, const auto* right) { return !less(left, right); });
  if (twice != run.end()) refuse_second(*twice);
}

void check_single(const lyd_node* first) {
  const lyd_node* next = first->next;
  if (next == nullptr || next->schema != first->schema) return;
  if (lysc_is_dup_inst_list(first->schema)) return;
  switch (schema_of(first).kind) {
    case NodeKind::kList:
      return check_run(first, key_less);
    case NodeKind::kLeafList:
      return check_run(first, value_less);
    default:
      refuse_second(first);
  }
}

bool is_inner(const lyd_node* node) {
  // Only opaque nodes have none, and there are none here.
  // NOLINTNEXTLINE(clang-analyzer-core.NullDereference)
  return (node->schema->nodetype & (LYS_CONTAINER | LYS_LIST)) != 0;
}

bool is_of_case(const lysc_node* node, const lysc_node* one) {
  const lysc_node* around = node->parent;
  while (around != nullptr && around != one && (around->nodetype & (LYS_CHOICE | LYS_CASE)) != 0) {
    around = around->parent;
  }
  return around == one;
}

}  // namespace

bool is_out_of_use(const lyd_node* node) {
  const lysc_node* around = node->schema->parent;
  if (around == nullptr || around->nodetype != LYS_CASE || has_given_content(node)) return false;
  for (const lyd_node* other = lyd_first_sibling(node); other != nullptr; other = other->next) {
    if (is_of_case(other->schema, around) && has_given_content(other)) return false;
  }
  return true;
}

void check_subtree(const lyd_node* node) {
  if (!is_inner(node)) return;
  check_rules(node, schema_of(node).rules);
  const lysc_node* last = nullptr;
  for (const lyd_node* child = lyd_child(node); child != nullptr; child = child->next) {
    if (child->schema != last) check_single(child);
    last = child->schema;
    if (is_inner(child) && !is_out_of_use(child)) check_subtree(child);
  }
}

void check_edits(const EditRecord& root) {
  if (root.after == nullptr) return;
  if (!root.tracked()) return check_subtree(root.after);
  check_rules(root.after, root.schema->rules);
  for (const auto& child : root.children) check_edits(*child);
}

}  // namespace tarnd::store
