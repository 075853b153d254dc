#pragma once

#include <array>
#include <cstdint>
#include <cstring>

#include "confd_lib.h"

// Defines the model's names as macros, short ones too: after every other header.
#include "base.h"

namespace tarnd::test {

/// The keypath of the VLAN mapping "m" of a service profile, for a call of the validator itself.
/// The name must outlive it.
inline confd_hkeypath_t mapping_keypath(const char* profile) {
  static std::array<unsigned char, 2> mapping_name{'m', '\0'};
  confd_hkeypath_t keypath{};
  const auto set_name = [&keypath](int element_index, unsigned char* text, std::size_t size) {
    CONFD_SET_BUF(&keypath.v[element_index][0], text, static_cast<unsigned int>(size));
    CONFD_SET_NOEXISTS(&keypath.v[element_index][1]);
  };
  auto* const text = reinterpret_cast<unsigned char*>(const_cast<char*>(profile));
  set_name(0, mapping_name.data(), 1);
  CONFD_SET_XMLTAG(&keypath.v[1][0], base_vlan_mapping, base__ns);
  set_name(2, text, std::strlen(profile));
  CONFD_SET_XMLTAG(&keypath.v[3][0], base_service_profile, base__ns);
  CONFD_SET_XMLTAG(&keypath.v[4][0], base_gpon, base__ns);
  CONFD_SET_XMLTAG(&keypath.v[5][0], base_profile, base__ns);
  CONFD_SET_XMLTAG(&keypath.v[6][0], base_config, base__ns);
  keypath.len = 7;
  return keypath;
}

/// The keypath of a leaf of a PON interface; leaf and list are the numbers of their names.
inline confd_hkeypath_t link_leaf_keypath(std::uint32_t leaf, std::uint32_t list,
                                          std::uint32_t chassis, std::uint32_t slot,
                                          std::uint32_t port) {
  confd_hkeypath_t keypath{};
  CONFD_SET_XMLTAG(&keypath.v[0][0], leaf, base__ns);
  CONFD_SET_UINT32(&keypath.v[1][0], chassis);
  CONFD_SET_UINT32(&keypath.v[1][1], slot);
  CONFD_SET_UINT32(&keypath.v[1][2], port);
  CONFD_SET_NOEXISTS(&keypath.v[1][3]);
  CONFD_SET_XMLTAG(&keypath.v[2][0], list, base__ns);
  CONFD_SET_XMLTAG(&keypath.v[3][0], base_interface, base__ns);
  CONFD_SET_XMLTAG(&keypath.v[4][0], base_config, base__ns);
  keypath.len = 5;
  return keypath;
}

}  // namespace tarnd::test
