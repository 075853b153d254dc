// Runs one request many times, for a profiler.
//
//   one_request REQUEST CARDS RUNS

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "bench/full_card.h"
#include "bench/requests.h"

int main(int argc, char** argv) {
  const auto& all = bench::requests();
  const auto request = std::find_if(all.begin(), all.end(), [&](const bench::Request& one) {
    return argc == 4 && one.name == argv[1];
  });
  if (request == all.end()) {
    std::fprintf(stderr, "usage: %s REQUEST CARDS RUNS\n", argv[0]);
    return 2;
  }
  const auto size = bench::full_cards(static_cast<std::uint32_t>(std::atoi(argv[2])));
  bench::Card card(bench::card_text(size));
  card.apply(bench::preparation());
  const bench::Edit edit = request->edit(size, 1);
  const double time =
      bench::fastest(std::atoi(argv[3]), [&] { return card.answers(edit, {request->name}); });
  std::printf("%.3f ms\n", time);
}
