#pragma once

#include <libyang/libyang.h>

#include <cstdint>
#include <deque>
#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "standalone/input_error.h"
#include "standalone/store/child_rules.h"

namespace tarnd::store {

enum class NodeKind : std::uint8_t { kContainer, kPresence, kList, kLeaf, kLeafList };

/// The type of a leaf, as far as its readers need it. Each value of a kUnion has a member's type.
enum class ValueKind : std::uint8_t {
  kNone,
  kString,
  kEncrypted,
  kEmpty,
  kBoolean,
  kEnumeration,
  kInt8,
  kInt16,
  kInt32,
  kInt64,
  kUint8,
  kUint16,
  kUint32,
  kUint64,
  kIpv4,
  kIpv4AndPlen,
  kUnion,
};

/// One `tailf:validate` statement of a node.
struct ValidationPoint {
  std::string name;
  std::string request;
  bool call_once = false;
  int priority = 0;
};

/// A data node of the model. Choices and cases do not appear: their nodes are children of the node
/// around the choice.
struct SchemaNode {
  std::string name;
  NodeKind kind = NodeKind::kContainer;
  ValueKind value = ValueKind::kNone;
  const lysc_node* lysc = nullptr;
  const SchemaNode* parent = nullptr;
  std::vector<const SchemaNode*> children;  ///< in the order of the model, a list's keys first
  std::size_t num_keys = 0;                 ///< of a list: its first children are the keys
  std::size_t position = 0;                 ///< position among all nodes, in the order of the model
  std::vector<ValidationPoint> points;
  ChildRules rules;
  /// libyang's hash of the instances, from the first one on; 0 for lists and leaf-lists, whose
  /// instances have a hash each.
  mutable std::uint32_t hash = 0;

  /// The child of that name, or null.
  [[nodiscard]] const SchemaNode* child(std::string_view child_name) const;
  /// "/config/interface/gpon", without keys.
  [[nodiscard]] std::string path() const;
  [[nodiscard]] bool is_key() const;
};

/// The loaded model. Must outlive every tree that was read with it.
class Schema {
 public:
  /// Reads base.yang and what it imports from the folder. Throws InputError.
  explicit Schema(const std::filesystem::path& model_dir);
  Schema(const Schema&) = delete;
  Schema& operator=(const Schema&) = delete;
  ~Schema();

  [[nodiscard]] ly_ctx* context() const { return context_.get(); }
  /// The top-level container `config`.
  [[nodiscard]] const SchemaNode& root() const { return *root_; }
  /// All data nodes in the order of the model.
  [[nodiscard]] const std::deque<SchemaNode>& nodes() const { return nodes_; }
  /// The namespace of the model, "urn:tarnd:base".
  [[nodiscard]] std::string_view namespace_uri() const;
  /// The model's prefix, "base".
  [[nodiscard]] std::string_view prefix() const;

 private:
  void add(const lysc_node* node, SchemaNode* parent);

  std::unique_ptr<ly_ctx, void (*)(ly_ctx*)> context_;
  const lys_module* module_ = nullptr;
  std::deque<SchemaNode> nodes_;
  const SchemaNode* root_ = nullptr;
};

/// The model's node of a data node, in a tree that was read with a Schema.
inline const SchemaNode& schema_of(const lyd_node* node) {
  return *static_cast<const SchemaNode*>(node->schema->priv);
}

}  // namespace tarnd::store
