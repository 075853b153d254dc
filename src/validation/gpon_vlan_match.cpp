#include "gpon_vlan_match.h"

#include <array>
#include <optional>

#include "user_answers.h"
#include "vlan_mapping.h"

namespace {

constexpr const char* kOuterVlan =
    "/config/profile/gpon/service-profile{%s}/vlan-mapping{%x}/match/outer/vlan-id";
constexpr const char* kOuterCos =
    "/config/profile/gpon/service-profile{%s}/vlan-mapping{%x}/match/outer/cos";

constexpr const char* kSameMatch =
    "It's not possible to configure two or more vlan rules with the same match.";

constexpr const char* kAny = "any";
constexpr std::size_t kLeafTextSize = 100;

using MatchTable = std::multimap<std::uint32_t, vlanMatch_t>;

bool is_any(const std::string& text) {
  return text == kAny;
}

bool conflict(const vlanMatch_t& added, const vlanMatch_t& known) {
  const bool same_vlan = added.vlan == known.vlan;
  const bool same_cos = added.cos == known.cos;
  if (same_vlan && same_cos) {
    return true;
  }
  if ((is_any(added.vlan) && is_any(added.cos)) || (is_any(known.vlan) && is_any(known.cos))) {
    return true;
  }
  if (same_cos && (is_any(known.vlan) || is_any(added.vlan))) {
    return true;
  }
  // "Any VLAN, one CoS" and "one VLAN, any CoS" do not conflict, although some frames match both.
  return same_vlan && (is_any(known.cos) || is_any(added.cos));
}

std::optional<std::string> leaf_text(const valid::VlanMapping& mapping, const char* path,
                                     const confd_value_t& value) {
  const confd_cs_node* const node = confd_cs_node_cd(nullptr, path, mapping.profile, mapping.key);
  if (node == nullptr) {
    return std::nullopt;
  }
  std::array<char, kLeafTextSize> text{};
  if (confd_val2str(node->info.type, &value, text.data(), static_cast<int>(text.size())) < 0) {
    return std::nullopt;
  }
  return text.data();
}

bool get_leaf(const valid::VlanMapping& mapping, const char* path, confd_value_t& value) {
  return maapi_get_elem(mapping.sock, mapping.thandle, &value, path, mapping.profile,
                        mapping.key) == CONFD_OK;
}

std::optional<vlanMatch_t> read_match(const valid::VlanMapping& mapping) {
  confd_value_t vlan_value;
  confd_value_t cos_value;
  if (!get_leaf(mapping, kOuterVlan, vlan_value) || !get_leaf(mapping, kOuterCos, cos_value)) {
    return std::nullopt;
  }
  const std::optional<std::string> vlan = leaf_text(mapping, kOuterVlan, vlan_value);
  const std::optional<std::string> cos = leaf_text(mapping, kOuterCos, cos_value);
  if (!vlan || !cos) {
    return std::nullopt;
  }
  return vlanMatch_t{*vlan, *cos};
}

std::string check_mapping(const valid::VlanMapping& mapping, MatchTable& table) {
  const std::optional<vlanMatch_t> match = read_match(mapping);
  if (!match) {
    valid::note_unreadable_mapping();
    return valid::kTransactionUnreadable;
  }
  const auto record = [&match, &table](std::uint32_t port) {
    return check_vlan_match(port, match->vlan, match->cos, table) == CONFD_OK;
  };
  switch (valid::check_ports(mapping, record)) {
    case valid::PortsResult::kAccepted:
      break;
    case valid::PortsResult::kRefused:
      return kSameMatch;
    case valid::PortsResult::kNone:
    case valid::PortsResult::kUnreadable:
      return valid::kTransactionUnreadable;
  }
  return {};
}

}  // namespace

std::int32_t validate_vlan_match(std::int32_t sock, confd_trans_ctx* tctx,
                                 confd_hkeypath_t* keypath, confd_value_t* /*newval*/) {
  const char* const profile = CONFD_GET_CBUFPTR(&keypath->v[2][0]);

  MatchTable table;
  const auto rule = [&table](const valid::VlanMapping& mapping) {
    return check_mapping(mapping, table);
  };
  return valid::check_vlan_mappings(sock, tctx, profile, rule);
}

std::int32_t check_vlan_match(std::uint32_t port, const std::string& vlan, const std::string& cos,
                              std::multimap<std::uint32_t, vlanMatch_t>& table) {
  const std::uint32_t key = valid::port_key(port);
  const vlanMatch_t added{vlan, cos};
  const auto [first, last] = table.equal_range(key);
  for (auto known = first; known != last; ++known) {
    if (conflict(added, known->second)) {
      return CONFD_ERR;
    }
  }
  table.emplace(key, added);
  return CONFD_OK;
}
