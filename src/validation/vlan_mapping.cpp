#include "vlan_mapping.h"

#include <cstdlib>

#include "middleware/logger.h"
#include "user_answers.h"
#include "validation_guards.h"

namespace {

constexpr const char* kMappings = "/config/profile/gpon/service-profile{%s}/vlan-mapping";
constexpr const char* kEthernetPorts =
    "/config/profile/gpon/service-profile{%s}/vlan-mapping{%x}/uni/ethernet";
constexpr const char* kVeip = "/config/profile/gpon/service-profile{%s}/vlan-mapping{%x}/veip/veip";

constexpr const char* kMappingUnreadable =
    "Failed getting service profiles uni ethernet port information.";

/// The Ethernet ports of a mapping as ConfD returns them.
class EthernetPorts {
 public:
  explicit EthernetPorts(const valid::VlanMapping& mapping)
      : readable_(maapi_get_list_elem(mapping.sock, mapping.thandle, &values_, &count_,
                                      kEthernetPorts, mapping.profile, mapping.key) == CONFD_OK) {}
  EthernetPorts(const EthernetPorts&) = delete;
  EthernetPorts& operator=(const EthernetPorts&) = delete;
  ~EthernetPorts() {
    for (int i = 0; i < count_; ++i) {
      confd_free_value(&values_[i]);
    }
    std::free(values_);
  }

  [[nodiscard]] bool readable() const { return readable_; }
  [[nodiscard]] int count() const { return count_; }
  [[nodiscard]] const confd_value_t* values() const { return values_; }

 private:
  confd_value_t* values_ = nullptr;
  int count_ = 0;
  bool readable_;
};

bool exists(const valid::VlanMapping& mapping, const char* path) {
  return maapi_exists(mapping.sock, mapping.thandle, path, mapping.profile, mapping.key) == 1;
}

valid::PortsResult check_ethernet_ports(const valid::VlanMapping& mapping,
                                        const std::function<bool(std::uint32_t port)>& accepts) {
  const EthernetPorts ethernet(mapping);
  if (!ethernet.readable()) {
    valid::note_unreadable_mapping();
    return valid::PortsResult::kUnreadable;
  }
  const confd_value_t* const ports = ethernet.values();
  for (int listpos = 0; listpos < ethernet.count(); ++listpos) {
    if (!accepts(CONFD_GET_UINT8(&ports[listpos]))) {
      return valid::PortsResult::kRefused;
    }
  }
  return valid::PortsResult::kAccepted;
}

std::string first_refusal(std::int32_t sock, const confd_trans_ctx* tctx, const char* profile,
                          const valid::MappingRule& rule) {
  valid::Cursor mappings(sock, tctx, kMappings, profile);
  while (mappings.next()) {
    std::string refusal = rule({sock, tctx->thandle, profile, &mappings.entry().keys[0]});
    if (!refusal.empty()) {
      return refusal;
    }
  }
  return {};
}

}  // namespace

namespace valid {

PortsResult check_ports(const VlanMapping& mapping,
                        const std::function<bool(std::uint32_t port)>& accepts) {
  if (exists(mapping, kEthernetPorts)) {
    return check_ethernet_ports(mapping, accepts);
  }
  if (exists(mapping, kVeip)) {
    return accepts(kVeipPort) ? PortsResult::kAccepted : PortsResult::kRefused;
  }
  return PortsResult::kNone;
}

void note_unreadable_mapping() {
  Logger::Debug(kMappingUnreadable);
}

std::int32_t check_vlan_mappings(std::int32_t sock, confd_trans_ctx* tctx, const char* profile,
                                 const MappingRule& rule) {
  const std::string refusal = first_refusal(sock, tctx, profile, rule);
  return refusal.empty() ? CONFD_OK : reject(tctx, refusal.c_str());
}

}  // namespace valid
