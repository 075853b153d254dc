#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>

#include "card/fm_port_type.h"
#include "card/limid.h"
#include "confd_maapi.h"
#include "pon_link.h"

// A service port binds a PON link, an ONU on it and a GEM port of that ONU to a VLAN match and a
// VLAN action. It has one of two branches, by the kind of link. The plug-in reads an entry in two
// shapes: as the value array of a bulk read, and as a tagged request.

/// Positions in the value array of one entry of "/config/service-port", and its size.
constexpr int SP_CONFD_VAL_OFFSET_SP = 0;
constexpr int SP_CONFD_VAL_OFFSET_XGSPON_INTERFACE = 2;
constexpr int SP_CONFD_VAL_OFFSET_XGSPON_ONU = 4;
constexpr int SP_CONFD_VAL_OFFSET_XGSPON_GEM = 6;
constexpr int SP_CONFD_VAL_OFFSET_GPON_INTERFACE = 8;
constexpr int SP_CONFD_VAL_OFFSET_GPON_ONU = 10;
constexpr int SP_CONFD_VAL_OFFSET_GPON_GEM = 12;
constexpr int SP_CONFD_VAL_OFFSET_MATCH_VLAN = 16;
constexpr int SP_CONFD_VAL_OFFSET_ACTION_VLAN = 21;
constexpr unsigned int SP_CONFD_VALUES_PER_OBJECT = 26;

/// The name of a kind of PON link in the configuration: "gpon", "xgspon", or "" for others.
const char* ponlink_type_name(fm_port_type type);

/// Finds the kind of link of one entry's value array, the GPON branch first. Returns 0, or -1 if
/// the entry has neither branch; the type then stays as it was.
int get_ponlink_type(const confd_value_t* values, fm_port_type* type);

/// How many service ports the card allows; 4096 if the card does not report a number.
std::uint32_t get_max_service_ports();

// The next three are defined in valid_service_port.cpp: their trace records and assertions carry
// the name of that file.

/// Reads the record from one entry's value array: the interface name with a blank for each slash,
/// so that it can be used as keys in a path, and a missing VLAN as -1. Frees the interface name's
/// value and leaves a name without a buffer in its place. Returns 0, or -1 if the entry has no
/// branch or an incomplete one; nothing is freed then.
int service_port_get_leafs(confd_value_t* values, std::uint32_t& sp, std::string& interface_name,
                           std::uint32_t& onu, std::uint32_t& gem, std::int32_t& match_vlan,
                           std::int32_t& action_vlan);

/// The id of a service port from a keypath that is its own or at least two levels below it. Returns
/// 0, or -1 for other keypaths.
int sp_get_id(std::int32_t sock, confd_trans_ctx* tctx, const confd_hkeypath_t* keypath,
              std::uint32_t& sp);

/// Reads interface (with blanks for slashes), ONU and GEM of the given kind of link from a tagged
/// request of 18 values that maapi_get_values filled. Frees the interface name's value and leaves a
/// name without a buffer in its place. Returns 0, or -1 if a value is missing; nothing is freed
/// then.
int sp_get_values(std::int32_t sock, confd_trans_ctx* tctx, const confd_hkeypath_t* keypath,
                  std::string& interface_name, std::uint32_t& onu, std::uint32_t& gem,
                  std::uint32_t sp, limid_type_t type, confd_tag_value_t* tv, int size);

namespace valid {

inline constexpr const char* kServicePorts = "/config/service-port";

constexpr std::int32_t kNoVlan = -1;

/// What service_port_get_leafs reads, in one piece.
struct ServicePort {
  std::uint32_t id = 0;
  std::string interface_name;  ///< with blanks for slashes
  std::uint32_t onu = 0;
  std::uint32_t gem = 0;
  std::int32_t match_vlan = kNoVlan;
  std::int32_t action_vlan = kNoVlan;
};

/// Reads the record with service_port_get_leafs; no value if that returns -1.
std::optional<ServicePort> take_service_port(confd_value_t* values);

/// Where the values of one branch are, in the value array or in the tagged request.
struct BranchPositions {
  const char* link;  ///< the list of links, "gpon" or "xgspon"
  int interface_name;
  int onu;
  int gem;
};

inline constexpr BranchPositions kGponPositions{kGponList, SP_CONFD_VAL_OFFSET_GPON_INTERFACE,
                                                SP_CONFD_VAL_OFFSET_GPON_ONU,
                                                SP_CONFD_VAL_OFFSET_GPON_GEM};
inline constexpr BranchPositions kXgsponPositions{kXgsponList, SP_CONFD_VAL_OFFSET_XGSPON_INTERFACE,
                                                  SP_CONFD_VAL_OFFSET_XGSPON_ONU,
                                                  SP_CONFD_VAL_OFFSET_XGSPON_GEM};

/// Whether the value array has the branch.
inline bool has_branch(const confd_value_t* values, const BranchPositions& branch) {
  return values[branch.interface_name].type != C_NOEXISTS;
}

/// The tagged request has the GPON branch first, unlike the value array.
inline constexpr BranchPositions kGponRequest{kGponList, 1, 3, 5};
inline constexpr BranchPositions kXgsponRequest{kXgsponList, 10, 12, 14};

/// A tagged request for both branches of an entry. Frees the interface names that nobody took.
class ServicePortRequest {
 public:
  ServicePortRequest();
  ServicePortRequest(const ServicePortRequest&) = delete;
  ServicePortRequest& operator=(const ServicePortRequest&) = delete;
  ~ServicePortRequest();

  /// Reads the values of the service port. Returns false if that fails.
  bool read(std::int32_t sock, const confd_trans_ctx* tctx, std::uint32_t sp);

  confd_tag_value_t* values() { return values_.data(); }
  [[nodiscard]] int size() const { return static_cast<int>(values_.size()); }

  /// The type of the branch's interface name, C_NOEXISTS if the entry does not have the branch.
  [[nodiscard]] confd_vtype type(const BranchPositions& branch) const {
    return CONFD_GET_TAG_VALUE(&values_[branch.interface_name])->type;
  }

 private:
  std::array<confd_tag_value_t, 18> values_;
};

/// Frees an interface name and leaves a name without a buffer, so that a second call does nothing.
void free_interface_name(confd_value_t* name);

/// Interface names: with blanks as the keys of a path, with slashes for the user. A null name is
/// empty.
void set_blank_separated(std::string& text, const char* name);
std::string slash_separated(const std::string& name);

}  // namespace valid
