// The cost of a commit on one and on four full cards, in time and memory: one leaf, one service
// port, a thousand of them, a whole new card; compared with libyang having the same data once. Each
// is measured in its own process, so that the peaks are separate. Times are processor times. Prints
// each bar with its figure.

#include <sys/mman.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <limits>
#include <new>
#include <stdexcept>
#include <string>

#include "bench/full_card.h"
#include "bench/requests.h"
#include "standalone/kept_memory.h"

namespace {

using bench::Card;
using bench::Edit;
using bench::fastest;
using bench::in_own_process;
using bench::peak_megabytes;

/// What has a bar, of the fastest process.
struct Costs {
  double libyang = std::numeric_limits<double>::max();
  double thousand_ports = std::numeric_limits<double>::max();
  double candidate = std::numeric_limits<double>::max();
  double candidate_peak = 0;
};

/// The bars for so many cards.
struct Bars {
  std::uint32_t cards;
  double candidate;
  double candidate_peak;
};

constexpr std::array kBars{Bars{1, 1.3, 18}, Bars{4, 2.2, 65}};
constexpr double kThousandPorts = 5;

// In memory that the processes share.
Costs& shared_costs() {
  constexpr int kAccess = PROT_READ | PROT_WRITE;
  // cppcheck-suppress invalidFunctionArg ; this memory has no descriptor
  void* memory = mmap(nullptr, sizeof(Costs), kAccess, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) throw std::runtime_error("no memory to share");
  return *new (memory) Costs;
}

double print(const char* what, double figure) {
  std::printf("  %-56s %10.3f\n", what, figure);
  return figure;
}

void print_bar(const char* what, double figure, double most) {
  std::printf("  %-14s %-42s %9.2f  at most %g\n", figure <= most ? "holds" : "does not hold", what,
              figure, most);
}

void print_bars(const Costs& costs, const Bars& bars) {
  if (bars.cards == 1) {
    print_bar("own steps of 1,000 service ports, ms", costs.thousand_ports, kThousandPorts);
  }
  print_bar("a whole new candidate / libyang's reading", costs.candidate / costs.libyang,
            bars.candidate);
  print_bar("its peak memory above an empty card, MB", costs.candidate_peak, bars.candidate_peak);
}

double measure_libyang(const std::string& text) {
  const tarnd::store::Schema schema(TARND_MODEL_DIR);
  lyd_node* tree = nullptr;
  const double time = bench::milliseconds([&] {
    lyd_parse_data_mem(schema.context(), text.c_str(), LYD_XML, LYD_PARSE_STRICT,
                       LYD_VALIDATE_PRESENT, &tree);
  });
  print("libyang's own parse and validation, ms", time);
  print("libyang holding the data once, peak MB", peak_megabytes());
  lyd_free_all(tree);
  return time;
}

void measure_loading(const std::string& text) {
  const Card card(text);
  print("loading, ms", card.load_milliseconds());
  print("loaded, peak MB", peak_megabytes());
}

Edit one_leaf() {
  for (const bench::Request& request : bench::requests()) {
    if (request.name == "fec_confirmation_warning") return request.edit({}, 1);
  }
  return {};
}

// Returns the time of the own steps.
double measure_edit(const std::string& text, const char* what, const Edit& edit, int runs) {
  Card card(text);
  const double before = peak_megabytes();
  std::printf("  %s\n", what);
  print("  the first commit, cold and without any index, ms", card.commit(edit));
  const double steps = fastest(runs, [&] { return card.steps(edit); });
  print("  own steps, ms", steps);
  print("  edit to committed, every request answered, ms",
        fastest(runs, [&] { return card.commit(edit); }));
  print("  peak memory above loading, MB", peak_megabytes() - before);
  return steps;
}

// A whole card committed to an empty one, as the new configuration or as a change.

double measure_candidate(const std::string& text, Costs& costs) {
  Card card(bench::change(""));
  const double before = peak_megabytes();
  std::puts("  a whole new card, as the candidate");
  const double time =
      print("  edit to committed, every request answered, ms", card.replace_for_good(text));
  costs.candidate_peak = print("  peak memory above an empty card, MB", peak_megabytes() - before);
  return time;
}

void measure_new_card_as_change(const std::string& text) {
  Card card(bench::change(""));
  const double before = peak_megabytes();
  std::puts("  a whole new card, as a change");
  print("  edit to committed, every request answered, ms", card.merge_for_good(text));
  print("  peak memory above an empty card, MB", peak_megabytes() - before);
}

// What a process can do only once is done in several.
void fastest_process(double& shared, const std::function<double()>& once) {
  in_own_process([&] { shared = std::min(shared, once()); });
}

// In rounds, so that a disturbance affects one of them only.
void measure(const std::string& text, Costs& costs) {
  constexpr int kRounds = 5;
  constexpr int kThousand = 1000;
  const Edit port{bench::added_ports(1), bench::added_ports(1, "delete")};
  const Edit ports{bench::added_ports(kThousand), bench::added_ports(kThousand, "delete")};
  costs = Costs();
  for (int round = 0; round < kRounds; ++round) {
    fastest_process(costs.libyang, [&] { return measure_libyang(text); });
    in_own_process([&] { measure_loading(text); });
    fastest_process(costs.candidate, [&] { return measure_candidate(text, costs); });
    fastest_process(costs.thousand_ports,
                    [&] { return measure_edit(text, "1,000 service ports", ports, 11); });
  }
  in_own_process([&] { measure_edit(text, "one leaf: FEC of a link", one_leaf(), 101); });
  in_own_process([&] { measure_edit(text, "one service port", port, 51); });
  in_own_process([&] { measure_new_card_as_change(text); });
}

}  // namespace

int main() {
  tarnd::keep_freed_memory();  // as gponval does
  Costs& costs = shared_costs();
  for (const Bars& bars : kBars) {
    std::printf("%u full card%s\n", bars.cards, bars.cards == 1 ? "" : "s");
    measure(bench::card_text(bench::full_cards(bars.cards)), costs);
    print_bars(costs, bars);
  }
}
