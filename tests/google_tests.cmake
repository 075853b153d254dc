include(GoogleTest)

option(GPON_VALID_PROCESS_PER_TEST "Run each test in a process of its own" ON)

# google_tests(PROGRAM [LABELS label] [ENVIRONMENT variable] [NOT_EMULATED pattern...])
# Adds the tests of a program, each with a process of its own. Under the sanitizers the start of a process
# takes longer than most tests, and in an emulator a second: there all tests of a program share one, except
# those that NOT_EMULATED names. They look at their whole process, so they have one each, and none in an
# emulator.
function(google_tests program)
  cmake_parse_arguments(PARSE_ARGV 1 tests "" "LABELS;ENVIRONMENT" "NOT_EMULATED")
  set(properties)
  foreach(property IN ITEMS LABELS ENVIRONMENT)
    if(tests_${property})
      list(APPEND properties ${property} ${tests_${property}})
    endif()
  endforeach()
  if(GPON_VALID_PROCESS_PER_TEST AND NOT CMAKE_CROSSCOMPILING)
    gtest_discover_tests(${program} DISCOVERY_TIMEOUT 120 PROPERTIES ${properties})
    return()
  endif()
  list(JOIN tests_NOT_EMULATED : alone)
  add_test(NAME ${program} COMMAND ${program} --gtest_brief=1 --gtest_filter=-${alone})
  # The cost lets ctest start the longest tests first.
  set_tests_properties(${program} PROPERTIES ${properties} TIMEOUT 3600 COST 1000)
  if(alone AND NOT CMAKE_CROSSCOMPILING)
    gtest_discover_tests(${program}
      TEST_FILTER ${alone} DISCOVERY_TIMEOUT 120 PROPERTIES ${properties})
  endif()
endfunction()
