#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "standalone/confd/place.h"

namespace tarnd::confd {

/// Finds places by the text of their paths. Validators read many paths in a row that differ in one
/// key or one leaf, such as
///   /config/interface/gpon{1 1 3}/onu{7}/auth-method/serial-number
///   /config/interface/gpon{1 1 3}/onu{8}/auth-method/serial-number
/// so the places along the last path are kept, and only what differs is looked up.
class PlaceFinder {
 public:
  /// What find_place() returns for the path, until the next call. Null for a text that is no path,
  /// for one that leads through a list without keys, and for one that has a backslash in a key.
  const Place* find(const store::Datastore& datastore, std::string_view text);

 private:
  struct Step {
    std::size_t end = 0;  ///< its end in the text
    Place place;
  };

  [[nodiscard]] std::size_t known_steps(std::string_view text) const;
  bool follow(const store::Datastore& datastore, std::string_view text, std::size_t& depth);
  [[nodiscard]] Place place_of(const store::Datastore& datastore, std::size_t depth,
                               const store::SchemaNode& node, bool keyed) const;
  [[nodiscard]] const store::SchemaNode* node_named(const store::Schema& schema, std::size_t depth,
                                                    std::string_view name) const;
  [[nodiscard]] bool rest_is_known(std::string_view rest, std::size_t depth,
                                   std::size_t old_end) const;
  std::size_t follow_known_rest(const store::Datastore& datastore, std::size_t depth,
                                std::size_t old_end);

  std::string text_;
  std::vector<Step> steps_;  ///< of that text
  std::uint64_t version_ = 0;
  std::vector<std::string_view> keys_;  ///< of the step that is being read
};

}  // namespace tarnd::confd
