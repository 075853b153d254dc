// Part of the plug-in that scripts/coverage uses. A process that a failed assertion ends writes no
// coverage, so lines that only the death tests reach would count as unreached. The plug-in itself
// must write: every shared library, and every test program with the plug-in's objects in it, has
// its own counters. If both are loaded, one handler calls the other.

#include <csignal>

extern "C" void __gcov_dump();

namespace {

using Handler = void (*)(int);

void write_coverage(int signal);

const Handler previous_handler = std::signal(SIGABRT, write_coverage);

void write_coverage(int signal) {
  __gcov_dump();
  if (previous_handler != SIG_DFL && previous_handler != SIG_IGN && previous_handler != SIG_ERR) {
    previous_handler(signal);
  }
}

}  // namespace
