#pragma once

#include <functional>
#include <string>

namespace tarnd::test {

/// The name of a profile, VLAN mapping or WAN connection in place of a plain one.
using Naming = std::function<std::string(const std::string& plain)>;
std::string plain_name(const std::string& plain);

/// The names of one card, with escapes for XML.
class Names {
 public:
  explicit Names(Naming naming);

  std::string operator()(const std::string& plain) const;
  /// As a key in a path.
  [[nodiscard]] std::string key(const std::string& plain) const;

 private:
  Naming naming_;
};

/// Everything of one slot of the card, an entry of /config/gpon.
std::string card_slot(const std::string& content);

/// A card that has something to read for every validator. The two mappings of the service profile
/// "twins" match the same traffic.
std::string whole_card(const Names& n = Names(plain_name));

}  // namespace tarnd::test
