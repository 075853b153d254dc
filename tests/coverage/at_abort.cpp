// Part of the plug-in in the coverage build only. A process that a failed assertion ends writes no
// coverage, so what only the death tests reach would count as unreached. It is the plug-in that has
// to write: every shared library keeps its own counters.

#include <csignal>

extern "C" void __gcov_dump();

namespace {

void write_coverage(int /*signal*/) {
  __gcov_dump();
}

[[maybe_unused]] const auto previous_handler = std::signal(SIGABRT, write_coverage);

}  // namespace
