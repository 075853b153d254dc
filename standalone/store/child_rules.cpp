#include "standalone/store/child_rules.h"

namespace tarnd::store {
namespace {

const SchemaNode* node_of(const lysc_node* node) {
  return static_cast<const SchemaNode*>(node->priv);
}

bool is_mandatory(const lysc_node* node) {
  return (node->flags & LYS_MAND_TRUE) != 0 && !lysc_is_key(node);
}

void add_nodes(const lysc_node* parent, std::vector<const SchemaNode*>& nodes) {
  for (const lysc_node* node = lysc_node_child(parent); node != nullptr; node = node->next) {
    if ((node->nodetype & (LYS_CHOICE | LYS_CASE)) != 0) {
      add_nodes(node, nodes);
    } else {
      nodes.push_back(node_of(node));
    }
  }
}

ChoiceRule choice_rule(const lysc_node* choice) {
  ChoiceRule rule;
  rule.name = choice->name;
  rule.mandatory = is_mandatory(choice);
  for (const lysc_node* node = lysc_node_child(choice); node != nullptr; node = node->next) {
    CaseRule& added = rule.cases.emplace_back();
    add_nodes(node, added.nodes);
    added.rules = child_rules(node);
  }
  return rule;
}

}  // namespace

ChildRules child_rules(const lysc_node* parent) {
  ChildRules rules;
  for (const lysc_node* node = lysc_node_child(parent); node != nullptr; node = node->next) {
    if (node->nodetype == LYS_CHOICE) {
      rules.choices.push_back(choice_rule(node));
    } else if (is_mandatory(node)) {
      rules.mandatory.push_back(node_of(node));
    }
  }
  return rules;
}

}  // namespace tarnd::store
