#include "standalone/store/change_notes.h"

#include <algorithm>

namespace tarnd::store {

std::optional<std::size_t> place_of(const LinesOfNodes& lines, const lyd_node* node) {
  while (node != nullptr) {
    const auto found = std::find_if(lines.begin(), lines.end(),
                                    [node](const auto& line) { return line.first == node; });
    if (found != lines.end()) return found->second;
    node = node->parent != nullptr ? &node->parent->node : nullptr;
  }
  return std::nullopt;
}

}  // namespace tarnd::store
