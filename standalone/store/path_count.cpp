#include "standalone/store/path_count.h"

#include <libyang/plugins_types.h>

#include <algorithm>
#include <iterator>
#include <vector>

#include "standalone/store/datastore.h"
#include "standalone/store/path_text.h"

namespace tarnd::store {
namespace {

struct Step {
  const SchemaNode* node = nullptr;
  bool late = false;  // the model has it in the second half of its siblings
};

struct CountedPath {
  std::vector<Step> steps;           // below the root
  const SchemaNode* leaf = nullptr;  // that the condition names, or null without a condition
  std::string_view wanted;
};

// libyang compares a leaf of any other type with the canonical form of the text. It looks up an
// entry by its key faster than a walk would.
bool is_plain_text(const SchemaNode& node) {
  if (node.kind != NodeKind::kLeaf || node.value != ValueKind::kString || node.is_key()) {
    return false;
  }
  const lysc_type* type = reinterpret_cast<const lysc_node_leaf*>(node.lysc)->type;
  return type->basetype == LY_TYPE_STRING && type->plugin->store == &lyplg_type_store_string;
}

// "[leaf='text']" at the end of the path.
bool read_condition(PathText& reader, CountedPath& path) {
  const SchemaNode& last = *path.steps.back().node;
  path.leaf = last.child(reader.until([](char c) { return c == '='; }));
  if (path.leaf == nullptr || !is_plain_text(*path.leaf) || !reader.take('=')) return false;
  const char quote = reader.peek();
  if ((quote != '\'' && quote != '"') || !reader.take(quote)) return false;
  path.wanted = reader.until([quote](char c) { return c == quote; });
  return reader.take(quote) && reader.take(']') && reader.at_end();
}

bool is_late(const SchemaNode& node) {
  const auto& siblings = node.parent->children;
  return std::find(siblings.begin(), siblings.end(), &node) - siblings.begin() >=
         std::ssize(siblings) / 2;
}

std::optional<CountedPath> read_path(const SchemaNode& root, std::string_view text) {
  const auto ends_name = [](char c) { return c == '/' || c == '['; };
  PathText reader(text);
  CountedPath path;
  if (!reader.take('/') || reader.until(ends_name) != root.name) return std::nullopt;
  const SchemaNode* node = &root;
  while (reader.take('/')) {
    node = node->child(reader.until(ends_name));
    if (node == nullptr) return std::nullopt;
    path.steps.push_back({node, is_late(*node)});
  }
  if (path.steps.empty()) return std::nullopt;
  if (reader.at_end() || (reader.take('[') && read_condition(reader, path))) return path;
  return std::nullopt;
}

// The last instance of the model's node below the parent if it is among the last siblings, or else
// null. What the model has last is found from there with fewer nodes to look at, each of which may
// have to be fetched from memory.
const lyd_node* instance_near_end(const lyd_node* parent, const SchemaNode& node) {
  constexpr int kSiblingsToTry = 4;
  const lyd_node* const first = lyd_child(parent);
  if (first == nullptr) return nullptr;
  const lyd_node* sibling = first->prev;
  for (int i = 0; i < kSiblingsToTry; ++i, sibling = sibling->prev) {
    if (sibling->schema == node.lysc) return sibling;
    if (sibling == first) return nullptr;
  }
  return nullptr;
}

class Walk {
 public:
  explicit Walk(const CountedPath& path) : path_(path) {}

  std::size_t count(const lyd_node* around, std::size_t depth = 0) const {
    if (depth == path_.steps.size()) return holds(around) ? 1 : 0;
    const SchemaNode& step = *path_.steps[depth].node;
    const lyd_node* const near_end =
        path_.steps[depth].late ? instance_near_end(around, step) : nullptr;
    if (step.kind != NodeKind::kList && step.kind != NodeKind::kLeafList) {
      const lyd_node* child = near_end != nullptr ? near_end : child_instance(around, step);
      return child != nullptr ? count(child, depth + 1) : 0;
    }
    // Entries of one list are neighbours.
    std::size_t sum = 0;
    if (const lyd_node* entry = near_end) {
      const lyd_node* const first = lyd_child(around);
      for (; entry->schema == step.lysc; entry = entry->prev) {
        sum += count(entry, depth + 1);
        if (entry == first) break;
      }
      return sum;
    }
    const lyd_node* entry = lyd_child(around);
    while (entry != nullptr && entry->schema != step.lysc) entry = entry->next;
    for (; entry != nullptr && entry->schema == step.lysc; entry = entry->next) {
      sum += count(entry, depth + 1);
    }
    return sum;
  }

 private:
  bool holds(const lyd_node* node) const {
    if (path_.leaf == nullptr) return true;
    const lyd_node* leaf = child_instance(node, *path_.leaf);
    return leaf != nullptr && value_text(leaf) == path_.wanted;
  }

  const CountedPath& path_;
};

}  // namespace

std::optional<std::size_t> count_by_walk(const lyd_node* root, std::string_view path) {
  const auto read = read_path(schema_of(root), path);
  if (!read.has_value()) return std::nullopt;
  return Walk(*read).count(root);
}

}  // namespace tarnd::store
