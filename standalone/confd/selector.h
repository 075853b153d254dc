#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "standalone/confd/model.h"
#include "standalone/confd/values.h"
#include "standalone/store/datastore.h"

namespace tarnd::confd {

/// The way from a result of a query to a selected node, such as "../id" or "auth-method/password".
class Selector {
 public:
  /// The way for results of this kind; nothing if the model has no such node, or if the way leads
  /// down through a list.
  static std::optional<Selector> make(const store::Schema& schema, const store::SchemaNode& result,
                                      std::string_view path);

  /// The node that is selected for a result, or null; of a leaf-list the first value.
  [[nodiscard]] const lyd_node* node(const store::Datastore& datastore,
                                     const lyd_node* result) const;
  /// Its value, or C_NOEXISTS if the node does not exist.
  [[nodiscard]] OwnedValue value(const Model& model, const store::Datastore& datastore,
                                 const lyd_node* result) const;
  [[nodiscard]] const store::SchemaNode& target() const { return *target_; }

 private:
  std::vector<const store::SchemaNode*> steps_;  ///< null is a step to the parent
  const store::SchemaNode* target_ = nullptr;
};

/// The selectors for the results of one kind.
struct Selection {
  const store::SchemaNode* result = nullptr;
  std::vector<Selector> selectors;
};

}  // namespace tarnd::confd
