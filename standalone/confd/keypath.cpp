#include "standalone/confd/keypath.h"

#include <algorithm>
#include <array>
#include <cassert>

#include "standalone/confd/values.h"

namespace tarnd::confd {
namespace {

using store::NodeKind;
using store::SchemaNode;

confd_value_t* next_element(confd_hkeypath_t& keypath) {
  assert(keypath.len < MAXDEPTH);
  return keypath.v[keypath.len++];
}

void add_name(const Model& model, const SchemaNode& node, confd_hkeypath_t& keypath) {
  confd_value_t* element = next_element(keypath);
  element[0] = tag_value(model, node);
  CONFD_SET_NOEXISTS(&element[1]);
}

void add_keys(const Model& model, const lyd_node* entry, confd_hkeypath_t& keypath) {
  confd_value_t* element = next_element(keypath);
  const lyd_node* key = lyd_child(entry);
  for (std::size_t i = 0; i < store::schema_of(entry).num_keys; ++i, key = key->next) {
    *element++ = leaf_value(model, key);
  }
  CONFD_SET_NOEXISTS(element);
}

// A keypath begins with its innermost element: first the keys of an entry, then the list's name.
void add_node(const Model& model, const lyd_node* node, confd_hkeypath_t& keypath) {
  const SchemaNode& schema = store::schema_of(node);
  if (schema.kind == NodeKind::kList) add_keys(model, node, keypath);
  add_name(model, schema, keypath);
}

void own_keys(confd_value_t* element) {
  for (; element->type != C_NOEXISTS; ++element) *element = own_value(*element);
}

// Makes room for a new innermost element.
confd_value_t* push_front(confd_hkeypath_t& keypath) {
  assert(keypath.len < MAXDEPTH);
  std::copy_backward(&keypath.v[0][0], &keypath.v[keypath.len][0], &keypath.v[keypath.len + 1][0]);
  ++keypath.len;
  return keypath.v[0];
}

}  // namespace

void set_keypath(const Model& model, std::span<const lyd_node* const> trail,
                 confd_hkeypath_t& keypath) {
  keypath.len = 0;
  std::for_each(trail.rbegin(), trail.rend(),
                [&](const lyd_node* node) { add_node(model, node, keypath); });
}

void set_keypath(const Model& model, const lyd_node* node, confd_hkeypath_t& keypath) {
  keypath.len = 0;
  for (; node != nullptr; node = lyd_parent(node)) add_node(model, node, keypath);
}

OwnedKeypath::OwnedKeypath() : keypath_() {}

OwnedKeypath::OwnedKeypath(const Model& model, const lyd_node* node) : OwnedKeypath() {
  set_keypath(model, node, keypath_);
  for (int i = 0; i < keypath_.len; ++i) own_keys(keypath_.v[i]);
}

OwnedKeypath::OwnedKeypath(const Model& model, const store::Path& path) : OwnedKeypath() {
  for (const store::PathStep& step : path.steps()) {
    append(model, *step.node);
    if (step.keyed) append_keys(model, step);
  }
}

OwnedKeypath::~OwnedKeypath() {
  for (int i = 0; i < keypath_.len; ++i) {
    for (confd_value_t* value = keypath_.v[i]; value->type != C_NOEXISTS; ++value) release(*value);
  }
}

void OwnedKeypath::append(const Model& model, const SchemaNode& child) {
  confd_value_t* element = push_front(keypath_);
  element[0] = tag_value(model, child);
  CONFD_SET_NOEXISTS(&element[1]);
}

void OwnedKeypath::append_keys(const Model& model, const store::PathStep& step) {
  const bool is_list = step.node->kind == NodeKind::kList;
  if (step.keys.size() != (is_list ? step.node->num_keys : 1)) {
    throw InputError("'" + step.node->name + "' has another number of keys");
  }
  std::vector<OwnedValue> keys;
  for (std::size_t i = 0; i < step.keys.size(); ++i) {
    const SchemaNode& leaf = is_list ? *step.node->children[i] : *step.node;
    auto key = parse_value(model, leaf, step.keys[i]);
    if (!key.has_value()) {
      throw InputError("'" + step.keys[i] + "' is no value for '" + leaf.name + "' of '" +
                       step.node->name + "'");
    }
    keys.push_back(std::move(*key));
  }
  confd_value_t* element = push_front(keypath_);
  for (OwnedValue& key : keys) *element++ = key.take();
  CONFD_SET_NOEXISTS(element);
}

}  // namespace tarnd::confd
