#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "confd_maapi.h"

/// What a VLAN mapping matches: outer VLAN id and outer CoS, each a number or "any".
struct vlanMatch_t {
  std::string vlan;
  std::string cos;
};

/// "vlan_match_check": rejects a service profile if two VLAN mappings of one port match the same
/// frames, or if a mapping applies to no port. The keypath is that of a VLAN mapping, its element 2
/// the service profile; newval is not used. Reads all VLAN mappings of the profile. Writes no begin
/// and end records. Returns 0, or -1 with a text.
std::int32_t validate_vlan_match(std::int32_t sock, confd_trans_ctx* tctx,
                                 confd_hkeypath_t* keypath, confd_value_t* newval);

/// Compares a match with those of the port and adds it to them; the table's keys are the low 8 bits
/// of port numbers. Returns 0, or -1 if it conflicts with one of them; it is then not added.
std::int32_t check_vlan_match(std::uint32_t port, const std::string& vlan, const std::string& cos,
                              std::multimap<std::uint32_t, vlanMatch_t>& table);
