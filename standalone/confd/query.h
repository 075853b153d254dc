#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "confd_maapi.h"
#include "standalone/confd/model.h"
#include "standalone/confd/values.h"
#include "standalone/store/datastore.h"

namespace tarnd::confd {

/// The way from a query's result to a selected node: names, "." and "..", separated by slashes.
class Selector {
 public:
  /// The way for results of this kind; nothing where the model has no such node, or a list stands
  /// on it.
  static std::optional<Selector> make(const store::Schema& schema, const store::SchemaNode& result,
                                      std::string_view path);

  /// The selected node of a result, or null. Of a leaf-list it is the first value.
  [[nodiscard]] const lyd_node* node(const store::Datastore& datastore,
                                     const lyd_node* result) const;
  /// Its value, C_NOEXISTS where it does not exist.
  [[nodiscard]] OwnedValue value(const Model& model, const store::Datastore& datastore,
                                 const lyd_node* result) const;
  [[nodiscard]] const store::SchemaNode& target() const { return *target_; }

 private:
  std::vector<const store::SchemaNode*> steps_;  ///< null is a step to the parent
  const store::SchemaNode* target_ = nullptr;
};

/// The selectors of one kind of result.
struct Selection {
  const store::SchemaNode* result = nullptr;
  std::vector<Selector> selectors;
};

/// A started query: its results stand, their values are read chunk by chunk.
struct Query {
  confd_query_result_type type = CONFD_QUERY_STRING;
  std::size_t num_elements = 0;
  std::size_t chunk_size = 0;
  std::size_t next = 0;  ///< index of the next chunk's first result
  std::vector<const lyd_node*> results;
  std::vector<Selection> selections;
};

}  // namespace tarnd::confd
