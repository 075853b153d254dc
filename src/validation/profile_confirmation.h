#pragma once

#include <cstdint>

#include "confd_maapi.h"
#include "gpon_vald_trace_itf.h"

namespace valid {

/// What differs between the profile confirmations.
struct ProfileConfirmation {
  const char* kind;          ///< the profile's word in the trace
  const char* profile_path;  ///< path of the committed profile, a format for its name
  /// XPath of the profile's users below the interface list, up to the profile's name.
  const char* users;
  /// Returns the name of the interface list whose users count; null if that is always "gpon".
  const char* (*interface_list)();
  const char* const* warning;    ///< read at the moment of the warning
  const char* count_unreadable;  ///< user text if the count of users is no number
};

/// Asks the user to confirm a change to a profile that is in use. The keypath is the profile's
/// entry; the source is the validator in whose name the trace is written. Reads from the committed
/// configuration whether the profile exists there, and from the transaction who uses it. Returns 0,
/// -3 with the warning, or -1 with a text; throws std::out_of_range for a count beyond 32 bits.
std::int32_t confirm_profile_change(const ProfileConfirmation& profile, const TraceSource& source,
                                    std::int32_t sock, confd_trans_ctx* tctx,
                                    const confd_hkeypath_t* keypath);

}  // namespace valid
