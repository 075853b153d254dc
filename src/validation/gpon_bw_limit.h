#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>

#include "confd_maapi.h"

/// Reserved upstream bandwidth in kbit/s. A bandwidth profile has no TCONTs; for a line profile
/// these are the sums and the counts over its TCONTs.
struct bandwidth_ctx {
  std::uint32_t total = 0;          ///< counts toward the link's total
  std::uint32_t fixed = 0;          ///< always reserved
  std::uint32_t static_count = 0;   ///< TCONTs whose bandwidth is all fixed
  std::uint32_t dynamic_count = 0;  ///< the other TCONTs
};

/// One line profile while its TCONTs are read.
struct bwctx {
  bandwidth_ctx sums;
  std::int32_t err = 0;  ///< -1 once a TCONT named a bandwidth profile that is not loaded
};

extern "C" {

/// The model of reserved bandwidth: by name of the bandwidth profile and of the line profile. Every
/// check clears and loads it anew.
extern std::unordered_map<std::string, bandwidth_ctx> bandwidth_prof_to_bandwidth;
extern std::unordered_map<std::string, bandwidth_ctx> line_prof_to_bandwidth;
}

/// Loads all bandwidth profiles of the transaction; a name that is there already keeps its figures.
/// A profile without traffic type hides the rest of its batch. 0, or -1 where no profile was loaded
/// after such a one.
int loadAllBws(int sock, confd_trans_ctx* tctx);

/// Reduces the values of one bandwidth profile to its name and figures in kbit/s. The first traffic
/// type that is there decides. Frees the name among the values. 0, or -1 without a traffic type,
/// the figures are then left as they were.
int loadBwProf(confd_value_t* values, std::string& name, std::uint32_t& fixed,
               std::uint32_t& total);

/// Loads all line profiles of the transaction; needs the bandwidth profiles. Always 0.
int loadAllLines(int sock, confd_trans_ctx* tctx);

/// Adds up the TCONTs of one line profile; the path is that of its TCONT list. Stops after a batch
/// with an unknown bandwidth profile. Gives the context's error flag.
int loadAllTconts(std::int32_t sock, confd_trans_ctx* tctx, std::string path, bwctx& ctx);

/// Does what the ONUs of one GPON link of chassis 1 reserve fit the link? slot and port are its
/// slot-id and port-id. Needs the line profiles. 0, or -1 with a text; without one where the ONUs
/// cannot be read.
int validate_ponlink_bw(int sock, confd_trans_ctx* tctx, const std::string& slot,
                        const std::string& port);

/// "onu_bw_check": the link whose list of ONUs the keypath names. newval is not used. 0 or -1.
std::int32_t validate_max_bandwidth_ponlink(std::int32_t sock, confd_trans_ctx* tctx,
                                            confd_hkeypath_t* keypath, confd_value_t* newval);

/// "ponlink_bw_check": the TCONT counts of every line profile, then every GPON link. keypath and
/// newval are not used. 0 or -1.
std::int32_t validate_max_bandwidth_global(std::int32_t sock, confd_trans_ctx* tctx,
                                           confd_hkeypath_t* keypath, confd_value_t* newval);
