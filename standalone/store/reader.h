#pragma once

#include <memory>
#include <set>
#include <string>
#include <utility>

#include "standalone/store/change_notes.h"
#include "standalone/store/schema.h"
#include "standalone/store/text_source.h"

namespace tarnd::store {

enum class Format { kXml, kJson };

using TreeOwner = std::unique_ptr<lyd_node, void (*)(lyd_node*)>;

/// Lists and leaf-lists with entries that are out of order, each with its parent.
using UnorderedLists = std::set<std::pair<const lyd_node*, const SchemaNode*>>;

/// A whole configuration as libyang's nodes.
struct ReadConfiguration {
  TreeOwner root;
  UnorderedLists unordered;
};

/// The content of an edit as libyang's nodes, and what it has besides them.
struct ReadChange {
  TreeOwner root;
  ChangeNotes notes;
};

/// Reads a configuration: the model's top-level node, alone or inside NETCONF's `data`. The tree is
/// valid and has its defaults, and encrypted leaves are encrypted. Throws InputError with the line.
ReadConfiguration read_configuration(const Schema& schema, TextSource& text, Format format);
ReadConfiguration read_configuration(const Schema& schema, const std::string& text, Format format);

/// Reads an edit: the model's top-level node, alone or inside NETCONF's `config`, `edit-config` or
/// `rpc`. The values are checked against the model; whether the edit can be applied is not. Throws
/// InputError with the line.
ReadChange read_change(const Schema& schema, const std::string& text, Format format);

}  // namespace tarnd::store
