#include "standalone/confd/value_array.h"

#include <algorithm>
#include <vector>

#include "standalone/confd/values.h"
#include "standalone/store/datastore.h"

namespace tarnd::confd {
namespace {

using store::NodeKind;
using store::SchemaNode;

class Writer {
 public:
  Writer(const Model& model, confd_value_t* values, int room)
      : model_(model), values_(values), room_(room) {}

  [[nodiscard]] int size() const { return size_; }

  // libyang keeps siblings in the order of the model, so both orders are walked side by side. A
  // null instance is a container that its choice left out.
  void add_children(const SchemaNode& schema, const lyd_node* instance) {
    const lyd_node* child = lyd_child(instance);
    for (const SchemaNode* node : schema.children) {
      const lyd_node* found = child != nullptr && child->schema == node->lysc ? child : nullptr;
      add(*node, found);
      while (child != nullptr && child->schema == node->lysc) child = child->next;
    }
  }

 private:
  void add(const SchemaNode& node, const lyd_node* instance) {
    switch (node.kind) {
      case NodeKind::kLeaf:
        if (instance != nullptr) return push([&] { return own_leaf_value(model_, instance); });
        return push(no_value);
      case NodeKind::kLeafList:
        return push([&] { return leaf_list(node, instance); });
      case NodeKind::kList:
        return push(no_value);
      case NodeKind::kPresence:
        if (instance == nullptr) return push(no_value);
        break;
      case NodeKind::kContainer:
        break;
    }
    push([&] { return tag_value(model_, node); });
    add_children(node, instance);
  }

  static confd_value_t no_value() {
    confd_value_t value;
    CONFD_SET_NOEXISTS(&value);
    return value;
  }

  confd_value_t leaf_list(const SchemaNode& node, const lyd_node* first) {
    std::vector<const lyd_node*> values;
    for (; first != nullptr && first->schema == node.lysc; first = first->next) {
      values.push_back(first);
    }
    std::sort(values.begin(), values.end(), store::value_less);
    return own_list_value(model_, values);
  }

  // Makes the value only where there is room for it.
  template <typename Make>
  void push(Make make) {
    if (size_ < room_) values_[size_] = make();
    ++size_;
  }

  const Model& model_;
  confd_value_t* values_;
  int room_;
  int size_ = 0;
};

}  // namespace

int write_value_array(const Model& model, const lyd_node* instance, confd_value_t* values,
                      int room) {
  Writer writer(model, values, room);
  writer.add_children(store::schema_of(instance), instance);
  return writer.size();
}

int max_value_array_size(const SchemaNode& node) {
  int size = 0;
  for (const SchemaNode* child : node.children) {
    ++size;
    if (child->kind == NodeKind::kContainer || child->kind == NodeKind::kPresence) {
      size += max_value_array_size(*child);
    }
  }
  return size;
}

}  // namespace tarnd::confd
