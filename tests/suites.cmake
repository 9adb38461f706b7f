# Programs of tests as entries of CTest: one for each suite, named after folder, file and suite, so that
# `ctest -R value_array` and `ctest -L laws` find what they say. A process for each test would take longer than the tests.

find_package(Python3 REQUIRED COMPONENTS Interpreter)

# wayfind_add_tests(TARGET NAME [WHOLE] [PROPERTIES property value...])
#
# NAME is the folder of the tests below tests/, with dots: behaviour.frame. Its first part is the entries' label, as is the
# whole of it. The entries come from the program's own list whenever it is linked. WHOLE: the suites need each other, and the
# program is one entry.
function(wayfind_add_tests target name)
  cmake_parse_arguments(PARSE_ARGV 2 arg "WHOLE" "" "PROPERTIES")
  string(REGEX MATCH "^[a-z_]+" folder ${name})
  set(properties ${arg_PROPERTIES} LABELS "${folder}")
  if(NOT name STREQUAL folder)
    string(APPEND properties "\;${name}")
  endif()
  if(arg_WHOLE)
    add_test(NAME ${name} COMMAND ${target})
    set_tests_properties(${name} PROPERTIES ${properties})
  else()
    set(entries ${CMAKE_CURRENT_BINARY_DIR}/${target}_entries.cmake)
    set(lister ${PROJECT_SOURCE_DIR}/tests/suites.py)
    set_property(TARGET ${target} APPEND PROPERTY LINK_DEPENDS ${lister})
    add_custom_command(TARGET ${target} POST_BUILD VERBATIM
      COMMAND ${Python3_EXECUTABLE} -B ${lister} $<TARGET_FILE:${target}> ${name} ${entries} ${properties})
    # Until it is built, the program is an entry that fails.
    set(included ${CMAKE_CURRENT_BINARY_DIR}/${target}_tests.cmake)
    file(WRITE ${included}
         "if(EXISTS \"${entries}\")\n  include(\"${entries}\")\nelse()\n  add_test(${name}.not_built ${target})\nendif()\n")
    set_property(DIRECTORY APPEND PROPERTY TEST_INCLUDE_FILES ${included})
  endif()
  set_property(GLOBAL APPEND PROPERTY wayfind_test_programs $<TARGET_FILE:${target}>)
endfunction()
