#include "standalone/load/card_load.h"

#include <algorithm>
#include <cstddef>
#include <unordered_map>
#include <utility>

#include "src/validation/gpon_bw_limit.h"
#include "src/validation/gpon_capabilities.h"
#include "standalone/input_error.h"
#include "standalone/nearest_name.h"
#include "standalone/store/path.h"
#include "standalone/store/transaction.h"

namespace tarnd {
namespace {

using store::Datastore;
using store::SchemaNode;
using Model = std::unordered_map<std::string, bandwidth_ctx>;

// The check that makes the plug-in load its model, whether it accepts or rejects.
constexpr const char* kCheckOfAllLinks = "ponlink_bw_check";
constexpr const char* kPlaceOfThatCheck = "/config/profile/gpon/line-profile";

constexpr const char* kLineProfiles = "line_prof_to_bandwidth";
constexpr const char* kChecksBandwidth = "get_do_bw_check";
constexpr const char* kOnusPerLink = "get_num_onus_per_ponlink";
constexpr const char* kMaxServicePorts = "_Z21get_max_service_portsv";  // has C++ linkage

// The plug-in looks up the ONUs of a link by slot and port, in this chassis.
constexpr std::string_view kCheckedChassis = "1";

constexpr const char* kTotalLimit = "total bandwidth";
constexpr const char* kFixedLimit = "fixed bandwidth";
constexpr const char* kNoLineProfile = "an ONU has no line profile";

template <typename Result>
Result ask(const Plugin& plugin, const char* function) {
  return reinterpret_cast<Result (*)()>(plugin.symbol(function))();
}

CardLimits limits_of(const Plugin& plugin) {
  CardLimits limits;
  limits.checks_bandwidth = ask<bool>(plugin, kChecksBandwidth);
  limits.capacity = {valid::kTotalCapacity, valid::kFixedCapacity};
  limits.onu_overhead = valid::kOverheadPerOnu;
  // The plug-in has 0 for what the card does not define.
  const auto onus_per_link = ask<std::uint32_t>(plugin, kOnusPerLink);
  if (onus_per_link != 0) limits.onus_per_link = onus_per_link;
  limits.dynamic_tconts = valid::allowed_dynamic_tconts(limits.checks_bandwidth);
  limits.static_tconts = valid::kStaticTconts;
  limits.service_ports = ask<std::uint32_t>(plugin, kMaxServicePorts);
  return limits;
}

std::vector<LineProfileLoad> line_profiles_of(const Model& model) {
  std::vector<LineProfileLoad> profiles;
  profiles.reserve(model.size());
  for (const auto& [name, sums] : model) {
    profiles.push_back({name, {sums.total, sums.fixed}, sums.dynamic_count, sums.static_count});
  }
  std::sort(profiles.begin(), profiles.end(),
            [](const auto& left, const auto& right) { return left.name < right.name; });
  return profiles;
}

// The leaf in a container of the entry, or null.
const lyd_node* leaf_of(const Datastore& datastore, const lyd_node* entry,
                        std::string_view container, std::string_view leaf) {
  const SchemaNode& inside = *store::schema_of(entry).child(container);
  const lyd_node* node = datastore.child(entry, inside);
  return node == nullptr ? nullptr : datastore.child(node, *inside.child(leaf));
}

/// Adds up the ONUs of links by the plug-in's model.
class Links {
 public:
  Links(const Datastore& datastore, const Model& model, const CardLimits& limits)
      : datastore_(datastore), model_(model), limits_(limits) {}

  LinkLoad load_of(const lyd_node* link) const {
    LinkLoad load;
    load.path = store::path_of(link);
    const auto onus = datastore_.entries(link, *store::schema_of(link).child("onu"));
    load.onus = static_cast<std::uint32_t>(onus.size());
    if (!is_checked(link)) return load;
    load.reserved.emplace();
    load.reserved->total = load.onus * limits_.onu_overhead;
    for (const lyd_node* onu : onus) add(onu, load);
    if (load.rejected.empty()) load.rejected = limit_exceeded(*load.reserved);
    return load;
  }

 private:
  [[nodiscard]] bool is_checked(const lyd_node* link) const {
    const SchemaNode& list = store::schema_of(link);
    const lyd_node* chassis = datastore_.child(link, *list.child("chassis-id"));
    return limits_.checks_bandwidth && list.name == "gpon" &&
           store::value_text(chassis) == kCheckedChassis;
  }

  void add(const lyd_node* onu, LinkLoad& load) const {
    const lyd_node* leaf = leaf_of(datastore_, onu, "profile-references", "line-profile");
    const std::string name(leaf == nullptr ? std::string_view() : store::value_text(leaf));
    const auto found = model_.find(name);
    if (found != model_.end()) {
      load.reserved->total += found->second.total;
      load.reserved->fixed += found->second.fixed;
    } else if (load.rejected.empty()) {
      load.rejected = name.empty() ? kNoLineProfile : "line profile '" + name + "' does not exist";
    }
  }

  [[nodiscard]] const char* limit_exceeded(const Bandwidth& reserved) const {
    if (reserved.total > limits_.capacity.total) return kTotalLimit;
    return reserved.fixed > limits_.capacity.fixed ? kFixedLimit : "";
  }

  const Datastore& datastore_;
  const Model& model_;
  const CardLimits& limits_;
};

// A change of ONUs in another chassis makes the plug-in check the link of chassis 1 with the same
// slot and port.
void reject_in_other_chassis(std::vector<LinkLoad>& links) {
  constexpr std::string_view kBegin = "/config/interface/gpon{";
  std::unordered_map<std::string, const LinkLoad*> checked;
  for (const LinkLoad& link : links) {
    if (link.reserved.has_value()) checked[link.path.substr(link.path.find(' '))] = &link;
  }
  for (LinkLoad& link : links) {
    if (link.reserved.has_value() || !link.path.starts_with(kBegin)) continue;
    const auto found = checked.find(link.path.substr(link.path.find(' ')));
    if (found == checked.end() || found->second->rejected.empty()) continue;
    link.rejected = found->second->path + ": " + found->second->rejected;
  }
}

std::vector<LinkLoad> links_of(const Datastore& datastore, const Model& model,
                               const CardLimits& limits) {
  std::vector<LinkLoad> loads;
  const SchemaNode& interface = *datastore.schema().root().child("interface");
  const lyd_node* container = datastore.child(datastore.root(), interface);
  if (container == nullptr) return loads;
  const Links links(datastore, model, limits);
  for (const char* kind : {"gpon", "xgspon"}) {
    for (const lyd_node* link : datastore.entries(container, *interface.child(kind))) {
      loads.push_back(links.load_of(link));
    }
  }
  reject_in_other_chassis(loads);
  return loads;
}

std::uint32_t service_ports_of(const Datastore& datastore) {
  const SchemaNode& list = *datastore.schema().root().child("service-port");
  const auto ports = datastore.entries(datastore.root(), list);
  const auto names_a_link = [&datastore](const lyd_node* port) {
    return leaf_of(datastore, port, "gpon", "id") != nullptr ||
           leaf_of(datastore, port, "xgspon", "id") != nullptr;
  };
  return static_cast<std::uint32_t>(std::count_if(ports.begin(), ports.end(), names_a_link));
}

// How often the step can be added to what is used, which is within the capacity; empty if always.
// A step of more than half of 32 bits subtracts.
std::optional<std::uint32_t> times(std::uint32_t step, std::uint32_t used, std::uint32_t capacity) {
  constexpr std::uint32_t kHalf = 1U << 31U;
  if (step == 0) return std::nullopt;
  return step < kHalf ? (capacity - used) / step : used / (0 - step);
}

}  // namespace

CardLoad card_load(Daemon& daemon, const Plugin& plugin, Datastore& datastore) {
  store::Transaction no_change(datastore);
  no_change.prepare();
  return card_load(daemon, plugin, no_change);
}

CardLoad card_load(Daemon& daemon, const Plugin& plugin, store::Transaction& transaction) {
  daemon.request(transaction, kCheckOfAllLinks, kPlaceOfThatCheck, std::nullopt, {});
  const Datastore& datastore = transaction.datastore();
  const auto& model = *static_cast<const Model*>(plugin.symbol(kLineProfiles));
  CardLoad load;
  load.limits = limits_of(plugin);
  load.line_profiles = line_profiles_of(model);
  load.links = links_of(datastore, model, load.limits);
  load.service_ports = service_ports_of(datastore);
  return load;
}

Fit fit(const CardLimits& limits, const LinkLoad& link, const LineProfileLoad& line_profile) {
  if (!link.rejected.empty()) return {0, link.rejected};
  if (!link.reserved.has_value()) return {};
  const auto total = times(line_profile.reserved.total + limits.onu_overhead, link.reserved->total,
                           limits.capacity.total);
  const auto fixed =
      times(line_profile.reserved.fixed, link.reserved->fixed, limits.capacity.fixed);
  if (!total.has_value() && !fixed.has_value()) return {};
  if (!total.has_value() || (fixed.has_value() && *fixed < *total)) return {fixed, kFixedLimit};
  return {total, kTotalLimit};
}

const LineProfileLoad& find_line_profile(const CardLoad& load, std::string_view name) {
  std::vector<std::string_view> known;
  known.reserve(load.line_profiles.size());
  for (const LineProfileLoad& profile : load.line_profiles) {
    if (profile.name == name) return profile;
    known.push_back(profile.name);
  }
  throw InputError("there is no line profile '" + std::string(name) + "'" +
                   did_you_mean(name, known));
}

}  // namespace tarnd
