#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

#include "confd_lib.h"

// Last: its macros are plain words that other headers use. For the same reason this header is
// included after all others.
#include "base.h"

namespace tarnd::test {

// Values, as keys of an entry or as a node's new value.

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

/// The characters must outlive the value.
inline confd_value_t text(const char* characters) {
  confd_value_t value;
  CONFD_SET_BUF(&value, reinterpret_cast<unsigned char*>(const_cast<char*>(characters)),
                static_cast<unsigned int>(std::strlen(characters)));
  return value;
}

inline confd_value_t enumeration(std::int32_t number) {
  confd_value_t value;
  CONFD_SET_ENUM_VALUE(&value, number);
  return value;
}

inline confd_value_t boolean(int truth) {
  confd_value_t value;
  CONFD_SET_BOOL(&value, truth);
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

/// The keypath of a child of a PON interface: the numbers of the child and of the interface list.
inline confd_hkeypath_t link_child_keypath(std::uint32_t child, std::uint32_t list,
                                           std::uint32_t chassis, std::uint32_t slot,
                                           std::uint32_t port) {
  return keypath({{tag(child)},
                  {number(chassis), number(slot), number(port)},
                  {tag(list)},
                  {tag(base_interface)},
                  {tag(base_config)}});
}

/// The keypath of the VLAN mapping "m" of a service profile. The name must outlive it.
inline confd_hkeypath_t mapping_keypath(const char* profile) {
  return keypath({{text("m")},
                  {tag(base_vlan_mapping)},
                  {text(profile)},
                  {tag(base_service_profile)},
                  {tag(base_gpon)},
                  {tag(base_profile)},
                  {tag(base_config)}});
}

}  // namespace tarnd::test
