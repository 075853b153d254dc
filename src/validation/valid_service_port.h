#pragma once

#include <cstdint>
#include <string>

#include "card/fm_port_type.h"
#include "card/limid.h"
#include "confd_maapi.h"
#include "match_overlap_validation.h"

extern "C" {

/// The text of the warning before all service ports go. Writable: the daemon may put another text.
extern const char* SP_DEL_ALL_WARN_MSG;
}

// A service port binds a PON link, an ONU on it and a GEM port of that ONU to a VLAN match and a
// VLAN action. It has one of two branches, by the kind of link.

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

// Reading service ports

/// The name of a kind of PON link in the configuration: "gpon", "xgspon", or "" for others.
const char* ponlink_type_name(fm_port_type type);

/// The kind of link of one entry's value array, the GPON branch first. 0, or -1 where the entry has
/// neither branch; the type is then left as it was.
int get_ponlink_type(const confd_value_t* values, fm_port_type* type);

/// Takes the record out of one entry's value array; the interface name with a blank for each slash,
/// so that it stands as keys in a path; a missing VLAN as -1. Frees the interface value that it
/// takes, and leaves a name without a buffer in its place. 0, or -1 where the entry has no branch
/// or an incomplete one; nothing is freed then.
int service_port_get_leafs(confd_value_t* values, std::uint32_t& sp, std::string& interface_name,
                           std::uint32_t& onu, std::uint32_t& gem, std::int32_t& match_vlan,
                           std::int32_t& action_vlan);

/// The id of the service port that a keypath is of, or lies at least two levels below. 0, or -1 for
/// other keypaths.
int sp_get_id(std::int32_t sock, confd_trans_ctx* tctx, const confd_hkeypath_t* keypath,
              std::uint32_t& sp);

/// Takes interface (with blanks for slashes), ONU and GEM of the given kind of link out of a tagged
/// request of 18 values that maapi_get_values filled. Frees the interface value that it takes, and
/// leaves a name without a buffer in its place. 0, or -1 where a value is missing; nothing is freed
/// then.
int sp_get_values(std::int32_t sock, confd_trans_ctx* tctx, const confd_hkeypath_t* keypath,
                  std::string& interface_name, std::uint32_t& onu, std::uint32_t& gem,
                  std::uint32_t sp, limid_type_t type, confd_tag_value_t* tv, int size);

/// How many service ports the card allows; 4096 where it does not tell.
std::uint32_t get_max_service_ports();

// All service ports together

/// "service_port_global_validation": once something was created or modified, no two service ports
/// of the transaction match the same traffic and the card has room for all of them. Reads the
/// changes at and below the keypath; newval is not used. 0, or -1, without a text where the changes
/// cannot be read.
std::int32_t service_port_global_validation(std::int32_t sock, confd_trans_ctx* tctx,
                                            confd_hkeypath_t* keypath, confd_value_t* newval);

/// Looks for a creation or modification; state is a bool that becomes true with the first one,
/// which also ends the iteration.
maapi_iter_ret iterate_detect_change_on_sp(confd_hkeypath_t* keypath, maapi_iter_op op,
                                           confd_value_t* oldv, confd_value_t* newv, void* state);

/// The check of the whole list. 0, or -1 with a text, which is empty unless two service ports
/// collide or there are too many.
std::int32_t validate_sp_global_validation(std::int32_t sock, confd_trans_ctx* tctx);

/// The check of one service port against those before it. 0, or -1 with the message.
std::int32_t service_port_validate(std::uint32_t sp, fm_port_type type,
                                   const std::string& interface_name, std::uint32_t onu,
                                   std::uint32_t gem, std::int32_t match_vlan,
                                   std::int32_t action_vlan, std::string& message,
                                   MatchOverlapValidation& matches);

/// "service_port_delete_all_warning_check": warns when the last of several service ports go while
/// ONUs stay. Compares the committed with the transaction's number of entries; keypath and newval
/// are not used. 0, or -3 with SP_DEL_ALL_WARN_MSG.
std::int32_t service_port_delete_all_warning(std::int32_t sock, confd_trans_ctx* tctx,
                                             confd_hkeypath_t* keypath, confd_value_t* newval);

/// The number of ONUs on all PON links of the transaction; a link that cannot be read adds nothing.
int get_number_onus_in_candidate(std::int32_t sock, confd_trans_ctx* tctx);

// Each service port by itself

/// "sp_gem_check": every service port that was created or modified names an ONU that exists, and a
/// GEM port of that ONU's line profile. Reads the changes at and below the keypath; newval is not
/// used. 0, or -1, without a text where changes or a service port's id cannot be read.
std::int32_t validate_sp_gem_check(std::int32_t sock, confd_trans_ctx* tctx,
                                   confd_hkeypath_t* keypath, confd_value_t* newval);

/// The state of iterate_sp_for_gem_check_validation.
struct sp_gem_check_state {
  bool all_good = true;
  std::int32_t sock = -1;
  confd_trans_ctx* tctx = nullptr;
};

/// Checks each created or modified service port until one fails; state is a sp_gem_check_state.
maapi_iter_ret iterate_sp_for_gem_check_validation(confd_hkeypath_t* keypath, maapi_iter_op op,
                                                   confd_value_t* oldv, confd_value_t* newv,
                                                   void* state);

/// Checks one service port; the interface name has blanks for slashes. 0, or -1 with a text (none
/// for an unknown kind of link alone). Of two findings the GEM port's is told.
std::int32_t gem_check_single_sp(std::int32_t sock, confd_trans_ctx* tctx, std::uint32_t onu,
                                 std::uint32_t gem, std::uint32_t sp,
                                 const std::string& interface_name, limid_type_t type);
