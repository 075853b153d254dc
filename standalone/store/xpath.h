#pragma once

#include <optional>
#include <string>
#include <vector>

#include "standalone/store/datastore.h"

namespace tarnd::store {

/// XPath expressions over a datastore's tree, through libyang. Names without a prefix are those of
/// the model. The context is a node of the tree, or null for the document root.
class XPath {
 public:
  XPath(const Datastore& datastore, const lyd_node* context);
  /// The same over a tree that is no datastore's, from its document root.
  explicit XPath(const lyd_node* tree);

  /// The nodes that the expression names, in the order of the tree. Nothing if it is malformed or
  /// its value is no node set; error() has the reason.
  std::optional<std::vector<const lyd_node*>> nodes(const std::string& expression);

  /// The expression's value as XPath's string() writes it: of a node set (its first node), of a
  /// truth value, or of count() of a node set. Nothing for any other expression.
  std::optional<std::string> text(const std::string& expression);

  [[nodiscard]] const std::string& error() const { return error_; }

 private:
  enum class Outcome { kNodes, kOtherType, kMalformed };

  Outcome find(const std::string& expression, std::vector<const lyd_node*>& nodes);
  bool names_nothing(const std::string& expression);
  std::optional<bool> holds(const std::string& condition);
  std::optional<std::string> count(const std::string& path, std::size_t found);
  std::optional<std::string> truth_value(const std::string& expression);

  const lyd_node* tree_;
  const lyd_node* context_;
  std::string error_;
};

}  // namespace tarnd::store
