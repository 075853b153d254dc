# Headers that are compiled once for a target, in presets that are often built from nothing. Builds without
# them notice what a source forgets to include: lint, fuzz and those for other processors. A compiler cache
# saves more, and does not work well with precompiled headers.
option(GPON_VALID_PRECOMPILE "Precompile headers, unless there is a compiler cache" OFF)

set(standard_headers <algorithm> <array> <chrono> <filesystem> <functional> <iostream> <map> <memory>
    <optional> <set> <string> <string_view> <unordered_map> <utility> <variant> <vector>)
# Each test includes one of these or both, itself or with its fixture.
set(test_headers <gtest/gtest.h> <gmock/gmock.h>)

function(precompile target)
  if(GPON_VALID_PRECOMPILE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    target_precompile_headers(${target} PRIVATE ${ARGN})
  endif()
endfunction()
