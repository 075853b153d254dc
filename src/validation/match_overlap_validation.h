#pragma once

#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <string>
#include <tuple>
#include <type_traits>
#include <unordered_map>

#include "card/fm_port_type.h"

/// Records which service port claims which traffic, and finds claims that collide. No two service
/// ports may have the same PON interface, kind of link, ONU, GEM port and match VLAN.
class MatchOverlapValidation {
 public:
  /// Interface name, kind of link, ONU id, GEM id, match VLAN.
  using key = std::tuple<std::string, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t>;

  /// Combines the numbers without regard to their order, so different claims may have equal hashes.
  struct key_hash {
    std::size_t operator()(const key& claim) const;
  };
  struct key_equal {
    bool operator()(const key& left, const key& right) const;
  };

  /// Begins without claims.
  MatchOverlapValidation();
  MatchOverlapValidation(const MatchOverlapValidation&) = delete;
  MatchOverlapValidation& operator=(const MatchOverlapValidation&) = delete;
  ~MatchOverlapValidation();

  /// Takes the memory of the table for this many claims, so that none moves as the table grows. Not
  /// exported, unlike the others.
  [[gnu::visibility("hidden")]] void reserve(std::size_t claims);

  /// Claims the traffic for service port `sp`. The match VLAN -1 means traffic of any VLAN and is
  /// compared like any other value. Returns true if an earlier service port has claimed the same
  /// traffic: `message` then names both, and the claim of the earlier one stays.
  bool ServicePortMatchOverlaps(std::uint32_t sp, std::string& message, fm_port_type type,
                                const std::string& interface_name, std::uint32_t onu,
                                std::uint32_t gem, std::int32_t match_vlan);

 private:
  // Not noexcept: the table then stores the hash of each entry instead of computing it again.
  static_assert(!std::is_nothrow_invocable_v<const key_hash&, const key&>);

  // Claims are added one by one and go all together, so the table takes its memory in pieces.
  std::pmr::monotonic_buffer_resource memory_;
  std::pmr::unordered_map<key, std::uint32_t, key_hash, key_equal> first_claims_;
};
