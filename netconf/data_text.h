#pragma once

#include <libyang/libyang.h>

#include <string>

#include "netconf/with_defaults.h"

namespace tarnd::netconf {

/// Appends the tree as XML. A container that says nothing by its presence is left out if nothing
/// in it is reported, but for the tree's own root.
void append_data(std::string& text, const lyd_node* tree, Defaults defaults);

}  // namespace tarnd::netconf
