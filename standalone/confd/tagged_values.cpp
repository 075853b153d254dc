#include "standalone/confd/tagged_values.h"

#include <cstdint>
#include <vector>

#include "standalone/confd/errors.h"
#include "standalone/confd/values.h"

namespace tarnd::confd {
namespace {

using store::NodeKind;
using store::SchemaNode;

// Where in the array's structure the reader is: a container or entry, and its instance or null.
struct Level {
  const SchemaNode* schema = nullptr;
  const lyd_node* instance = nullptr;
};

const SchemaNode* child_with_tag(const Model& model, const SchemaNode& parent,
                                 std::uint32_t number) {
  for (const SchemaNode* child : parent.children) {
    if (model.node(*child).number == number) return child;
  }
  return nullptr;
}

class TaggedReader {
 public:
  TaggedReader(const SessionState& session, const SchemaNode& schema, const lyd_node* instance)
      : session_(session), levels_{{&schema, instance}} {}

  // Checks the whole array before it writes a value, so that a failed call changes nothing.
  int read(std::span<confd_tag_value_t> values) {
    std::vector<const lyd_node*> leaves(values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
      if (step(values[i], leaves[i]) != CONFD_OK) return CONFD_ERR;
    }
    if (levels_.size() != 1) return fail(CONFD_ERR_PROTOUSAGE, "a C_XMLEND is missing");
    for (std::size_t i = 0; i < values.size(); ++i) {
      if (leaves[i] != nullptr) values[i].v = own_leaf_value(session_.model, leaves[i]);
    }
    return CONFD_OK;
  }

 private:
  int step(const confd_tag_value_t& value, const lyd_node*& leaf) {
    switch (value.v.type) {
      case C_XMLBEGIN:
        return enter_child(value.tag.tag);
      case C_XMLEND:
        return leave(value.tag.tag);
      case C_NOEXISTS:
        return find_leaf(value.tag.tag, leaf);
      default:
        return fail(CONFD_ERR_BADTYPE, "an element is neither structure nor a leaf to read");
    }
  }

  int enter_child(std::uint32_t number) {
    const Level level = levels_.back();
    const SchemaNode* child = child_with_tag(session_.model, *level.schema, number);
    if (child == nullptr ||
        (child->kind != NodeKind::kContainer && child->kind != NodeKind::kPresence)) {
      return fail(CONFD_ERR_BADPATH, "a C_XMLBEGIN names no container");
    }
    levels_.push_back({child, instance_of(level, *child)});
    return CONFD_OK;
  }

  int leave(std::uint32_t number) {
    if (levels_.size() == 1 || session_.model.node(*levels_.back().schema).number != number) {
      return fail(CONFD_ERR_PROTOUSAGE, "a C_XMLEND does not end what began");
    }
    levels_.pop_back();
    return CONFD_OK;
  }

  int find_leaf(std::uint32_t number, const lyd_node*& leaf) {
    const Level level = levels_.back();
    const SchemaNode* child = child_with_tag(session_.model, *level.schema, number);
    if (child == nullptr || child->kind != NodeKind::kLeaf) {
      return fail(CONFD_ERR_BADPATH, "an element names no leaf");
    }
    leaf = instance_of(level, *child);
    return CONFD_OK;
  }

  [[nodiscard]] const lyd_node* instance_of(const Level& level, const SchemaNode& child) const {
    return level.instance != nullptr ? session_.transaction.datastore().child(level.instance, child)
                                     : nullptr;
  }

  const SessionState& session_;
  std::vector<Level> levels_;
};

}  // namespace

int read_tagged_values(const SessionState& session, const SchemaNode& schema,
                       const lyd_node* instance, std::span<confd_tag_value_t> values) {
  return TaggedReader(session, schema, instance).read(values);
}

}  // namespace tarnd::confd
