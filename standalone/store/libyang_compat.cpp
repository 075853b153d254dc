#include "standalone/store/libyang_compat.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <new>
#include <string_view>
#include <utility>

namespace tarnd::store {
namespace {

std::string place_of(const ly_err_item& error) {
#if LY_VERSION_MAJOR >= 3
  if (error.data_path != nullptr) return error.data_path;
  if (error.schema_path != nullptr) return error.schema_path;
  return error.line != 0 ? "Line number " + std::to_string(error.line) + "." : "";
#else
  return error.path != nullptr ? error.path : "";
#endif
}

#if LY_VERSION_MAJOR < 3

bool has_few_children(const lyd_node_inner& parent) {
  constexpr int kFew = 64;
  int count = 0;
  for (const lyd_node* child = parent.child; child != nullptr; child = child->next) {
    if (++count > kFew) return false;
  }
  return true;
}

// libyang 2.1 leaves a mark in the table of the parent's children at the place of a node that goes,
// and uses marked and free places for nodes that come. If a small table has no free place left, it
// can miss the marked ones, and then follows a null pointer. So a small table goes with the first
// node that goes; libyang makes a new one, without marks, for the next node that comes.
void drop_small_table(lyd_node_inner& parent) {
  if (parent.children_ht == nullptr || !has_few_children(parent)) return;
  // Only libyang can free a table: with the node that has it.
  auto* carrier = static_cast<lyd_node_inner*>(std::calloc(1, sizeof(lyd_node_inner)));
  if (carrier == nullptr) throw std::bad_alloc();
  carrier->node.schema = parent.node.schema;
  carrier->node.prev = &carrier->node;
  carrier->children_ht = std::exchange(parent.children_ht, nullptr);
  lyd_free_tree(&carrier->node);
}

#endif

}  // namespace

std::string take_libyang_error(ly_ctx* context) {
  const ly_err_item* item = ly_err_first(context);
  // The first error is the cause, the later ones are its consequences.
  while (item != nullptr && item->level != LY_LLERR) item = item->next;
  std::string text = item != nullptr && item->msg != nullptr ? item->msg : "unknown error";
  const std::string place = item != nullptr ? place_of(*item) : "";
  if (!place.empty()) text += " (" + place + ")";
  ly_err_clean(context, nullptr);
  std::replace(text.begin(), text.end(), '\n', ' ');
  return text;
}

LY_ERR find_xpath(const lyd_node* context, const lyd_node* tree, const char* expression,
                  ly_set** set) {
#if LY_VERSION_MAJOR >= 3
  return lyd_find_xpath3(context, tree, expression, LY_VALUE_JSON, nullptr, nullptr, set);
#else
  return lyd_find_xpath3(context, tree, expression, nullptr, set);
#endif
}

lyd_node* new_term(lyd_node* parent, const lysc_node* schema, const char* value, bool canonical) {
  lyd_node* node = nullptr;
#if LY_VERSION_MAJOR >= 3
  lyd_new_term(parent, schema->module, schema->name, value, canonical ? LYD_NEW_VAL_CANON : 0,
               &node);
#else
  const auto make = canonical ? lyd_new_term_canon : lyd_new_term;
  make(parent, schema->module, schema->name, value, 0, &node);
#endif
  return node;
}

lyd_node* new_entry(lyd_node* parent, const lysc_node* list, std::span<const std::string> keys,
                    bool canonical) {
  // libyang takes the keys as arguments, and reads as many as the list has.
  constexpr std::size_t kMostKeys = 9;
  std::array<const char*, kMostKeys> texts{};
  for (std::size_t i = 0; i < keys.size(); ++i) texts.at(i) = keys[i].c_str();
  const auto& [k0, k1, k2, k3, k4, k5, k6, k7, k8] = texts;
  lyd_node* node = nullptr;
#if LY_VERSION_MAJOR >= 3
  lyd_new_list(parent, list->module, list->name, canonical ? LYD_NEW_VAL_CANON : 0, &node, k0, k1,
               k2, k3, k4, k5, k6, k7, k8);
#else
  const auto make = canonical ? lyd_new_list_canon : lyd_new_list;
  make(parent, list->module, list->name, 0, &node, k0, k1, k2, k3, k4, k5, k6, k7, k8);
#endif
  return node;
}

void unlink_node(lyd_node* node) {
#if LY_VERSION_MAJOR < 3
  lyd_node_inner* parent = node->parent;
  lyd_unlink_tree(node);
  if (parent != nullptr) drop_small_table(*parent);
#else
  lyd_unlink_tree(node);
#endif
}

void free_node(lyd_node* node) {
  unlink_node(node);
  lyd_free_tree(node);
}

std::vector<std::pair<std::string_view, std::string>> substatements(
    const lysp_ext_instance& extension) {
  const auto text = [](const char* argument) { return argument != nullptr ? argument : ""; };
  std::vector<std::pair<std::string_view, std::string>> result;
  for (const lysp_stmt* stmt = extension.child; stmt != nullptr; stmt = stmt->next) {
    result.emplace_back(stmt->stmt, text(stmt->arg));
  }
#if LY_VERSION_MAJOR >= 3
  // Extensions inside are instances of their own there.
  LY_ARRAY_COUNT_TYPE i = 0;
  LY_ARRAY_FOR(extension.exts, i) {
    result.emplace_back(extension.exts[i].name, text(extension.exts[i].argument));
  }
#endif
  return result;
}

bool is_internal(const lyd_meta* meta) {
  return std::string_view(meta->name) == "lyds_tree";
}

}  // namespace tarnd::store
