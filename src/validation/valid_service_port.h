#pragma once

#include <cstdint>
#include <string>

#include "card/fm_port_type.h"
#include "card/limid.h"
#include "confd_maapi.h"
#include "match_overlap_validation.h"
#include "service_port_record.h"

extern "C" {

/// The text of the warning before all service ports go. Writable: the daemon may put another text.
extern const char* SP_DEL_ALL_WARN_MSG;
}

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
