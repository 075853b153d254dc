#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "standalone/daemon/daemon.h"

namespace tarnd {

/// Upstream bandwidth in kbit/s, with the plug-in's arithmetic: sums beyond 32 bits begin again
/// at 0.
struct Bandwidth {
  std::uint32_t total = 0;
  std::uint32_t fixed = 0;
};

/// One PON link.
struct LinkLoad {
  std::string path;
  std::uint32_t onus = 0;
  /// What the ONUs reserve, the total with the overhead of each. Empty if the plug-in compares it
  /// with no capacity: it does so on GPON links of chassis 1, on a card that checks bandwidth.
  std::optional<Bandwidth> reserved;
  /// Why the plug-in rejects every change of the link's ONUs at present; empty if it does not.
  std::string rejected;
};

/// One line profile: what each ONU that uses it reserves, without the overhead, and its TCONTs by
/// kind.
struct LineProfileLoad {
  std::string name;
  Bandwidth reserved;
  std::uint32_t dynamic_tconts = 0;  ///< traffic types 2 to 5
  std::uint32_t static_tconts = 0;   ///< traffic type 1
};

/// What the plug-in allows on this card. Bandwidth in kbit/s.
struct CardLimits {
  bool checks_bandwidth = true;
  Bandwidth capacity;              ///< of a link
  std::uint32_t onu_overhead = 0;  ///< counts toward the total, for each ONU
  /// The card's, if it defines it; the plug-in rejects no ONU beyond it.
  std::optional<std::uint32_t> onus_per_link;
  std::uint32_t dynamic_tconts = 0;
  std::uint32_t static_tconts = 0;
  std::uint32_t service_ports = 0;
};

struct CardLoad {
  CardLimits limits;
  std::vector<LinkLoad> links;                 ///< GPON before XGS-PON, in the order of their keys
  std::vector<LineProfileLoad> line_profiles;  ///< in the order of their names
  std::uint32_t service_ports = 0;             ///< that name a link; the others do not count
};

/// What the committed configuration carries. Makes the plug-in check all links, and then reads the
/// model of reserved bandwidth that it loaded for that. Throws PluginError if the plug-in does not
/// export that model.
CardLoad card_load(Daemon& daemon, const Plugin& plugin, store::Datastore& datastore);

/// What the configuration in the prepared transaction would carry.
CardLoad card_load(Daemon& daemon, const Plugin& plugin, store::Transaction& transaction);

/// How many more ONUs with a line profile a link accepts, and why it rejects the next one.
struct Fit {
  std::optional<std::uint32_t> onus;  ///< empty if no number of them is rejected
  std::string limit;                  ///< such as "total bandwidth"; empty without a number
};

Fit fit(const CardLimits& limits, const LinkLoad& link, const LineProfileLoad& line_profile);

/// The line profile with this name. Throws InputError, with the nearest name.
const LineProfileLoad& find_line_profile(const CardLoad& load, std::string_view name);

}  // namespace tarnd
