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
  std::int32_t err = 0;  ///< -1 if a TCONT names a bandwidth profile that is not loaded
};

namespace valid {

/// kbit/s upstream on a PON link.
constexpr std::uint32_t kTotalCapacity = 1107504;
constexpr std::uint32_t kFixedCapacity = 442752;
/// Counts toward the total, for each ONU of the link.
constexpr std::uint32_t kOverheadPerOnu = 560;

}  // namespace valid

extern "C" {

/// The reserved bandwidth, by name of the bandwidth profile and by name of the line profile. Every
/// check clears both tables and loads them again.
extern std::unordered_map<std::string, bandwidth_ctx> bandwidth_prof_to_bandwidth;
extern std::unordered_map<std::string, bandwidth_ctx> line_prof_to_bandwidth;
}

/// Loads all bandwidth profiles of the transaction; a name that is in the table already keeps its
/// figures. After a profile without traffic type the rest of its batch is skipped. Returns 0, or -1
/// if no profile was loaded after such a profile.
int loadAllBws(int sock, confd_trans_ctx* tctx);

/// Reads the name and the figures in kbit/s from the values of one bandwidth profile. The first
/// traffic type that exists counts. Frees the name's value. Returns 0, or -1 if there is no traffic
/// type; the figures then stay as they were.
int loadBwProf(confd_value_t* values, std::string& name, std::uint32_t& fixed,
               std::uint32_t& total);

/// Loads all line profiles of the transaction. The bandwidth profiles must be loaded before. Always
/// returns 0.
int loadAllLines(int sock, confd_trans_ctx* tctx);

/// Adds up the TCONTs of one line profile; the path is that of its TCONT list. Stops after a batch
/// with an unknown bandwidth profile. Returns the context's error flag.
int loadAllTconts(std::int32_t sock, confd_trans_ctx* tctx, std::string path, bwctx& ctx);

/// Checks that what the ONUs of one GPON link of chassis 1 reserve fits the link; slot and port are
/// its slot-id and port-id. The line profiles must be loaded before. Returns 0, or -1 with a text;
/// without a text if the ONUs cannot be read.
int validate_ponlink_bw(int sock, confd_trans_ctx* tctx, const std::string& slot,
                        const std::string& port);

/// "onu_bw_check": checks the link whose list of ONUs the keypath names. newval is not used.
/// Returns 0 or -1.
std::int32_t validate_max_bandwidth_ponlink(std::int32_t sock, confd_trans_ctx* tctx,
                                            confd_hkeypath_t* keypath, confd_value_t* newval);

/// "ponlink_bw_check": checks the number of TCONTs of every line profile, then every GPON link.
/// keypath and newval are not used. Returns 0 or -1.
std::int32_t validate_max_bandwidth_global(std::int32_t sock, confd_trans_ctx* tctx,
                                           confd_hkeypath_t* keypath, confd_value_t* newval);
