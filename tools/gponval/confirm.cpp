#include "tools/gponval/confirm.h"

#include <unistd.h>

#include <iostream>
#include <string>

#include "standalone/report/verdict_text.h"

namespace gponval {
namespace {

constexpr const char* kQuestion = "Proceed? [yes,no] ";

bool at_terminal() {
  return isatty(STDIN_FILENO) != 0 && isatty(STDERR_FILENO) != 0;
}

// The question goes to standard error, so that standard output has the report alone.
bool ask(const std::vector<tarnd::Answer>& warnings) {
  for (const tarnd::Answer& warning : warnings)
    tarnd::report::print_answer(std::cerr, warning, false);
  std::cerr << kQuestion << std::flush;
  std::string reply;
  if (!std::getline(std::cin, reply)) {
    std::cerr << '\n';
    return false;
  }
  return reply == "yes" || reply == "y";
}

}  // namespace

std::function<bool(const std::vector<tarnd::Answer>&)> confirmation(const RunOptions& options) {
  const std::string how = options.confirm.value_or(at_terminal() ? "ask" : "no");
  if (how == "ask") return ask;
  return [confirmed = how == "yes"](const std::vector<tarnd::Answer>&) { return confirmed; };
}

}  // namespace gponval
