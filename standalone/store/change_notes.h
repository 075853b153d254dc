#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "standalone/store/schema.h"

namespace tarnd::store {

/// The operations of a NETCONF edit. kNone: the node itself is not edited, only nodes below it; it
/// must exist.
enum class Operation : std::uint8_t { kMerge, kReplace, kCreate, kDelete, kRemove, kNone };

/// The lines in which nodes of a change, or entries of a configuration, begin or end; several if a
/// change has the node several times. Searched only for a message.
using LinesOfNodes = std::vector<std::pair<const lyd_node*, std::size_t>>;

/// The line of the node, or of its nearest ancestor that has one.
std::optional<std::size_t> place_of(const LinesOfNodes& lines, const lyd_node* node);

/// A leaf that is to have no value of its own: one to be deleted, or one that is tagged as a
/// default (RFC 6243, section 6). It needs no value, so the edit's tree has no node for it.
struct LeafRemoval {
  const SchemaNode* leaf = nullptr;
  std::optional<Operation> operation;  ///< none: that of the node around the leaf
  std::size_t line = 0;
};

/// What an edit contains besides the nodes of its tree.
struct ChangeNotes {
  Operation default_operation = Operation::kMerge;
  /// Nodes with an operation of their own.
  std::unordered_map<const lyd_node*, Operation> operations;
  /// By their parent in the edit's tree.
  std::unordered_map<const lyd_node*, std::vector<LeafRemoval>> removals;
  /// Nodes with a note of their own or on a node below.
  std::unordered_set<const lyd_node*> noted;
  LinesOfNodes lines;
};

}  // namespace tarnd::store
