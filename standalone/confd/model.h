#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "confd_lib.h"
#include "model/name_numbers.h"
#include "standalone/store/schema.h"

/// A leaf's type is known by the leaf.
struct confd_type {
  const tarnd::store::SchemaNode* leaf = nullptr;
};

namespace tarnd::confd {

/// How a leaf's value follows from what libyang stores, as far as the leaf's type decides it.
enum class ValueForm : std::uint8_t {
  kByValue,  ///< the value itself has to be looked at
  kText,
  kEnumeration,
  kBoolean,
  kUint8,
  kUint16,
  kUint32,
  kInt32,
};

/// What the client library knows about one node of the model.
struct ModelNode {
  const store::SchemaNode* schema = nullptr;
  const lysc_node* lysc = nullptr;
  store::NodeKind kind = store::NodeKind::kContainer;
  ValueForm form = ValueForm::kByValue;
  std::string name;
  std::uint32_t number = 0;
  confd_type type;
  confd_cs_node cs = {};
  /// The value array of an entry or container in which nothing is set.
  std::vector<confd_value_t> blank;
  /// The index at which the node's own values begin in the array of the entry around it, if no
  /// presence container before them exists.
  int offset = 0;
};

/// The model with the numbers of its names.
class Model {
 public:
  /// Reads the known numbers beside the model's own files. Throws InputError.
  explicit Model(const store::Schema& schema);

  [[nodiscard]] const ModelNode& node(const store::SchemaNode& schema) const {
    return nodes_[schema.position];
  }
  [[nodiscard]] const store::Schema& schema() const { return schema_; }
  [[nodiscard]] std::uint32_t namespace_number() const { return numbers_.namespace_number(); }
  /// The name with that number, or null.
  [[nodiscard]] const std::string* name_of(std::uint32_t number) const {
    return numbers_.name_of(number);
  }
  /// The node as the client library shows it.
  [[nodiscard]] confd_cs_node* cs_node(const store::SchemaNode& schema) {
    return &nodes_[schema.position].cs;
  }

  /// Whether this is still the model of that schema.
  [[nodiscard]] bool describes(const store::Schema& schema) const;

 private:
  void make_blank(ModelNode& node);

  const store::Schema& schema_;
  NameNumbers numbers_;
  std::vector<ModelNode> nodes_;
};

/// The type of a leaf or leaf-list.
const lysc_type* type_of(const store::SchemaNode& leaf);

/// The model of the schema, made at the first call and kept for the life of the process. From then
/// on it is the model of the calls that have no session, such as confd_hash2str.
const Model& load_model(const store::Schema& schema);

/// The model loaded last, or null before the first.
Model* loaded_model();

}  // namespace tarnd::confd
