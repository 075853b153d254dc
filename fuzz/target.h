#pragma once

#include <cstddef>
#include <cstdint>

/// A target's one function, by the name under which libFuzzer calls it: runs the input, whatever it
/// is, and gives 0. Ends the process where a property is broken.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
