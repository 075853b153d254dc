#include "standalone/confd/model.h"

#include <algorithm>
#include <deque>
#include <filesystem>
#include <stdexcept>

namespace tarnd::confd {
namespace {

constexpr const char* kKnownNumbers = "known-numbers.txt";

Model* loaded = nullptr;

NameNumbers read_numbers(const store::Schema& schema) {
  const char* const* folders = ly_ctx_get_searchdirs(schema.context());
  try {
    return NameNumbers(std::filesystem::path(folders[0]) / kKnownNumbers);
  } catch (const std::runtime_error& error) {
    throw InputError(error.what());
  }
}

ValueForm form_of(const store::SchemaNode& node) {
  using store::ValueKind;
  switch (node.value) {
    case ValueKind::kString:
      return type_of(node)->basetype == LY_TYPE_STRING ? ValueForm::kText : ValueForm::kByValue;
    case ValueKind::kEnumeration:
      return ValueForm::kEnumeration;
    case ValueKind::kBoolean:
      return ValueForm::kBoolean;
    case ValueKind::kUint8:
      return ValueForm::kUint8;
    case ValueKind::kUint16:
      return ValueForm::kUint16;
    case ValueKind::kUint32:
      return ValueForm::kUint32;
    case ValueKind::kInt32:
      return ValueForm::kInt32;
    default:
      return ValueForm::kByValue;
  }
}

}  // namespace

Model::Model(const store::Schema& schema) : schema_(schema), numbers_(read_numbers(schema)) {
  nodes_.reserve(schema.nodes().size());
  for (const store::SchemaNode& schema_node : schema.nodes()) {
    numbers_.add(schema_node.name);
    ModelNode& added = nodes_.emplace_back();
    added.schema = &schema_node;
    added.lysc = schema_node.lysc;
    added.kind = schema_node.kind;
    added.form = form_of(schema_node);
    added.name = schema_node.name;
    added.number = numbers_.number(schema_node.name);
    added.type.leaf = &schema_node;
    added.cs.tag = added.number;
    added.cs.ns = numbers_.namespace_number();
    added.cs.info.type = schema_node.value != store::ValueKind::kNone ? &added.type : nullptr;
    added.cs.opaque = &added;
  }
  for (ModelNode& parent : nodes_) {
    confd_cs_node** link = &parent.cs.children;
    for (const store::SchemaNode* child : parent.schema->children) {
      confd_cs_node& cs = nodes_[child->position].cs;
      cs.parent = &parent.cs;
      *link = &cs;
      link = &cs.next;
    }
  }
  // From the last node to the first, since a node's blank array needs those of its children.
  std::for_each(nodes_.rbegin(), nodes_.rend(), [&](ModelNode& node) { make_blank(node); });
  // From the first to the last, since a container's own place is a part of those of its children.
  for (const ModelNode& parent : nodes_) {
    if (parent.kind == store::NodeKind::kList) continue;
    for (const store::SchemaNode* child : parent.schema->children) {
      nodes_[child->position].offset += parent.offset + 1;
    }
  }
}

void Model::make_blank(ModelNode& node) {
  for (const store::SchemaNode* child_schema : node.schema->children) {
    ModelNode& child = nodes_[child_schema->position];
    child.offset = static_cast<int>(node.blank.size());
    confd_value_t& value = node.blank.emplace_back();
    if (child_schema->kind == store::NodeKind::kLeafList) {
      CONFD_SET_LIST(&value, nullptr, 0);
    } else if (child_schema->kind == store::NodeKind::kContainer) {
      CONFD_SET_XMLTAG(&value, child.number, namespace_number());
      node.blank.insert(node.blank.end(), child.blank.begin(), child.blank.end());
    } else {
      CONFD_SET_NOEXISTS(&value);
    }
  }
}

bool Model::describes(const store::Schema& schema) const {
  return &schema == &schema_ &&
         std::equal(nodes_.begin(), nodes_.end(), schema.nodes().begin(), schema.nodes().end(),
                    [](const ModelNode& known, const store::SchemaNode& node) {
                      return known.schema == &node && known.lysc == node.lysc &&
                             known.name == node.name;
                    });
}

const lysc_type* type_of(const store::SchemaNode& leaf) {
  if (leaf.kind == store::NodeKind::kLeafList) {
    return reinterpret_cast<const lysc_node_leaflist*>(leaf.lysc)->type;
  }
  return reinterpret_cast<const lysc_node_leaf*>(leaf.lysc)->type;
}

const Model& load_model(const store::Schema& schema) {
  // Applications may keep schema nodes as long as they like, so no model is ever freed. A later
  // schema may have the address of an earlier one, hence the comparison.
  static std::deque<Model> models;
  if (loaded != nullptr && loaded->describes(schema)) return *loaded;
  for (Model& model : models) {
    if (model.describes(schema)) return *(loaded = &model);
  }
  loaded = &models.emplace_back(schema);
  return *loaded;
}

Model* loaded_model() {
  return loaded;
}

}  // namespace tarnd::confd
