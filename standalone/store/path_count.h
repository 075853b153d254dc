#pragma once

#include <libyang/libyang.h>

#include <cstddef>
#include <optional>
#include <string_view>

namespace tarnd::store {

/// The number of nodes that a path such as
///   /config/interface/gpon/onu[rg-profile='home']
/// names: names of the model from the root on, and perhaps one condition at the end, that a text
/// leaf equals a text. Nothing for any other expression: that is left to libyang. `root` is the
/// instance of `config`.
std::optional<std::size_t> count_by_walk(const lyd_node* root, std::string_view path);

}  // namespace tarnd::store
