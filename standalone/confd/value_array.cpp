#include "standalone/confd/value_array.h"

#include <algorithm>
#include <vector>

#include "standalone/confd/values.h"
#include "standalone/store/datastore.h"

namespace tarnd::confd {
namespace {

using store::NodeKind;
using store::SchemaNode;

// Writes the array of an instance in which nothing is set, and then replaces what is set, from
// front to back.
class Writer {
 public:
  Writer(const Model& model, confd_value_t* values, int room)
      : model_(model), values_(values), room_(room) {}

  [[nodiscard]] int size() const { return size_; }

  void write(const lyd_node* instance) {
    insert_blank(store::schema_of(instance), 0);
    fill(instance, 0);
  }

 private:
  // Writes the values of the instance's children. `base` is where they begin if no presence
  // container before them exists; each that exists moves them back, by moved_ in all.
  void fill(const lyd_node* instance, int base) {
    // The instance has the children of a container or an entry.
    const lyd_node* child = reinterpret_cast<const lyd_node_inner*>(instance)->child;
    while (child != nullptr) {
      const ModelNode& node = model_.node(store::schema_of(child));
      put(node, child, base + node.offset);
      child = child->next;
      const bool many = node.kind == NodeKind::kList || node.kind == NodeKind::kLeafList;
      while (many && child != nullptr && child->schema == node.lysc) child = child->next;
    }
  }

  void put(const ModelNode& node, const lyd_node* instance, int at) {
    switch (node.kind) {
      case NodeKind::kLeaf:
        if (at + moved_ < room_) set_own_leaf_value(model_, node, instance, values_[at + moved_]);
        return;
      case NodeKind::kLeafList:
        if (at + moved_ < room_) values_[at + moved_] = leaf_list(node, instance);
        return;
      case NodeKind::kList:
        return;
      case NodeKind::kContainer:
        return fill(instance, at + 1);
      case NodeKind::kPresence:
        return put_presence(node, instance, at);
    }
  }

  // A container with presence has one value if it does not exist. If it does, its children follow
  // and move all later values back.
  void put_presence(const ModelNode& node, const lyd_node* instance, int at) {
    if (at + moved_ < room_) values_[at + moved_] = tag_value(model_, *node.schema);
    insert_blank(*node.schema, at + moved_ + 1);
    fill(instance, at + 1);
    moved_ += static_cast<int>(node.blank.size());
  }

  void insert_blank(const SchemaNode& node, int at) {
    const std::vector<confd_value_t>& blank = model_.node(node).blank;
    const auto count = static_cast<int>(blank.size());
    if (at < room_) {
      confd_value_t* const begin = values_ + at;
      const int inserted = std::min(count, room_ - at);
      const int kept = std::min(size_, room_ - count) - at;
      if (kept > 0) std::copy_backward(begin, begin + kept, begin + count + kept);
      std::copy_n(blank.data(), inserted, begin);
    }
    size_ += count;
  }

  confd_value_t leaf_list(const ModelNode& node, const lyd_node* first) {
    std::vector<const lyd_node*> values;
    for (; first != nullptr && first->schema == node.lysc; first = first->next) {
      values.push_back(first);
    }
    std::sort(values.begin(), values.end(), store::value_less);
    return own_list_value(model_, values);
  }

  const Model& model_;
  confd_value_t* values_;
  int room_;
  int size_ = 0;
  int moved_ = 0;
};

}  // namespace

int write_value_array(const Model& model, const lyd_node* instance, confd_value_t* values,
                      int room) {
  Writer writer(model, values, room);
  writer.write(instance);
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
