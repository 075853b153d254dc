#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tarnd::store {

struct EditRecord;

/// One item of a configuration that comes, goes or has another value: a leaf that was set, an entry
/// of a list, a container with presence, or a value of a leaf-list. Its texts are empty for what
/// has no value, or has it in the path. A leaf that nobody set does not exist, even if it has a
/// default. So these changes contain a leaf that is set to its default; a Change, which compares
/// values, does not.
struct ItemChange {
  std::string path;
  std::optional<std::string> before;  ///< none: it was not there
  std::optional<std::string> after;   ///< none: it is not there any more

  bool operator==(const ItemChange&) const = default;
};

/// Each item whose value or existence the edits changed, an entry before what is in it. All that
/// is inside one node is in a row.
std::vector<ItemChange> item_changes(const EditRecord& root);

/// What takes these changes back.
std::vector<ItemChange> reversed(std::vector<ItemChange> changes);

}  // namespace tarnd::store
