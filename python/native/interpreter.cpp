#include "python/native/interpreter.h"

#include <pybind11/pybind11.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace gponval::python {
namespace {

constexpr std::chrono::milliseconds kBetweenLooks{1};
constexpr int kMostLooks = 10000;

std::atomic<int> returning{0};
// The only thread that still gets Python's lock, if there is one.
std::atomic<std::thread::id> last_thread{std::thread::id()};

bool is_kept_out() {
  const std::thread::id last = last_thread;
  return last != std::thread::id() && last != std::this_thread::get_id();
}

[[noreturn]] void stay_for_good() {
  for (;;) pause();
}

}  // namespace

void keep_other_threads_out() {
  last_thread = std::this_thread::get_id();
  for (int look = 0; returning != 0 && look < kMostLooks; ++look) {
    std::this_thread::sleep_for(kBetweenLooks);
  }
}

// Counted before it looks, so that keep_other_threads_out() waits for it unless it stays.
Return::Return() {
  ++returning;
  if (!is_kept_out()) return;
  --returning;
  stay_for_good();
}

Return::~Return() {
  --returning;
}

CallOfPython::~CallOfPython() {
  if (!is_completed_) stay_for_good();
}

void handle_signals() {
  const Locked locked;
  CallOfPython call;
  if (call.completed(PyErr_CheckSignals()) != 0) throw pybind11::error_already_set();
}

}  // namespace gponval::python
