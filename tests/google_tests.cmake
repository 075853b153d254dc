include(GoogleTest)

# google_tests(PROGRAM [LABELS label] [ENVIRONMENT variable] [NOT_EMULATED pattern...])
# Adds the tests of a program, each with a process of its own. In an emulator the start of a process takes
# a second, most of it to read the model: there a whole program is one test, without the tests that
# NOT_EMULATED names.
function(google_tests program)
  cmake_parse_arguments(PARSE_ARGV 1 tests "" "LABELS;ENVIRONMENT" "NOT_EMULATED")
  set(properties)
  foreach(property IN ITEMS LABELS ENVIRONMENT)
    if(tests_${property})
      list(APPEND properties ${property} ${tests_${property}})
    endif()
  endforeach()
  if(NOT CMAKE_CROSSCOMPILING)
    gtest_discover_tests(${program} DISCOVERY_TIMEOUT 120 PROPERTIES ${properties})
    return()
  endif()
  list(JOIN tests_NOT_EMULATED : left_out)
  add_test(NAME ${program} COMMAND ${program} --gtest_brief=1 --gtest_filter=-${left_out})
  set_tests_properties(${program} PROPERTIES ${properties} TIMEOUT 3600)
endfunction()
