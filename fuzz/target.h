#pragma once

#include <cstddef>
#include <cstdint>

/// A target's one function, with the name under which libFuzzer calls it: runs any input and
/// returns 0. Ends the process if a property is broken.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
