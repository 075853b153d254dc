#include "match_overlap_validation.h"

#include <functional>

std::size_t MatchOverlapValidation::key_hash::operator()(const key& claim) const {
  const auto& [interface_name, type, onu, gem, match_vlan] = claim;
  const std::uint32_t numbers = type ^ onu ^ gem ^ match_vlan;
  return std::hash<std::string>()(interface_name) ^ numbers;
}

bool MatchOverlapValidation::key_equal::operator()(const key& left, const key& right) const {
  return std::get<1>(left) == std::get<1>(right) && std::get<2>(left) == std::get<2>(right) &&
         std::get<3>(left) == std::get<3>(right) && std::get<4>(left) == std::get<4>(right) &&
         std::get<0>(left) == std::get<0>(right);
}

MatchOverlapValidation::MatchOverlapValidation() : first_claims_(&memory_) {}

MatchOverlapValidation::~MatchOverlapValidation() = default;

void MatchOverlapValidation::reserve(std::size_t claims) {
  first_claims_.reserve(claims);
}

bool MatchOverlapValidation::ServicePortMatchOverlaps(std::uint32_t sp, std::string& message,
                                                      fm_port_type type,
                                                      const std::string& interface_name,
                                                      std::uint32_t onu, std::uint32_t gem,
                                                      std::int32_t match_vlan) {
  const auto [claim, is_new] =
      first_claims_.try_emplace(key(interface_name, static_cast<std::uint32_t>(type), onu, gem,
                                    static_cast<std::uint32_t>(match_vlan)),
                                sp);
  if (is_new) {
    return false;
  }
  message = "Service-port " + std::to_string(claim->second) + " and " + std::to_string(sp) +
            " have conflicting matches.";
  return true;
}
