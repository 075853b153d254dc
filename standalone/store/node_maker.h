#pragma once

#include <libyang/libyang.h>

#include <span>
#include <string>

#include "standalone/store/schema.h"

// Makes nodes of libyang's trees, the same as its own functions would, at a fraction of the cost.
namespace tarnd::store {

/// Makes an empty container below the parent.
lyd_node* make_container(lyd_node* parent, const SchemaNode& container);

/// Makes an entry with these keys, as many as the list has, below the parent; null if one is
/// invalid.
lyd_node* make_entry(lyd_node* parent, const SchemaNode& list, std::span<const std::string> keys,
                     bool canonical);

/// Makes a leaf, or a value of a leaf-list, below the parent; null if the value is invalid. A
/// canonical text is one that reads back as it was written.
lyd_node* make_term(lyd_node* parent, const SchemaNode& leaf, const std::string& value,
                    bool canonical);

}  // namespace tarnd::store
