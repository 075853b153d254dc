#include "netconf/subtree_filter.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "netconf/xml_text.h"

namespace tarnd::netconf {
namespace {

using Filters = std::vector<const Element*>;

constexpr std::size_t kManyElements = 64;

std::size_t elements_in(const Element& element) {
  std::size_t number = element.children.size();
  for (const Element& child : element.children) number += elements_in(child);
  return number;
}

bool is_content_match(const Element& filter) {
  return filter.children.empty() && !trimmed(filter.text).empty();
}

bool is_selection(const Element& filter) {
  return filter.children.empty() && trimmed(filter.text).empty();
}

// An element without a namespace names nodes of any. No node of a configuration has attributes.
bool names(const Element& filter, const lyd_node* node) {
  return filter.name == node->schema->name && filter.attributes.empty() &&
         (filter.name_space.empty() || filter.name_space == node->schema->module->ns);
}

bool selects_all_below(const Element& filter) {
  return std::all_of(filter.children.begin(), filter.children.end(), is_content_match);
}

lyd_node* copy(const lyd_node* node, std::uint32_t options) {
  lyd_node* made = nullptr;
  lyd_dup_single(node, nullptr, options | LYD_DUP_NO_META | LYD_DUP_WITH_FLAGS, &made);
  return made;
}

class Selection {
 public:
  explicit Selection(Defaults defaults) : defaults_(defaults) {}

  // A copy of what the filters, which all name the node, select of it; null for nothing.
  [[nodiscard]] lyd_node* select(const Filters& filters, const lyd_node* node) const {
    Filters matching;
    for (const Element* filter : filters) {
      const bool of_leaf = (node->schema->nodetype & LYD_NODE_TERM) != 0;
      if (is_selection(*filter)) return copy(node, LYD_DUP_RECURSIVE);
      if (of_leaf && is_content_match(*filter) && has_value(node, *filter)) {
        return copy(node, LYD_DUP_RECURSIVE);
      }
      if (of_leaf || is_content_match(*filter) || !content_matches(*filter, node)) continue;
      if (selects_all_below(*filter)) return copy(node, LYD_DUP_RECURSIVE);
      matching.push_back(filter);
    }
    if (matching.empty()) return nullptr;
    store::TreeOwner made(copy(node, 0), &lyd_free_tree);
    return add_children(matching, node, made.get()) ? made.release() : nullptr;
  }

 private:
  [[nodiscard]] bool has_value(const lyd_node* leaf, const Element& filter) const {
    return is_reported(leaf, defaults_) && lyd_get_value(leaf) != nullptr &&
           trimmed(filter.text) == lyd_get_value(leaf);
  }

  [[nodiscard]] bool has_child_with(const lyd_node* node, const Element& match) const {
    for (const lyd_node* child = lyd_child(node); child != nullptr; child = child->next) {
      if (names(match, child) && has_value(child, match)) return true;
    }
    return false;
  }

  // All values that the filter names for children of the node are there.
  [[nodiscard]] bool content_matches(const Element& filter, const lyd_node* node) const {
    return std::all_of(filter.children.begin(), filter.children.end(), [&](const Element& child) {
      return !is_content_match(child) || has_child_with(node, child);
    });
  }

  // Adds what the filters select below the node to its copy. Returns whether that was anything.
  bool add_children(const Filters& filters, const lyd_node* node, lyd_node* to) const {
    bool any = false;
    Filters of_child;
    for (const lyd_node* child = lyd_child(node); child != nullptr; child = child->next) {
      of_child.clear();
      for (const Element* filter : filters) {
        for (const Element& below : filter->children) {
          if (names(below, child)) of_child.push_back(&below);
        }
      }
      if (of_child.empty()) continue;
      lyd_node* selected = lysc_is_key(child->schema) ? nullptr : select(of_child, child);
      // The keys are in the copy already.
      any = any || selected != nullptr || lysc_is_key(child->schema);
      if (selected != nullptr) lyd_insert_child(to, selected);
    }
    return any;
  }

  const Defaults defaults_;
};

}  // namespace

store::TreeOwner select_subtrees(const Element& filter, const lyd_node* root, Defaults defaults) {
  Filters of_root;
  for (const Element& child : filter.children) {
    if (names(child, root)) of_root.push_back(&child);
  }
  return {of_root.empty() ? nullptr : Selection(defaults).select(of_root, root), &lyd_free_tree};
}

bool is_many_subtrees(const Element& filter) {
  return elements_in(filter) >= kManyElements;
}

}  // namespace tarnd::netconf
