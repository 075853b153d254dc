#pragma once

#include <initializer_list>
#include <string>

#include "tests/support/card_fixture.h"

namespace tarnd::test {

// Content of a service profile in XML.
inline std::string vlan_mapping(const std::string& name, const std::string& content) {
  return element("vlan-mapping", element("name", name) + content);
}

inline std::string on_ethernet(std::initializer_list<int> ports) {
  std::string leaf_list;
  for (const int port : ports) {
    leaf_list += element("ethernet", std::to_string(port));
  }
  return element("uni", leaf_list);
}

inline std::string on_veip() {
  return element("veip", element("veip", ""));
}

/// An empty text leaves the leaf to its default.
inline std::string matching(const std::string& vlan, const std::string& cos) {
  return element("match", element("outer", (vlan.empty() ? "" : element("vlan-id", vlan)) +
                                               (cos.empty() ? "" : element("cos", cos))));
}

}  // namespace tarnd::test
