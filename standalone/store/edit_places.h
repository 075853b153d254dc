#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <unordered_map>
#include <vector>

#include "standalone/store/path.h"
#include "standalone/store/reader.h"

namespace tarnd::store {

/// What an edit's text does to one node.
struct EditPlace {
  bool touched = false;
  std::optional<std::size_t> line;  ///< none if the node was not touched in exactly one place
};

/// Finds the places of an edit's text by the paths of nodes.
class EditPlaces {
 public:
  explicit EditPlaces(ReadChange edit);

  /// The edit touches a node if it names the node or something in it, or creates, replaces or
  /// deletes a node around it. A path that ends with a list without keys, or with a leaf-list,
  /// means all of its entries or values.
  [[nodiscard]] EditPlace of(const Path& path) const;

 private:
  using Nodes = std::vector<const lyd_node*>;
  // A parent, a node of the model below it, and the keys of an entry or none.
  using Slot = std::tuple<const lyd_node*, const lysc_node*, std::string>;

  void add_children(const lyd_node* parent);
  [[nodiscard]] Nodes nodes_in(const Slot& slot) const;
  [[nodiscard]] bool decides_all(const lyd_node* node) const;
  [[nodiscard]] EditPlace place_of(const Nodes& nodes) const;
  [[nodiscard]] EditPlace place_of_removal(const lyd_node* parent, const SchemaNode& leaf) const;

  ReadChange edit_;
  std::map<Slot, Nodes> nodes_;
  std::unordered_multimap<const lyd_node*, std::size_t> lines_;
};

}  // namespace tarnd::store
