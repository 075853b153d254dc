#include "gpon_vlan_limit.h"

#include <string>

#include "user_answers.h"
#include "validation_guards.h"
#include "validation_texts.h"
#include "vlan_mapping.h"

namespace {

constexpr std::uint32_t kMostMappingsPerPort = 20;

// Used for the VEIP, too.
constexpr const char* kTooManyMappings =
    "Maximum number of VLAN Mappings exceeded. There cannot be more than %d VLAN Mappings per "
    "Ethernet UNI port.";

std::string too_many_mappings() {
  return valid::formatted(kTooManyMappings, static_cast<int>(kMostMappingsPerPort));
}

}  // namespace

std::int32_t validate_vlan_limit(std::int32_t sock, confd_trans_ctx* tctx,
                                 confd_hkeypath_t* keypath, confd_value_t* /*newval*/) {
  const valid::ValidationTrace trace("validate_vlan_limit");
  const char* const profile = CONFD_GET_CBUFPTR(&keypath->v[2][0]);

  std::unordered_map<std::uint32_t, std::uint32_t> counter;
  const auto count = [&counter](std::uint32_t port) {
    return check_vlan_counter(port, counter) == CONFD_OK;
  };
  const auto rule = [&count](const valid::VlanMapping& mapping) -> std::string {
    switch (valid::check_ports(mapping, count)) {
      case valid::PortsResult::kRefused:
        return too_many_mappings();
      case valid::PortsResult::kUnreadable:
        return valid::kTransactionUnreadable;
      case valid::PortsResult::kAccepted:
      case valid::PortsResult::kNone:
        break;
    }
    return {};
  };
  return trace.end(valid::check_vlan_mappings(sock, tctx, profile, rule));
}

std::int32_t check_vlan_counter(std::uint32_t port,
                                std::unordered_map<std::uint32_t, std::uint32_t>& counter) {
  const std::uint32_t mappings = ++counter[valid::port_key(port)];
  return mappings > kMostMappingsPerPort ? CONFD_ERR : CONFD_OK;
}
