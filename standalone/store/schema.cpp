#include "standalone/store/schema.h"

#include <algorithm>
#include <array>
#include <optional>

#include "standalone/store/base_type.h"
#include "standalone/store/libyang_compat.h"

namespace tarnd::store {
namespace {

constexpr const char* kModule = "base";
// The module that declares the annotation for edit operations.
constexpr const char* kEditModule = "ietf-netconf";

std::string_view without_prefix(std::string_view name) {
  const auto colon = name.find(':');
  return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

NodeKind kind_of(const lysc_node* node) {
  switch (node->nodetype) {
    case LYS_CONTAINER:
      return (node->flags & LYS_PRESENCE) != 0 ? NodeKind::kPresence : NodeKind::kContainer;
    case LYS_LIST:
      return NodeKind::kList;
    case LYS_LEAFLIST:
      return NodeKind::kLeafList;
    default:
      return NodeKind::kLeaf;
  }
}

// The name of a leaf's type is in the parsed model only, not in the compiled one.
std::string_view type_name(const lysc_node* node) {
  const auto* parsed = static_cast<const lysp_node*>(node->priv);
  if (parsed->nodetype == LYS_LEAF) {
    return without_prefix(reinterpret_cast<const lysp_node_leaf*>(parsed)->type.name);
  }
  if (parsed->nodetype == LYS_LEAFLIST) {
    return without_prefix(reinterpret_cast<const lysp_node_leaflist*>(parsed)->type.name);
  }
  return {};
}

const lysc_type* type_of(const lysc_node* node) {
  if (node->nodetype == LYS_LEAF) return reinterpret_cast<const lysc_node_leaf*>(node)->type;
  if (node->nodetype == LYS_LEAFLIST) {
    return reinterpret_cast<const lysc_node_leaflist*>(node)->type;
  }
  return nullptr;
}

ValueKind value_kind_of(const lysc_node* node) {
  const lysc_type* type = type_of(node);
  if (type == nullptr) return ValueKind::kNone;
  const std::string_view name = type_name(node);
  if (name == "aes-cfb-128-encrypted-string") return ValueKind::kEncrypted;
  if (name == "ipv4-address-and-prefix-length") return ValueKind::kIpv4AndPlen;
  if (name == "ipv4-address") return ValueKind::kIpv4;
  return kind_of_base_type(type->basetype);
}

ValidationPoint validation_point(const lysp_ext_instance& extension) {
  ValidationPoint point;
  point.name = extension.argument != nullptr ? extension.argument : "";
  for (const auto& [name, argument] : substatements(extension)) {
    const std::string_view keyword = without_prefix(name);
    if (keyword == "opaque") {
      point.request = argument;
    } else if (keyword == "call-once") {
      point.call_once = argument == "true";
    } else if (keyword == "priority") {
      point.priority = std::stoi(argument);
    } else if (keyword == "dependency" && argument != ".") {
      throw InputError("the model uses tailf:dependency '" + argument + "': only '.' is known");
    }
  }
  return point;
}

std::vector<ValidationPoint> validation_points_of(const lysc_node* node) {
  std::vector<ValidationPoint> points;
  const lysp_ext_instance* extensions = static_cast<const lysp_node*>(node->priv)->exts;
  LY_ARRAY_COUNT_TYPE i = 0;
  LY_ARRAY_FOR(extensions, i) {
    if (without_prefix(extensions[i].name) == "validate") {
      points.push_back(validation_point(extensions[i]));
    }
  }
  return points;
}

bool counts_entries(const lysc_node* node) {
  constexpr std::uint32_t kUnbounded = UINT32_MAX;
  if (node->nodetype == LYS_LIST) {
    const auto* list = reinterpret_cast<const lysc_node_list*>(node);
    return list->uniques != nullptr || list->min != 0 || list->max < kUnbounded;
  }
  if (node->nodetype == LYS_LEAFLIST) {
    const auto* list = reinterpret_cast<const lysc_node_leaflist*>(node);
    return list->min != 0 || list->max < kUnbounded;
  }
  return false;
}

bool refers_elsewhere(const lysc_type* type) {
  if (type->basetype == LY_TYPE_UNION) {
    const auto* members = reinterpret_cast<const lysc_type_union*>(type)->types;
    LY_ARRAY_COUNT_TYPE i = 0;
    LY_ARRAY_FOR(members, i) {
      if (refers_elsewhere(members[i])) return true;
    }
  }
  return type->basetype == LY_TYPE_LEAFREF || type->basetype == LY_TYPE_INST;
}

bool refers_elsewhere(const lysc_node* node) {
  const lysc_type* type = type_of(node);
  return type != nullptr && refers_elsewhere(type);
}

// A transaction validates only what it edited. That is enough as long as no rule of the model looks
// beyond a node, its parent and its children.
void check_rules_are_local(const lysc_node* node) {
  if (lysc_node_musts(node) != nullptr || lysc_node_when(node) != nullptr || counts_entries(node) ||
      refers_elsewhere(node)) {
    throw InputError("the model has a rule at '" + std::string(node->name) +
                     "' that reaches beyond the node: must, when, unique, min-elements, "
                     "max-elements and leafref are not for this store");
  }
}

}  // namespace

const SchemaNode* SchemaNode::child(std::string_view child_name) const {
  for (const SchemaNode* node : children) {
    if (node->name == child_name) return node;
  }
  return nullptr;
}

std::string SchemaNode::path() const {
  return (parent != nullptr ? parent->path() : std::string()) + "/" + name;
}

bool SchemaNode::is_key() const {
  return lysc_is_key(lysc);
}

Schema::Schema(const std::filesystem::path& model_dir) : context_(nullptr, ly_ctx_destroy) {
  // libyang would print its messages; they belong in our own errors.
  ly_log_options(LY_LOSTORE);
  ly_ctx* new_context = nullptr;
  const auto options = static_cast<std::uint16_t>(LY_CTX_NO_YANGLIBRARY | LY_CTX_SET_PRIV_PARSED |
                                                  LY_CTX_DISABLE_SEARCHDIR_CWD);
  if (ly_ctx_new(model_dir.c_str(), options, &new_context) != LY_SUCCESS) {
    throw InputError("cannot read the model's folder " + model_dir.string());
  }
  context_.reset(new_context);
  for (const char* name : {kEditModule, kModule}) {
    module_ = ly_ctx_load_module(new_context, name, nullptr, nullptr);
    if (module_ == nullptr) {
      throw InputError("cannot load the model " + std::string(name) + ".yang from " +
                       model_dir.string() + ": " + take_libyang_error(new_context));
    }
  }
  add(module_->compiled->data, nullptr);
  if (nodes_.empty()) throw InputError("the model has no top-level container");
  root_ = &nodes_.front();

  // From now on a node of the compiled model points to its SchemaNode.
  ly_ctx_unset_options(new_context, LY_CTX_SET_PRIV_PARSED);
  for (SchemaNode& node : nodes_) const_cast<lysc_node*>(node.lysc)->priv = &node;
  for (SchemaNode& node : nodes_) node.rules = child_rules(node.lysc);
}

Schema::~Schema() = default;

std::string_view Schema::namespace_uri() const {
  return module_->ns;
}

std::string_view Schema::prefix() const {
  return module_->prefix;
}

// Adds the node and its later siblings. The nodes of a choice are added as children of the node
// around it.
void Schema::add(const lysc_node* node, SchemaNode* parent) {
  for (; node != nullptr; node = node->next) {
    check_rules_are_local(node);
    if ((node->nodetype & (LYS_CHOICE | LYS_CASE)) != 0) {
      add(lysc_node_child(node), parent);
      continue;
    }
    SchemaNode& added = nodes_.emplace_back();
    added.name = node->name;
    added.kind = kind_of(node);
    added.value = value_kind_of(node);
    added.lysc = node;
    added.parent = parent;
    added.position = nodes_.size() - 1;
    added.points = validation_points_of(node);
    if (parent != nullptr) {
      parent->children.push_back(&added);
      if (lysc_is_key(node)) ++parent->num_keys;
    }
    add(lysc_node_child(node), &added);
  }
}

}  // namespace tarnd::store
