#pragma once

#include <libyang/libyang.h>

#include <string>
#include <vector>

namespace tarnd::store {

struct SchemaNode;
struct ChoiceRule;

/// What must exist below every instance of a container or list, or of a case that is in use.
struct ChildRules {
  std::vector<const SchemaNode*> mandatory;  ///< without keys and the nodes of choices
  std::vector<ChoiceRule> choices;
};

/// One case of a choice.
struct CaseRule {
  std::vector<const SchemaNode*> nodes;  ///< with those of choices inside the case
  ChildRules rules;
};

/// Nodes of at most one case may exist; if the choice is mandatory, of exactly one.
struct ChoiceRule {
  std::string name;
  bool mandatory = false;
  std::vector<CaseRule> cases;
};

/// The rules below a node of the compiled model whose data nodes lead to their SchemaNodes.
ChildRules child_rules(const lysc_node* parent);

}  // namespace tarnd::store
