#pragma once

#include <cstdint>
#include <string>

#include "card/fm_port_type.h"
#include "card/limid.h"
#include "confd_maapi.h"
#include "match_overlap_validation.h"
#include "service_port_record.h"

extern "C" {

/// The text of the warning if all service ports are removed. The daemon may set it to another text.
extern const char* SP_DEL_ALL_WARN_MSG;
}

// All service ports together

/// "service_port_global_validation": if something was created or modified, checks that no two
/// service ports of the transaction match the same traffic and that the card has room for all of
/// them. Reads the changes at and below the keypath; newval is not used. Returns 0, or -1 with a
/// text; without a text if the changes cannot be read.
std::int32_t service_port_global_validation(std::int32_t sock, confd_trans_ctx* tctx,
                                            confd_hkeypath_t* keypath, confd_value_t* newval);

/// Looks for a creation or modification. state is a bool that becomes true with the first one,
/// which also ends the iteration.
maapi_iter_ret iterate_detect_change_on_sp(confd_hkeypath_t* keypath, maapi_iter_op op,
                                           confd_value_t* oldv, confd_value_t* newv, void* state);

/// The check of the whole list. Returns 0, or -1 with a text, which is empty unless two service
/// ports collide or there are too many.
std::int32_t validate_sp_global_validation(std::int32_t sock, confd_trans_ctx* tctx);

/// The check of one service port against those before it. Returns 0, or -1 with the message.
std::int32_t service_port_validate(std::uint32_t sp, fm_port_type type,
                                   const std::string& interface_name, std::uint32_t onu,
                                   std::uint32_t gem, std::int32_t match_vlan,
                                   std::int32_t action_vlan, std::string& message,
                                   MatchOverlapValidation& matches);

/// "service_port_delete_all_warning_check": warns if several service ports are committed, the
/// transaction leaves none, and there are still ONUs. keypath and newval are not used. Returns 0,
/// or -3 with SP_DEL_ALL_WARN_MSG.
std::int32_t service_port_delete_all_warning(std::int32_t sock, confd_trans_ctx* tctx,
                                             confd_hkeypath_t* keypath, confd_value_t* newval);

/// The number of ONUs on all PON links of the transaction; a link that cannot be read adds nothing.
int get_number_onus_in_candidate(std::int32_t sock, confd_trans_ctx* tctx);

// Each service port by itself

/// "sp_gem_check": checks that every created or modified service port names an ONU that exists, and
/// a GEM port of that ONU's line profile. Reads the changes at and below the keypath; newval is not
/// used. Returns 0, or -1 with a text; without a text if changes or a service port's id cannot be
/// read.
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

/// Checks one service port; the interface name has blanks for slashes. Returns 0, or -1 with a
/// text. The text about the GEM port replaces that about the ONU; there is none if only the kind of
/// link is unknown.
std::int32_t gem_check_single_sp(std::int32_t sock, confd_trans_ctx* tctx, std::uint32_t onu,
                                 std::uint32_t gem, std::uint32_t sp,
                                 const std::string& interface_name, limid_type_t type);
