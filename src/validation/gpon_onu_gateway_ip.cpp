#include "gpon_onu_gateway_ip.h"

#include <arpa/inet.h>

#include "user_answers.h"
#include "validation_guards.h"

namespace {

constexpr const char* kSameAddress = "Onu and Gateway IP addresses must have different values.";
constexpr const char* kOtherNetwork = "Onu and Gateway IP addresses must be in the same network.";

std::int32_t check_gateway(std::int32_t sock, confd_trans_ctx* tctx, confd_hkeypath_t* keypath) {
  // A host that is removed has no gateway to check.
  if (maapi_exists(sock, tctx->thandle, "%h", keypath) == 0) {
    return CONFD_OK;
  }
  confd_ipv4_prefix address{};
  in_addr gateway{};
  if (maapi_get_ipv4_and_plen_elem(sock, tctx->thandle, &address, "%h/address", keypath) !=
          CONFD_OK ||
      maapi_get_ipv4_elem(sock, tctx->thandle, &gateway, "%h/default-gateway", keypath) !=
          CONFD_OK) {
    return CONFD_ERR;
  }
  if (gateway.s_addr == address.ip.s_addr) {
    return valid::reject(tctx, kSameAddress);
  }
  if (chk_same_net(ntohl(address.ip.s_addr), ntohl(gateway.s_addr), address.len) != 0) {
    return valid::reject(tctx, kOtherNetwork);
  }
  return CONFD_OK;
}

}  // namespace

std::int32_t validate_onu_gateway_ip(std::int32_t sock, confd_trans_ctx* tctx,
                                     confd_hkeypath_t* keypath, confd_value_t* /*newval*/) {
  const valid::ValidationTrace trace("validate_onu_gateway_ip");
  return trace.end(check_gateway(sock, tctx, keypath));
}

int chk_same_net(std::uint32_t a, std::uint32_t b, std::uint32_t plen) {
  constexpr std::uint32_t kBits = 32;
  constexpr std::uint32_t kAllOnes = 0xFFFFFFFF;
  // Without the modulo a prefix length of 0 would shift by the width of the type.
  const std::uint32_t mask = kAllOnes << ((kBits - plen) % kBits);
  return ((a ^ b) & mask) != 0 ? -1 : 0;
}
