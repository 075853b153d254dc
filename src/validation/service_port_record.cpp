#include "service_port_record.h"

#include <algorithm>
#include <string_view>

#include "base.h"
#include "card/fm_card.h"

namespace {

constexpr const char* kServicePort = "/base:config/service-port{%u}";
constexpr std::uint32_t kDefaultMaxServicePorts = 4096;

confd_tag_value_t container_begin(std::uint32_t tag) {
  confd_tag_value_t tv;
  CONFD_SET_TAG_XMLBEGIN(&tv, tag, base__ns);
  return tv;
}

confd_tag_value_t container_end(std::uint32_t tag) {
  confd_tag_value_t tv;
  CONFD_SET_TAG_XMLEND(&tv, tag, base__ns);
  return tv;
}

confd_tag_value_t leaf_to_read(std::uint32_t tag) {
  confd_tag_value_t tv;
  CONFD_SET_TAG_NOEXISTS(&tv, tag);
  CONFD_SET_TAG_NS(&tv, base__ns);
  return tv;
}

}  // namespace

const char* ponlink_type_name(fm_port_type type) {
  switch (type) {
    case FM_PORT_TYPE_GPON:
      return valid::kGponList;
    case FM_PORT_TYPE_XGSPON:
      return valid::kXgsponList;
  }
  return "";
}

int get_ponlink_type(const confd_value_t* values, fm_port_type* type) {
  if (valid::has_branch(values, valid::kGponPositions)) {
    *type = FM_PORT_TYPE_GPON;
    return 0;
  }
  if (!valid::has_branch(values, valid::kXgsponPositions)) {
    return -1;
  }
  *type = FM_PORT_TYPE_XGSPON;
  return 0;
}

std::uint32_t get_max_service_ports() {
  fm_slot_t slot{};
  std::uint32_t max = 0;
  fm_init();
  fm_local_slot(&slot);
  fm_scalar_card_tarnd_max_service_ports(&slot, &max);
  return max != 0 ? max : kDefaultMaxServicePorts;
}

namespace valid {

std::optional<ServicePort> take_service_port(confd_value_t* values) {
  ServicePort port;
  if (service_port_get_leafs(values, port.id, port.interface_name, port.onu, port.gem,
                             port.match_vlan, port.action_vlan) != 0) {
    return std::nullopt;
  }
  return port;
}

ServicePortRequest::ServicePortRequest()
    : values_{{
          container_begin(base_gpon),
          leaf_to_read(base_id),
          container_begin(base_onu),
          leaf_to_read(base_id),
          container_begin(base_gem),
          leaf_to_read(base_gem_id),
          container_end(base_gem),
          container_end(base_onu),
          container_end(base_gpon),
          container_begin(base_xgspon),
          leaf_to_read(base_id),
          container_begin(base_onu),
          leaf_to_read(base_id),
          container_begin(base_gem),
          leaf_to_read(base_gem_id),
          container_end(base_gem),
          container_end(base_onu),
          container_end(base_xgspon),
      }} {}

ServicePortRequest::~ServicePortRequest() {
  free_interface_name(CONFD_GET_TAG_VALUE(&values_[kGponRequest.interface_name]));
  free_interface_name(CONFD_GET_TAG_VALUE(&values_[kXgsponRequest.interface_name]));
}

bool ServicePortRequest::read(std::int32_t sock, const confd_trans_ctx* tctx, std::uint32_t sp) {
  return maapi_get_values(sock, tctx->thandle, values(), size(), kServicePort, sp) == CONFD_OK;
}

void free_interface_name(confd_value_t* name) {
  if (name->type == C_BUF && CONFD_GET_BUFPTR(name) != nullptr) {
    confd_free_value(name);
    CONFD_SET_BUF(name, nullptr, 0);
  }
}

void set_blank_separated(std::string& text, const char* name) {
  const std::string_view letters(name == nullptr ? "" : name);
  text.resize(letters.size());
  std::replace_copy(letters.begin(), letters.end(), text.begin(), '/', ' ');
}

std::string slash_separated(const std::string& name) {
  std::string text(name);
  std::replace(text.begin(), text.end(), ' ', '/');
  return text;
}

}  // namespace valid
