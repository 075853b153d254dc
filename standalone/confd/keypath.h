#pragma once

#include <span>

#include "confd_lib.h"
#include "standalone/confd/model.h"
#include "standalone/store/path.h"

namespace tarnd::confd {

/// Writes the keypath of the last node of a trail, which begins at the root. The keys belong to the
/// configuration, as with leaf_value().
void set_keypath(const Model& model, std::span<const lyd_node* const> trail,
                 confd_hkeypath_t& keypath);

/// The same for a node in a tree.
void set_keypath(const Model& model, const lyd_node* node, confd_hkeypath_t& keypath);

/// A keypath that owns its keys.
class OwnedKeypath {
 public:
  /// The keypath of a node.
  OwnedKeypath(const Model& model, const lyd_node* node);
  /// The keypath of a path, even if its nodes do not exist. Throws InputError if a key is no value
  /// of its type.
  OwnedKeypath(const Model& model, const store::Path& path);
  OwnedKeypath(const OwnedKeypath&) = delete;
  OwnedKeypath& operator=(const OwnedKeypath&) = delete;
  ~OwnedKeypath();

  /// Adds a child's name as the new innermost element.
  void append(const Model& model, const store::SchemaNode& child);

  [[nodiscard]] confd_hkeypath_t* get() { return &keypath_; }

 private:
  OwnedKeypath();
  void append_keys(const Model& model, const store::PathStep& step);

  confd_hkeypath_t keypath_;
};

}  // namespace tarnd::confd
