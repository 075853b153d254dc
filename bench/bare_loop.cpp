#include "bench/bare_loop.h"

#include <unordered_map>

#include "match_overlap_validation.h"

namespace tarnd {
namespace {

constexpr int kPortsPerLink = 256;

}  // namespace

Port port_of(int id) {
  const int on_link = id % kPortsPerLink;
  return {"1/1/" + std::to_string(1 + id / kPortsPerLink), FM_PORT_TYPE_GPON,
          static_cast<std::uint32_t>(1 + on_link / 2), static_cast<std::uint32_t>(1 + on_link % 2),
          100 + on_link};
}

[[gnu::noinline]] std::size_t bare_loop(const std::vector<Port>& ports) {
  using Claims =
      std::unordered_map<MatchOverlapValidation::key, std::uint32_t,
                         MatchOverlapValidation::key_hash, MatchOverlapValidation::key_equal>;
  Claims claims;
  std::uint32_t id = 0;
  for (const Port& port : ports) {
    claims.emplace(MatchOverlapValidation::key(port.interface_name, port.type, port.onu, port.gem,
                                               static_cast<std::uint32_t>(port.vlan)),
                   id++);
  }
  return claims.size();
}

}  // namespace tarnd
