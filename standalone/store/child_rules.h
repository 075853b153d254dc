#pragma once

#include <libyang/libyang.h>

#include <string>
#include <vector>

namespace tarnd::store {

struct SchemaNode;
struct ChoiceRule;

/// What must exist below every instance of a container or list, or of a case that is in use.
struct ChildRules {
  std::vector<const SchemaNode*> mandatory;  ///< except keys and the nodes of choices
  std::vector<ChoiceRule> choices;
};

/// One case of a choice.
struct CaseRule {
  std::vector<const SchemaNode*> nodes;  ///< including those of choices inside the case
  ChildRules rules;
};

/// Nodes of at most one case may exist; if the choice is mandatory, of exactly one.
struct ChoiceRule {
  std::string name;
  bool mandatory = false;
  std::vector<CaseRule> cases;
};

/// Computes the rules below a node of the compiled model. Its data nodes must already point to
/// their SchemaNodes.
ChildRules child_rules(const lysc_node* parent);

}  // namespace tarnd::store
