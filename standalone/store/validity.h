#pragma once

#include <libyang/libyang.h>

#include <string>

#include "standalone/input_error.h"

namespace tarnd::store {

struct EditRecord;

/// A violation of the model in a tree, and the node that has it.
class InvalidNode : public InputError {
 public:
  InvalidNode(const lyd_node* node, const std::string& text, InputFault fault,
              const InputSubject& subject)
      : InputError(text, 0, fault, subject), node_(node) {}
  [[nodiscard]] const lyd_node* node() const { return node_; }

 private:
  const lyd_node* node_;
};

/// Checks a node and everything below it against the model, except for the single values: mandatory
/// nodes and choices exist, no choice has nodes of two cases, and nothing exists twice. In the
/// tree, instances of one list or leaf-list must be neighbours. Throws InvalidNode, whose text
/// names the place: "/config/profile/gpon/line-profile{gold}/tcont{1}: mandatory node
/// 'bandwidth-profile' does not exist".
void check_subtree(const lyd_node* node);

/// The same for the edits of a configuration that was valid before: checks new subtrees, and each
/// node above them or above a removed node, but nothing else.
void check_edits(const EditRecord& root);

/// An empty container in a case that is not in use: its mandatory nodes need not exist.
bool is_out_of_use(const lyd_node* node);

}  // namespace tarnd::store
