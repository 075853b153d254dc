#include "tools/gponval/path_completion.h"

#include <cstddef>
#include <optional>

namespace gponval {
namespace {

namespace store = tarnd::store;
using store::NodeKind;
using store::SchemaNode;

struct Scan {
  std::size_t last_step = 0;  ///< where the '/' of the last step is
  bool in_keys = false;
};

Scan scan(std::string_view path) {
  Scan scan;
  bool quoted = false;
  for (std::size_t at = 0; at < path.size(); ++at) {
    const char c = path[at];
    if (quoted) {
      if (c == '\\') ++at;
      quoted = c != '"';
    } else if (scan.in_keys) {
      quoted = c == '"';
      scan.in_keys = c != '}';
    } else if (c == '/') {
      scan.last_step = at;
    } else {
      scan.in_keys = c == '{';
    }
  }
  return scan;
}

// What a step can end with.
std::vector<std::string> endings_of(const SchemaNode& node, bool with_values) {
  switch (node.kind) {
    case NodeKind::kList:
    case NodeKind::kLeafList:
      return {"{"};
    case NodeKind::kLeaf:
      return {with_values && node.value != store::ValueKind::kEmpty ? "=" : ""};
    case NodeKind::kPresence:
      return {"", "/"};
    default:
      return {"/"};
  }
}

void add(std::vector<std::string>& texts, std::string_view typed, std::string text) {
  if (text.starts_with(typed)) texts.push_back(std::move(text));
}

}  // namespace

bool ends_in_keys(std::string_view path) {
  return scan(path).in_keys;
}

std::vector<std::string> completed_names(const store::Schema& schema, std::string_view path,
                                         bool with_values) {
  const std::string around(path.substr(0, scan(path).last_step));
  std::vector<std::string> texts;
  if (path.ends_with('}')) return {std::string(path) + "/"};
  if (around.empty()) {
    add(texts, path, "/" + schema.root().name + "/");
    return texts;
  }
  const std::optional<store::Path> parent = store::Path::parse(schema, around, nullptr);
  if (!parent.has_value()) return texts;
  for (const SchemaNode* child : parent->last().node->children) {
    if (child->is_key()) continue;
    for (const std::string& ending : endings_of(*child, with_values)) {
      std::string text = around;
      text += "/" + child->name + ending;
      add(texts, path, std::move(text));
    }
  }
  return texts;
}

std::vector<std::string> completed_entries(const store::Datastore& datastore,
                                           std::string_view path) {
  const std::size_t step = scan(path).last_step;
  const std::string around(path.substr(0, step));
  const std::string list(path.substr(0, path.find('{', step)));
  std::vector<std::string> texts;
  const auto of_list = store::Path::parse(datastore.schema(), list, nullptr);
  const auto of_parent = store::Path::parse(datastore.schema(), around, nullptr);
  if (!of_list.has_value() || !of_parent.has_value()) return texts;
  const lyd_node* parent = datastore.find(*of_parent);
  if (parent == nullptr) return texts;
  const SchemaNode& node = *of_list->last().node;
  const auto add_each = [&](const auto& instances) {
    for (const lyd_node* instance : instances) {
      add(texts, path, around + store::step_of(instance));
    }
  };
  if (node.kind == NodeKind::kList) add_each(datastore.entries(parent, node));
  if (node.kind == NodeKind::kLeafList) add_each(datastore.leaf_list(parent, node));
  return texts;
}

}  // namespace gponval
