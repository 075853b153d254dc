#include "fuzz/small_card.h"

#include <fstream>
#include <iterator>

#include "fuzz/property.h"

namespace tarnd::fuzz {
namespace {

std::string read_card() {
  std::ifstream in(FUZZ_CARD);
  require(in.good(), "fuzz/card.xml can be read");
  return {std::istreambuf_iterator<char>(in), {}};
}

}  // namespace

const std::string& small_card() {
  static const std::string card = read_card();
  return card;
}

}  // namespace tarnd::fuzz
