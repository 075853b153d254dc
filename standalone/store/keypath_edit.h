#pragma once

#include <string>

#include "standalone/store/reader.h"

namespace tarnd::store {

/// An edit of one node, as a user types it. The text is the path of the node and, for a leaf with a
/// value, '=' and the value:
///
///   /config/service-port{16}/gpon/id=1/1/1
///   /config/service-port[id='16']/gpon/id=1/1/1
///
/// Keys are in braces, or in XPath's predicates in any order; names may have the model's prefix.
/// The value has the form that files have, but that of an encrypted leaf is clear text.
struct KeypathEdit {
  Operation operation = Operation::kMerge;
  std::string text;
};

/// The edit as the tree that a file with the same effect makes. Missing parents are created; if the
/// node is to be deleted, they must exist. Throws InputError.
ReadChange read_keypath_edit(const Schema& schema, const KeypathEdit& edit);

}  // namespace tarnd::store
