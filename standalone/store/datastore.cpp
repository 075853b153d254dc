#include "standalone/store/datastore.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "standalone/store/base_type.h"
#include "standalone/store/libyang_compat.h"
#include "standalone/store/tree_keeper.h"

namespace tarnd::store {
namespace {

template <typename Integer>
int order(Integer left, Integer right) {
  return left < right ? -1 : static_cast<int>(right < left);
}

int compare_values(const lyd_node* left, const lyd_node* right) {
  const lyd_value& l = reinterpret_cast<const lyd_node_term*>(left)->value;
  const lyd_value& r = reinterpret_cast<const lyd_node_term*>(right)->value;
  switch (l.realtype->basetype) {
    case LY_TYPE_INT8:
      return order(l.int8, r.int8);
    case LY_TYPE_INT16:
      return order(l.int16, r.int16);
    case LY_TYPE_INT32:
      return order(l.int32, r.int32);
    case LY_TYPE_INT64:
      return order(l.int64, r.int64);
    case LY_TYPE_UINT8:
      return order(l.uint8, r.uint8);
    case LY_TYPE_UINT16:
      return order(l.uint16, r.uint16);
    case LY_TYPE_UINT32:
      return order(l.uint32, r.uint32);
    case LY_TYPE_UINT64:
      return order(l.uint64, r.uint64);
    case LY_TYPE_ENUM:
      return order(l.enum_item->value, r.enum_item->value);
    default:
      return value_text(left).compare(value_text(right));
  }
}

// Puts all instances of one list or leaf-list into the given order.
void put_in_order(const lyd_node* parent, std::span<lyd_node* const> ordered) {
  if (ordered.empty()) return;
  // What is in place stays; the rest is removed and appended again, one after the other.
  std::size_t right = 0;
  const lyd_node* stands = ordered.front();
  const bool first_stands = stands->prev->next == nullptr || stands->prev->schema != stands->schema;
  while (first_stands && right < ordered.size() && ordered[right] == stands) {
    ++right;
    stands = stands->next;
  }
  for (lyd_node* node : ordered.subspan(right)) {
    unlink_node(node);
    lyd_insert_child(const_cast<lyd_node*>(parent), node);
  }
}

}  // namespace

bool follows_in_order(const lyd_node* node) {
  const lyd_node* before = node->prev;
  if (before->next == nullptr || before->schema != node->schema) return true;
  if (node->schema->nodetype == LYS_LIST) return key_less(before, node);
  return node->schema->nodetype != LYS_LEAFLIST || value_less(before, node);
}

bool value_less(const lyd_node* left, const lyd_node* right) {
  return compare_values(left, right) < 0;
}

bool key_less(const lyd_node* left, const lyd_node* right) {
  const std::size_t num_keys = schema_of(left).num_keys;
  const lyd_node* l = lyd_child(left);
  const lyd_node* r = lyd_child(right);
  for (std::size_t i = 0; i < num_keys; ++i, l = l->next, r = r->next) {
    const int result = compare_values(l, r);
    if (result != 0) return result < 0;
  }
  return false;
}

lyd_node* child_instance(const lyd_node* parent, const SchemaNode& node) {
  if (node.is_key()) {
    // An entry's keys are its first children, and they are few.
    lyd_node* key = lyd_child(parent);
    while (key != nullptr && key->schema != node.lysc) key = key->next;
    return key;
  }
  // The others follow in the order of the model, most of them before the entries of any list. What
  // is not among the first ones is found by its hash.
  constexpr int kSiblingsToTry = 16;
  lyd_node* sibling = lyd_child(parent);
  for (int i = 0; i < kSiblingsToTry; ++i, sibling = sibling->next) {
    if (sibling == nullptr) return nullptr;
    if (sibling->schema == node.lysc) return sibling;
  }
  lyd_node* found = nullptr;
  lyd_find_sibling_val(sibling, node.lysc, nullptr, 0, &found);
  return found;
}

std::string_view value_text(const lyd_node* leaf) {
  return lyd_get_value(leaf);
}

ValueKind value_kind(const lyd_node* leaf) {
  const ValueKind declared = schema_of(leaf).value;
  if (declared != ValueKind::kUnion) return declared;
  const lyd_value& value = reinterpret_cast<const lyd_node_term*>(leaf)->value;
  return kind_of_base_type(value.subvalue->value.realtype->basetype);
}

void TreeKeeper::insert(lyd_node* parent, lyd_node* node) {
  ++version;
  lyd_insert_child(parent, node);
  const SchemaNode& schema = schema_of(node);
  ListIndex* index = schema.kind == NodeKind::kList ? indexes.made(parent, schema) : nullptr;
  const bool in_order = index != nullptr ? index->insert(node) : follows_in_order(node);
  if (!in_order) mark_unordered(parent, schema);
}

void TreeKeeper::unlink(lyd_node* node) {
  ++version;
  if (node->schema->nodetype == LYS_LIST) {
    ListIndex* index = indexes.made(&node->parent->node, schema_of(node));
    if (index != nullptr) index->erase(node);
  }
  unlink_node(node);
}

void TreeKeeper::free(lyd_node* node) {
  ++version;
  indexes.forget_below(node);
  if (!unordered_lists.empty()) {
    const lyd_node* below = nullptr;
    LYD_TREE_DFS_BEGIN(node, below) {
      const auto first = unordered_lists.lower_bound({below, nullptr});
      auto last = first;
      while (last != unordered_lists.end() && last->first == below) ++last;
      unordered_lists.erase(first, last);
      LYD_TREE_DFS_END(node, below);
    }
  }
  lyd_free_tree(node);
}

void TreeKeeper::mark_unordered(const lyd_node* parent, const SchemaNode& list) {
  unordered_lists.emplace(parent, &list);
}

Datastore::Datastore(const Schema& schema)
    : schema_(schema), keeper_(std::make_unique<TreeKeeper>()) {
  lyd_new_inner(nullptr, schema.root().lysc->module, schema.root().name.c_str(), 0, &root_);
  // A container that is itself marked as a default would be left without its default leaves.
  root_->flags &= ~static_cast<std::uint32_t>(LYD_DEFAULT);
  lyd_new_implicit_tree(root_, LYD_IMPLICIT_NO_STATE, nullptr);
}

Datastore::~Datastore() {
  lyd_free_all(root_);
}

void Datastore::load(TextSource& text, Format format) {
  take(read_configuration(schema_, text, format));
}

void Datastore::load(const std::string& text, Format format) {
  take(read_configuration(schema_, text, format));
}

void Datastore::take(ReadConfiguration read) {
  keeper_->free(root_);
  root_ = read.root.release();
  keeper_->unordered_lists.merge(read.unordered);
}

// Members like the reads that use the indexes, so that callers need not know which ones do.
// NOLINTNEXTLINE(readability-convert-member-functions-to-static)
lyd_node* Datastore::child(const lyd_node* parent, const SchemaNode& node) const {
  return child_instance(parent, node);
}

lyd_node* Datastore::entry(const lyd_node* parent, const SchemaNode& list,
                           std::span<const std::string> keys) const {
  if (keys.size() != list.num_keys) return nullptr;
  return keeper_->indexes.of(parent, list).find(keys);
}

lyd_node* Datastore::entry(const lyd_node* parent, const SchemaNode& list,
                           std::span<const std::string_view> keys) const {
  if (keys.size() != list.num_keys) return nullptr;
  return keeper_->indexes.of(parent, list).find(keys);
}

std::uint64_t Datastore::version() const {
  return keeper_->version;
}

std::span<lyd_node* const> Datastore::entries(const lyd_node* parent,
                                              const SchemaNode& list) const {
  return keeper_->indexes.of(parent, list).ordered();
}

// NOLINTNEXTLINE(readability-convert-member-functions-to-static): as child()
std::vector<lyd_node*> Datastore::leaf_list(const lyd_node* parent, const SchemaNode& node) const {
  std::vector<lyd_node*> values;
  for (lyd_node* value = lyd_child(parent); value != nullptr; value = value->next) {
    if (value->schema == node.lysc) values.push_back(value);
  }
  std::sort(values.begin(), values.end(), value_less);
  return values;
}

lyd_node* Datastore::find(const Path& path) const {
  lyd_node* node = root_;
  for (std::size_t i = 1; i < path.steps().size() && node != nullptr; ++i) {
    const PathStep& step = path.steps()[i];
    switch (step.node->kind) {
      case NodeKind::kList:
        node = step.keyed ? entry(node, *step.node, step.keys) : nullptr;
        break;
      case NodeKind::kLeafList: {
        const auto values = leaf_list(node, *step.node);
        const auto found = std::find_if(values.begin(), values.end(), [&](const lyd_node* value) {
          return step.keys.size() == 1 && value_text(value) == step.keys.front();
        });
        node = found != values.end() ? *found : nullptr;
        break;
      }
      default:
        node = child(node, *step.node);
    }
  }
  return node;
}

void Datastore::settle_order() const {
  for (const auto& [parent, list] : keeper_->unordered_lists) {
    if (list->kind == NodeKind::kList) {
      put_in_order(parent, entries(parent, *list));
    } else {
      put_in_order(parent, leaf_list(parent, *list));
    }
  }
  keeper_->unordered_lists.clear();
}

std::string Datastore::print(Format format) const {
  settle_order();
  // An empty configuration must be printed, too, but libyang leaves out containers that are marked
  // as defaults.
  root_->flags &= ~static_cast<std::uint32_t>(LYD_DEFAULT);
  char* text = nullptr;
  const LY_ERR result = lyd_print_mem(&text, root_, libyang_format(format), LYD_PRINT_WD_EXPLICIT);
  const std::unique_ptr<char, decltype(&std::free)> owner(text, &std::free);
  if (result != LY_SUCCESS) throw InputError(take_libyang_error(schema_.context()));
  return text != nullptr ? text : "";
}

}  // namespace tarnd::store
