#include "tools/gponval/terminal.h"

#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <string_view>

namespace gponval {

bool has_colours(const std::ostream& out) {
  const char* terminal = std::getenv("TERM");
  const bool can = terminal != nullptr && std::string_view(terminal) != "dumb";
  return can && std::getenv("NO_COLOR") == nullptr &&
         isatty(&out == &std::cout ? STDOUT_FILENO : STDERR_FILENO) != 0;
}

}  // namespace gponval
