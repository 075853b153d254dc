#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <tuple>
#include <type_traits>
#include <unordered_map>

#include "card/fm_port_type.h"

/// Remembers which service port claims which traffic and finds the claims that collide. The same
/// PON interface, kind of link, ONU, GEM port and match VLAN belong to one service port only.
class MatchOverlapValidation {
 public:
  /// Interface name, kind of link, ONU id, GEM id, match VLAN.
  using key = std::tuple<std::string, std::uint32_t, std::uint32_t, std::uint32_t, std::uint32_t>;

  /// The four numbers combine without order; the equality tells apart what shares a bucket.
  struct key_hash {
    std::size_t operator()(const key& claim) const;
  };
  struct key_equal {
    bool operator()(const key& left, const key& right) const;
  };

  /// Nothing is claimed at first.
  MatchOverlapValidation();
  MatchOverlapValidation(const MatchOverlapValidation&) = delete;
  MatchOverlapValidation& operator=(const MatchOverlapValidation&) = delete;
  ~MatchOverlapValidation();

  /// Claims the traffic for service port `sp`. The match VLAN -1 stands for traffic of any VLAN and
  /// is a value like the others. True where an earlier service port has claimed the same traffic:
  /// `message` then names both, and the earlier one keeps it.
  bool ServicePortMatchOverlaps(std::uint32_t sp, std::string& message, fm_port_type type,
                                const std::string& interface_name, std::uint32_t onu,
                                std::uint32_t gem, std::int32_t match_vlan);

 private:
  // The table keeps the hash of an entry beside it as long as computing it may throw.
  static_assert(!std::is_nothrow_invocable_v<const key_hash&, const key&>);

  std::unordered_map<key, std::uint32_t, key_hash, key_equal> first_claims_;
};
