// How much stack and heap each request needs on a full card, and how many platform calls it makes.
// Stack and heap include those of the stand-alone platform, from the plug-in's entry point on.
//
//   request_footprint            prints a table in Markdown; fails if a request is above a bar
//   request_footprint --check    prints only the requests above a bar

#include <malloc.h>
#include <sys/mman.h>
#include <ucontext.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <numeric>
#include <string>

#include "bench/full_card.h"
#include "bench/requests.h"
#include "gpon_card_valid.h"

namespace {

constexpr std::size_t kKiB = 1024;
// The threads of a daemon have small stacks and share a small memory.
constexpr std::size_t kMostStack = 64 * kKiB;
constexpr std::size_t kMostHeap = 2 * kKiB * kKiB;

// ---- The heap

struct Heap {
  std::size_t used = 0;
  std::size_t peak = 0;
};

Heap heap;

void* noted(void* memory) {
  if (memory != nullptr) {
    heap.used += malloc_usable_size(memory);
    heap.peak = std::max(heap.peak, heap.used);
  }
  return memory;
}

void forget(void* memory) {
  if (memory != nullptr) heap.used -= malloc_usable_size(memory);
}

}  // namespace

// The C library's own functions, under the names that it calls them by itself.
// NOLINTBEGIN(readability-inconsistent-declaration-parameter-name)
extern "C" {
void* __libc_malloc(std::size_t size);                           // NOLINT
void* __libc_calloc(std::size_t count, std::size_t size);        // NOLINT
void* __libc_realloc(void* memory, std::size_t size);            // NOLINT
void* __libc_memalign(std::size_t alignment, std::size_t size);  // NOLINT
void __libc_free(void* memory);                                  // NOLINT

void* malloc(std::size_t size) {
  return noted(__libc_malloc(size));
}

void* calloc(std::size_t count, std::size_t size) {
  return noted(__libc_calloc(count, size));
}

void* realloc(void* memory, std::size_t size) {
  const std::size_t before = memory == nullptr ? 0 : malloc_usable_size(memory);
  void* const moved = __libc_realloc(memory, size);
  if (moved != nullptr || size == 0) heap.used -= before;
  return noted(moved);
}

void* aligned_alloc(std::size_t alignment, std::size_t size) {
  return noted(__libc_memalign(alignment, size));
}

void free(void* memory) {
  forget(memory);
  __libc_free(memory);
}
}
// NOLINTEND(readability-inconsistent-declaration-parameter-name)

namespace {

// ---- The stack

struct Call {
  confd_trans_ctx* tctx = nullptr;
  confd_hkeypath_t* keypath = nullptr;
  confd_value_t* newval = nullptr;
  int result = 0;
};

constexpr std::size_t kStackSize = 4 * kKiB * kKiB;
constexpr int kPaint = 0xA5;

/// Runs a call on a stack of its own, to see how deep it gets.
class PaintedStack {
 public:
  PaintedStack()
      : memory_(static_cast<unsigned char*>(mmap(nullptr, kStackSize, PROT_READ | PROT_WRITE,
                                                 MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))) {
    if (memory_ == MAP_FAILED) std::abort();
  }
  PaintedStack(const PaintedStack&) = delete;
  PaintedStack& operator=(const PaintedStack&) = delete;
  ~PaintedStack() { munmap(memory_, kStackSize); }

  /// Returns the number of bytes that were used.
  std::size_t run(void (*function)()) {
    std::memset(memory_, kPaint, kStackSize);
    ucontext_t here{};
    ucontext_t there{};
    // A thread would have data of its own on the stack.
    getcontext(&there);  // cppcheck-suppress getcontextCalled
    there.uc_stack.ss_sp = memory_;
    there.uc_stack.ss_size = kStackSize;
    there.uc_link = &here;
    makecontext(&there, function, 0);  // cppcheck-suppress makecontextCalled
    swapcontext(&here, &there);        // cppcheck-suppress swapcontextCalled
    const unsigned char* const end = memory_ + kStackSize;
    return static_cast<std::size_t>(
        end - std::find_if(static_cast<const unsigned char*>(memory_), end,
                           [](unsigned char byte) { return byte != kPaint; }));
  }

 private:
  unsigned char* memory_;
};

// ---- A request

struct Footprint {
  std::size_t stack = 0;
  std::size_t heap = 0;
};

Call call;
Footprint most;

void run_call() {
  call.result = validate(call.tctx, call.keypath, call.newval);
}

/// The plug-in's entry point as the daemon calls it.
int measured_validate(confd_trans_ctx* tctx, confd_hkeypath_t* keypath, confd_value_t* newval) {
  static PaintedStack stack;
  call = {tctx, keypath, newval};
  const std::size_t before = heap.used;
  heap.peak = before;
  const std::size_t used = stack.run(&run_call);
  most.stack = std::max(most.stack, used);
  most.heap = std::max(most.heap, heap.peak - before);
  return call.result;
}

std::uint64_t sum(const tarnd::CallCounts& counts) {
  return std::accumulate(counts.begin(), counts.end(), std::uint64_t{0});
}

std::size_t in_kib(std::size_t bytes) {
  return (bytes + kKiB - 1) / kKiB;
}

}  // namespace

int main(int argc, char** argv) {
  const bool check_only = argc == 2 && std::strcmp(argv[1], "--check") == 0;
  if (argc > 1 && !check_only) {
    std::fprintf(stderr, "usage: %s [--check]\n", argv[0]);
    return 2;
  }
  const auto size = bench::full_cards(1);
  bench::Card card(bench::card_text(size),
                   {&lib_init, &get_validation_point, &measured_validate, &lib_finish});
  card.apply(bench::preparation());
  if (!check_only) {
    std::printf("| request | stack, KiB | heap, KiB | calls |\n|---|---|---|---|\n");
  }
  int wrong = 0;
  for (const bench::Request& request : bench::requests()) {
    const bench::Edit edit = request.edit(size, 1);
    card.answers(edit, {request.name});  // what is allocated once is not the request's
    most = {};
    const std::uint64_t calls = sum(card.calls(edit, request.name));
    if (!check_only) {
      std::printf("| `%s` | %zu | %zu | %llu |\n", request.name.c_str(), in_kib(most.stack),
                  in_kib(most.heap), static_cast<unsigned long long>(calls));
    }
    if (most.stack > kMostStack || most.heap > kMostHeap) {
      std::printf("%s needs %zu KiB of stack and %zu KiB of heap\n", request.name.c_str(),
                  in_kib(most.stack), in_kib(most.heap));
      ++wrong;
    }
  }
  return wrong == 0 ? 0 : 1;
}
