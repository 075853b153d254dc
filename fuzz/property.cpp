#include "fuzz/property.h"

#include <cstdio>
#include <cstdlib>

namespace tarnd::fuzz {

void require(bool holds, const std::string& property) {
  if (holds) return;
  std::fprintf(stderr, "broken: %s\n", property.c_str());
  std::abort();
}

}  // namespace tarnd::fuzz
