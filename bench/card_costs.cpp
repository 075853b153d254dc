// The cost of a commit on one and on four full cards, in time and memory: one leaf, one service
// port, a thousand of them, a whole new card; compared with libyang having the same data once. Each
// is measured in its own process, so that the peaks are separate. Times are processor times.

#include <cstdio>
#include <string>

#include "bench/full_card.h"
#include "bench/requests.h"

namespace {

using bench::Card;
using bench::Edit;
using bench::fastest;
using bench::in_own_process;
using bench::peak_megabytes;

void print(const char* what, double figure) {
  std::printf("  %-56s %10.3f\n", what, figure);
}

void measure_libyang(const std::string& text) {
  const tarnd::store::Schema schema(TARND_MODEL_DIR);
  lyd_node* tree = nullptr;
  print("libyang's own parse and validation, ms", bench::milliseconds([&] {
          lyd_parse_data_mem(schema.context(), text.c_str(), LYD_XML, LYD_PARSE_STRICT,
                             LYD_VALIDATE_PRESENT, &tree);
        }));
  print("libyang holding the data once, peak MB", peak_megabytes());
  lyd_free_all(tree);
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

void measure_edit(const std::string& text, const char* what, const Edit& edit, int runs) {
  Card card(text);
  const double before = peak_megabytes();
  std::printf("  %s\n", what);
  print("  the first commit, cold and without any index, ms", card.commit(edit));
  print("  own steps, ms", fastest(runs, [&] { return card.steps(edit); }));
  print("  edit to committed, every request answered, ms",
        fastest(runs, [&] { return card.commit(edit); }));
  print("  peak memory above loading, MB", peak_megabytes() - before);
}

// A whole card committed to an empty one, as a change or as the new configuration.
void measure_new_card(const std::string& text, bool as_change) {
  Card card(bench::change(""));
  const double before = peak_megabytes();
  std::printf("  a whole new card, %s\n", as_change ? "as a change" : "as the candidate");
  print("  edit to committed, every request answered, ms",
        as_change ? card.merge_for_good(text) : card.replace_for_good(text));
  print("  peak memory above an empty card, MB", peak_megabytes() - before);
}

}  // namespace

int main() {
  constexpr int kThousand = 1000;
  for (const std::uint32_t cards : {1U, 4U}) {
    std::printf("%u full card%s\n", cards, cards == 1 ? "" : "s");
    const std::string text = bench::card_text(bench::full_cards(cards));
    in_own_process([&] { measure_libyang(text); });
    in_own_process([&] { measure_loading(text); });
    in_own_process([&] { measure_edit(text, "one leaf: FEC of a link", one_leaf(), 101); });
    in_own_process([&] {
      const Edit port{bench::added_ports(1), bench::added_ports(1, "delete")};
      measure_edit(text, "one service port", port, 51);
    });
    in_own_process([&] {
      const Edit ports{bench::added_ports(kThousand), bench::added_ports(kThousand, "delete")};
      measure_edit(text, "1,000 service ports", ports, 11);
    });
    for (const bool as_change : {false, true}) {
      in_own_process([&] { measure_new_card(text, as_change); });
    }
  }
}
