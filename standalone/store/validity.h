#pragma once

#include <libyang/libyang.h>

#include <string>

#include "standalone/input_error.h"

namespace tarnd::store {

struct EditRecord;

/// What is wrong with a tree as a whole, and at which of its nodes.
class InvalidNode : public InputError {
 public:
  InvalidNode(const lyd_node* node, const std::string& text) : InputError(text), node_(node) {}
  [[nodiscard]] const lyd_node* node() const { return node_; }

 private:
  const lyd_node* node_;
};

/// Checks a node of a whole configuration, or of one that was edited, with all below against what
/// the model says beyond each single value: mandatory nodes and choices exist, nodes of two cases
/// of a choice do not, and nothing exists twice. Instances of one list or leaf-list must be
/// neighbours. Throws InvalidNode, whose text names the place:
/// "/config/profile/gpon/line-profile{gold}/tcont{1}: mandatory node 'bandwidth-profile' does not
/// exist".
void check_subtree(const lyd_node* node);

/// The same for what was edited in a configuration that was valid before: subtrees that came, and
/// each node above them or above what is gone. What was not edited is not looked at.
void check_edits(const EditRecord& root);

}  // namespace tarnd::store
