#include "bench/figures.h"

#include <algorithm>
#include <cstdio>
#include <stdexcept>

#include "bench/bare_loop.h"
#include "bench/full_card.h"
#include "bench/requests.h"

namespace bench {
namespace {

constexpr int kRuns = 21;
constexpr int kRunsOfSmall = 41;
constexpr int kRounds = 4;
constexpr int kRunsOfTrees = 5;

const Request& request_named(const std::string& name) {
  return *std::find_if(requests().begin(), requests().end(),
                       [&](const Request& request) { return request.name == name; });
}

std::string mapping_of(const std::string& port) {
  return "<vlan-mapping><name>eth" + port + "</name><uni><ethernet>" + port +
         "</ethernet></uni></vlan-mapping>";
}

// A new service profile with a mapping for each of four ports.
Edit service_profile() {
  std::string mappings;
  for (int port = 1; port <= 4; ++port) mappings += mapping_of(std::to_string(port));
  const auto profile = [](const std::string& attribute, const std::string& content) {
    return change("<profile><gpon><service-profile" + attribute + "><name>added</name>" + content +
                  "</service-profile></gpon></profile>");
  };
  return {profile("", mappings), profile(" nc:operation=\"delete\"", "")};
}

lyd_node* duplicate(const lyd_node* tree) {
  lyd_node* copy = nullptr;
  if (lyd_dup_siblings(tree, nullptr, LYD_DUP_RECURSIVE | LYD_DUP_WITH_FLAGS, &copy) !=
      LY_SUCCESS) {
    throw std::runtime_error("the tree cannot be copied");
  }
  return copy;
}

void measure_libyang(const std::string& text, YangCard& plain, Figures& figures) {
  figures.parse_and_validate = fastest(kRunsOfTrees, [&] {
    lyd_node* tree = nullptr;
    const double time = milliseconds([&] {
      lyd_parse_data_mem(plain.context(), text.c_str(), LYD_XML, LYD_PARSE_STRICT,
                         LYD_VALIDATE_PRESENT, &tree);
    });
    lyd_free_all(tree);
    return time;
  });
  figures.validate = fastest(kRuns, [&] { return milliseconds([&] { plain.validate(); }); });
  lyd_node* copy = nullptr;
  figures.copy = fastest(kRunsOfTrees, [&] {
    lyd_free_all(copy);
    return milliseconds([&] { copy = duplicate(plain.tree()); });
  });
  // The trees differ in one entry, as after the commit of a service port.
  lyd_free_tree(lyd_child(copy)->prev);
  figures.diff = fastest(kRunsOfTrees, [&] {
    lyd_node* diff = nullptr;
    const double time = milliseconds([&] { lyd_diff_siblings(copy, plain.tree(), 0, &diff); });
    lyd_free_all(diff);
    return time;
  });
  lyd_free_all(copy);
}

// With links and service ports, a rule of service profiles would be too small to measure.
std::string service_profiles_alone(gponval::CardSize size) {
  size.links = 0;
  size.service_ports = 0;
  size.bandwidth_profiles = 0;
  size.line_profiles = 0;
  size.rg_profiles = 0;
  return card_text(size);
}

void measure_forms(const std::string& text, const gponval::CardSize& size, bool slow_forms,
                   Figures& figures) {
  const std::string profiles = service_profiles_alone(size);
  for (const Form& form : yang_forms()) {
    std::optional<double>& figure = figures.forms.emplace_back();
    if (form.slow && !slow_forms) continue;
    figure = milliseconds_above(form.modules, form.of_profiles ? profiles : text);
  }
  figures.list_forms = milliseconds_above(best_modules(list_rules()), text);
  figures.all_forms = milliseconds_above(best_modules(rules()), text);
}

void measure_commits(const std::string& text, const gponval::CardSize& size, Figures& figures) {
  figures.load = fastest(kRunsOfTrees, [&] { return Card(text).load_milliseconds(); });
  Card card(text);
  card.apply(preparation());

  const Edit leaf = request_named("fec_confirmation_warning").edit(size, 1);
  figures.leaf_steps = fastest(kRunsOfSmall, [&] { return card.steps(leaf); });
  figures.leaf_commit = fastest(kRunsOfSmall, [&] { return card.commit(leaf); });
  const Edit onu_leaf = request_named("interface_gpon_validation").edit(size, 1);
  figures.onu_leaf_commit = fastest(kRuns, [&] { return card.commit(onu_leaf); });
  const Edit port = request_named("service_port_global_validation").edit(size, 1);
  figures.port_steps = fastest(kRunsOfSmall, [&] { return card.steps(port); });
  figures.port_commit = fastest(kRuns, [&] { return card.commit(port); });

  std::vector<Edit> edits{service_profile()};
  for (const Rule& rule : rules()) {
    const Edit edit = request_named(rule.request).edit(size, 1);
    figures.rules[rule.name] = fastest(kRuns, [&] { return card.commit(edit, {rule.request}); });
    const bool known = std::any_of(edits.begin(), edits.end(),
                                   [&](const Edit& other) { return other.change == edit.change; });
    // A committed service profile may not be changed, so this creates one.
    if (!known && rule.request != "vlan_limit_check") edits.push_back(edit);
  }
  const Edit all = joined(edits);
  figures.all_rules_commit = fastest(kRuns, [&] { return card.commit(all); });

  // In rounds, so that a disturbance affects one of them only.
  for (int round = 0; round < kRounds; ++round) {
    for (const Request& request : requests()) {
      const Edit edit = request.edit(size, 1);
      const double time = fastest(kRuns, [&] { return card.answers(edit, {request.name}); });
      double& least = figures.requests.try_emplace(request.name, time).first->second;
      least = std::min(least, time);
    }
  }
  figures.whole_list_check = figures.requests.at("service_port_global_validation");
}

const lyd_node* child(const lyd_node* parent, std::string_view name) {
  const lyd_node* node = lyd_child(parent);
  while (node != nullptr && node->schema->name != name) node = node->next;
  return node;
}

std::uint32_t number(const lyd_node* leaf) {
  return static_cast<std::uint32_t>(std::stoul(lyd_get_value(leaf)));
}

// The values of the card that the check of all service ports reads.
std::vector<tarnd::Port> ports_of(const YangCard& card) {
  std::vector<tarnd::Port> ports;
  for (const lyd_node* entry = lyd_child(card.tree()); entry != nullptr; entry = entry->next) {
    if (std::string_view(entry->schema->name) != "service-port") continue;
    const lyd_node* link = child(entry, "gpon");
    const lyd_node* onu = child(link, "onu");
    tarnd::Port& port = ports.emplace_back();
    port.interface_name = lyd_get_value(child(link, "id"));
    port.onu = number(child(onu, "id"));
    port.gem = number(child(child(onu, "gem"), "gem-id"));
    port.vlan =
        static_cast<std::int32_t>(number(child(child(child(entry, "match"), "vlan"), "vlan-id")));
  }
  return ports;
}

}  // namespace

std::vector<Rule> list_rules() {
  const std::vector<Rule> all = rules();
  return {all.begin(), all.begin() + 3};
}

Figures measure(int cards, bool slow_forms) {
  const gponval::CardSize size = full_cards(static_cast<std::uint32_t>(cards));
  const std::string text = card_text(size);
  Figures figures;
  figures.cards = cards;
  measure_commits(text, size, figures);
  YangCard plain({}, text);
  plain.validate();
  measure_libyang(text, plain, figures);
  const std::vector<tarnd::Port> ports = ports_of(plain);
  figures.bare_loop = fastest(kRunsOfSmall, [&] {
    return milliseconds([&] {
      if (bare_loop(ports) != ports.size()) throw std::runtime_error("a claim was taken twice");
    });
  });
  measure_forms(text, size, slow_forms, figures);
  return figures;
}

}  // namespace bench
