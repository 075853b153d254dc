// Answers each request twice and prints their names, for bench/instructions, which counts the
// instructions with callgrind.
//
//   request_instructions CARDS

#include <cstdio>
#include <cstdlib>

#include "bench/full_card.h"
#include "bench/requests.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s CARDS\n", argv[0]);
    return 2;
  }
  const auto size = bench::full_cards(static_cast<std::uint32_t>(std::atoi(argv[1])));
  bench::Card card(bench::card_text(size));
  card.apply(bench::preparation());
  for (const bench::Request& request : bench::requests()) {
    const bench::Edit edit = request.edit(size, 1);
    card.answers(edit, {request.name});  // what is made once, such as an index, is not the answer's
    card.answers(edit, {request.name});
    std::puts(request.name.c_str());
  }
}
