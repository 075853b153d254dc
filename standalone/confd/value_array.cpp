#include "standalone/confd/value_array.h"

#include <algorithm>
#include <vector>

#include "standalone/confd/values.h"
#include "standalone/store/datastore.h"

namespace tarnd::confd {
namespace {

using store::NodeKind;
using store::SchemaNode;

// Writes the array of an entry in which nothing is set, and then replaces what is set, from front
// to back.
class Writer {
 public:
  Writer(const Model& model, confd_value_t* values, int room)
      : model_(model), values_(values), room_(room) {}

  [[nodiscard]] int size() const { return size_; }

  void write(const lyd_node* entry) {
    insert_blank(model_.node(store::schema_of(entry)), 0);
    fill(entry);
  }

 private:
  // Goes through all nodes of the entry. Most are leaves.
  void fill(const lyd_node* entry) {
    const lyd_node* at = first_child(entry);
    while (at != nullptr) {
      const ModelNode& node = model_.node(store::schema_of(at));
      if (node.kind == NodeKind::kLeaf) {
        const int place = node.offset + moved_;
        if (place < room_) set_own_leaf_value(model_, node, at, values_[place]);
      } else if (node.kind == NodeKind::kContainer || node.kind == NodeKind::kPresence) {
        if (node.kind == NodeKind::kPresence) put_presence(node);
        if (const lyd_node* const child = first_child(at)) {
          at = child;
          continue;
        }
        leave(*node.schema);
      } else {
        at = put_many(node, at);
      }
      at = after(at, entry);
    }
  }

  // The next node of the entry that is not below this one; null at the end.
  const lyd_node* after(const lyd_node* node, const lyd_node* entry) {
    while (node->next == nullptr) {
      node = lyd_parent(node);
      if (node == entry) return nullptr;
      leave(store::schema_of(node));
    }
    return node->next;
  }

  // A container with presence has one value if it does not exist. If it does, its children follow
  // and move all later values back. Inlined, this and put_many would slow down the loop of fill.
  [[gnu::noinline]] void put_presence(const ModelNode& node) {
    const int place = node.offset + moved_;
    if (place < room_) values_[place] = tag_value(model_, *node.schema);
    insert_blank(node, place + 1);
  }
  void leave(const SchemaNode& node) {
    if (node.kind == NodeKind::kPresence) {
      moved_ += static_cast<int>(model_.node(node).blank.size());
    }
  }

  // Entries of a list have no values here. Returns the last instance.
  [[gnu::noinline]] const lyd_node* put_many(const ModelNode& node, const lyd_node* first) {
    const int place = node.offset + moved_;
    if (node.kind == NodeKind::kLeafList && place < room_) values_[place] = leaf_list(node, first);
    return last_of(first);
  }

  // The instance is a container or an entry.
  static const lyd_node* first_child(const lyd_node* instance) {
    return reinterpret_cast<const lyd_node_inner*>(instance)->child;
  }

  // The last instance of the list or leaf-list.
  static const lyd_node* last_of(const lyd_node* instance) {
    while (instance->next != nullptr && instance->next->schema == instance->schema) {
      instance = instance->next;
    }
    return instance;
  }

  void insert_blank(const ModelNode& node, int at) {
    const std::vector<confd_value_t>& blank = node.blank;
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

int write_value_array(const Model& model, const lyd_node* entry, confd_value_t* values, int room) {
  Writer writer(model, values, room);
  writer.write(entry);
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
