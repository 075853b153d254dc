#pragma once

#include <malloc.h>

namespace tarnd {

/// For a process that makes commits: what a validation frees is the memory of the next one. The C
/// library would return it to the kernel each time, and the next would wait for the kernel to clear
/// it.
inline void keep_freed_memory() {
  constexpr int kMegabyte = 1 << 20;
  mallopt(M_TRIM_THRESHOLD, 16 * kMegabyte);
  mallopt(M_MMAP_THRESHOLD, kMegabyte);
}

}  // namespace tarnd
