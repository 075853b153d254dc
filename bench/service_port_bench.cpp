// The check of all service ports, for one that is added to a full card.

#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "bench/bare_loop.h"
#include "standalone/card/card_file.h"
#include "standalone/confd/validation_session.h"
#include "standalone/platform_calls.h"
#include "valid_service_port.h"

// Included last: its macros are plain words that other headers use.
#include "base.h"

namespace tarnd {
namespace {

std::string leaf(std::string_view name, std::string_view text) {
  return "<" + std::string(name) + ">" + std::string(text) + "</" + std::string(name) + ">";
}

std::string service_port(int id) {
  const Port port = port_of(id);
  const std::string gem = leaf("gem", leaf("gem-id", std::to_string(port.gem)));
  const std::string onu = leaf("onu", leaf("id", std::to_string(port.onu)) + gem);
  return leaf("service-port",
              leaf("id", std::to_string(id)) + leaf("gpon", leaf("id", port.interface_name) + onu) +
                  leaf("match", leaf("vlan", leaf("vlan-id", std::to_string(port.vlan)))));
}

std::string service_ports(int count) {
  std::string ports;
  for (int id = 0; id < count; ++id) ports += service_port(id);
  return ports;
}

std::string config(const std::string& content) {
  return R"(<config xmlns="urn:tarnd:base">)" + content + "</config>";
}

const store::Schema& model() {
  static const store::Schema schema(TARND_MODEL_DIR);
  return schema;
}

CardDescription card_for(int ports) {
  CardDescription card = CardDescription::standard();
  card.max_service_ports = static_cast<std::uint32_t>(ports);
  return card;
}

confd_hkeypath_t service_port_list() {
  confd_hkeypath_t path{};
  path.len = 2;
  CONFD_SET_XMLTAG(&path.v[0][0], base_service_port, base__ns);
  CONFD_SET_XMLTAG(&path.v[1][0], base_config, base__ns);
  return path;
}

std::uint64_t count_of(const CallCounts& before, PlatformCall call) {
  const auto index = static_cast<std::size_t>(call);
  return platform_call_counts().at(index) - before.at(index);
}

/// Platform calls of one run: all, those that read objects, and those that free a name.
void count_calls(benchmark::State& state, const CallCounts& before) {
  std::uint64_t all = 0;
  for (std::size_t i = 0; i < before.size(); ++i) {
    all += count_of(before, static_cast<PlatformCall>(i));
  }
  const std::uint64_t frees = count_of(before, PlatformCall::confd_free_value);
  const auto per_run = [](std::uint64_t count) {
    return benchmark::Counter(static_cast<double>(count), benchmark::Counter::kAvgIterations);
  };
  state.counters["object_reads"] = per_run(count_of(before, PlatformCall::maapi_get_objects));
  state.counters["names_freed"] = per_run(frees);
  state.counters["other_calls"] =
      per_run(all - frees - count_of(before, PlatformCall::maapi_get_objects));
}

void global_validation(benchmark::State& state) {
  const int ports = static_cast<int>(state.range(0));
  insert_card(card_for(ports));
  store::Datastore datastore(model());
  datastore.load(config(service_ports(ports - 1)), store::Format::kXml);
  store::Transaction transaction(datastore);
  transaction.edit(config(service_port(ports - 1)), store::Format::kXml);
  transaction.prepare();
  ValidationSession session(transaction);
  confd_hkeypath_t keypath = service_port_list();

  const CallCounts before = platform_call_counts();
  for ([[maybe_unused]] auto _ : state) {
    if (service_port_global_validation(session.maapi_socket(), session.context(), &keypath,
                                       nullptr) != CONFD_OK) {
      state.SkipWithError("the commit was rejected");
      break;
    }
  }
  count_calls(state, before);
  state.SetItemsProcessed(state.iterations() * ports);
}

void bare_loop_over_array(benchmark::State& state) {
  std::vector<Port> ports;
  ports.reserve(static_cast<std::size_t>(state.range(0)));
  for (int id = 0; id < state.range(0); ++id) ports.push_back(port_of(id));
  for ([[maybe_unused]] auto _ : state) {
    if (bare_loop(ports) != ports.size()) state.SkipWithError("a claim was taken twice");
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

BENCHMARK(global_validation)->Arg(4096)->Arg(16384)->Unit(benchmark::kMillisecond);
BENCHMARK(bare_loop_over_array)->Arg(4096)->Arg(16384)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace tarnd
