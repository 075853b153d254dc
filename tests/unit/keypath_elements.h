#pragma once

#include <cstdint>
#include <vector>

#include "confd_lib.h"

// Last: its macros are plain words that other headers use.
#include "base.h"

namespace tarnd::test {

inline confd_value_t none() {
  confd_value_t value;
  CONFD_SET_NOEXISTS(&value);
  return value;
}

inline confd_value_t number(std::uint32_t number) {
  confd_value_t value;
  CONFD_SET_UINT32(&value, number);
  return value;
}

inline confd_value_t tag(std::uint32_t tag) {
  confd_value_t value;
  CONFD_SET_XMLTAG(&value, tag, base__ns);
  return value;
}

/// Elements from the innermost on: a node by its tag, a list entry by its keys.
inline confd_hkeypath_t keypath(const std::vector<std::vector<confd_value_t>>& elements) {
  confd_hkeypath_t path{};
  path.len = static_cast<int>(elements.size());
  for (std::size_t i = 0; i < elements.size(); ++i) {
    for (std::size_t key = 0; key < elements[i].size(); ++key) path.v[i][key] = elements[i][key];
    path.v[i][elements[i].size()] = none();
  }
  return path;
}

/// The keypath of one service port, or of their list.
inline confd_hkeypath_t service_port_keypath(std::uint32_t id) {
  return keypath({{number(id)}, {tag(base_service_port)}, {tag(base_config)}});
}
inline confd_hkeypath_t service_ports_keypath() {
  return keypath({{tag(base_service_port)}, {tag(base_config)}});
}

}  // namespace tarnd::test
