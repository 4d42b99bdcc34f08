# GoogleTest, built from its sources like everything else (sanitizers want all code instrumented), and the function that
# makes a test program.

set(TORVIK_GOOGLETEST /usr/src/googletest CACHE PATH "GoogleTest's sources")
set(CMAKE_POLICY_DEFAULT_CMP0077 NEW)
set(INSTALL_GTEST OFF)
set(gtest_hide_internal_symbols OFF)
add_subdirectory(${TORVIK_GOOGLETEST} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
# Compiling is most of the time of a test run: the tests themselves are not optimised, only what they test.
set(torvik_test_options -O0 -g1)
# GNU's linker takes up to 20 s for a Windows program with GoogleTest's many inline functions, LLVM's less than one. The
# cross compiler has its linker built in and passes over -fuse-ld.
set(torvik_test_link_options)
if(MINGW)
  set(torvik_test_link_options -B${PROJECT_SOURCE_DIR}/cmake/mingw-lld -fno-use-linker-plugin)
endif()
foreach(library gtest gtest_main gmock)
  target_compile_options(${library} PRIVATE ${torvik_test_options})
  if(TORVIK_SANITIZE MATCHES undefined)
    target_compile_options(${library} PRIVATE -fno-sanitize=undefined)
  endif()
endforeach()

# GoogleTest's headers are most of what a test file is compiled from: read once, for all test programs.
file(GENERATE OUTPUT ${CMAKE_BINARY_DIR}/test_headers.cpp CONTENT "")
add_executable(torvik_test_headers EXCLUDE_FROM_ALL ${CMAKE_BINARY_DIR}/test_headers.cpp)
target_compile_options(torvik_test_headers PRIVATE ${torvik_test_options})
target_link_libraries(torvik_test_headers PRIVATE torvik_warnings GTest::gmock GTest::gtest GTest::gtest_main)
target_link_options(torvik_test_headers PRIVATE ${torvik_test_link_options})
set_target_properties(torvik_test_headers PROPERTIES POSITION_INDEPENDENT_CODE OFF)
target_precompile_headers(torvik_test_headers PRIVATE
  <gmock/gmock.h> <gtest/gtest.h> <array> <atomic> <chrono> <functional> <string> <thread> <vector>)

# Where the tests look for the libraries: the virtual adapter in virtual/, TORVIK in the build root. wine-run.sh hands the
# same variable on to Windows programs.
set(torvik_library_path "LD_LIBRARY_PATH=${CMAKE_BINARY_DIR}/virtual:${CMAKE_BINARY_DIR}")
set(torvik_results ${CMAKE_BINARY_DIR}/results)
if(WIN32)
  string(PREPEND torvik_results "Z:")
endif()
set(torvik_sanitizer_options
  "ASAN_OPTIONS=detect_stack_use_after_return=1:strict_string_checks=1"
  "UBSAN_OPTIONS=print_stacktrace=1"
  "TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1")
set(TORVIK_TEST_ENVIRONMENT ${torvik_library_path} ${torvik_sanitizer_options})

# torvik_compile_as_test(TARGET [LIBRARY...])
function(torvik_compile_as_test target)
  target_include_directories(${target} PRIVATE ${PROJECT_SOURCE_DIR}/tests)
  target_compile_options(${target} PRIVATE ${torvik_test_options})
  target_link_libraries(${target} PRIVATE ${ARGN} torvik_warnings GTest::gmock GTest::gtest GTest::gtest_main)
  target_link_options(${target} PRIVATE ${torvik_test_link_options})
  target_precompile_headers(${target} REUSE_FROM torvik_test_headers)
  # Position independence alike for programs and objects, which share the precompiled headers.
  set_target_properties(${target} PROPERTIES
    POSITION_INDEPENDENT_CODE OFF UNITY_BUILD ${TORVIK_COMPILE_TOGETHER} UNITY_BUILD_BATCH_SIZE 0)
endfunction()

# torvik_add_test_objects(NAME SOURCES file... [LIBS library...])
#   What several test programs share, compiled once; they link it.
function(torvik_add_test_objects name)
  cmake_parse_arguments(PARSE_ARGV 1 test "" "" "SOURCES;LIBS")
  add_library(${name} OBJECT ${test_SOURCES})
  torvik_compile_as_test(${name} ${test_LIBS})
endfunction()

# torvik_add_test(NAME SOURCES file... [LIBS library...] [ENVIRONMENT NAME=value...] [TIMEOUT seconds] [SERIAL])
#   Makes the GoogleTest program NAME and registers it as one test. SERIAL: nothing else runs beside it, for tests that
#   measure time. The report of its cases goes to results/NAME.xml in the build tree.
function(torvik_add_test name)
  cmake_parse_arguments(PARSE_ARGV 1 test "SERIAL" "TIMEOUT" "SOURCES;LIBS;ENVIRONMENT")
  if(NOT test_TIMEOUT)
    set(test_TIMEOUT 300)
  endif()
  add_executable(${name} ${test_SOURCES})
  torvik_compile_as_test(${name} ${test_LIBS})
  add_test(NAME ${name} COMMAND ${name})
  set_tests_properties(${name} PROPERTIES
    TIMEOUT ${test_TIMEOUT}
    ENVIRONMENT "${TORVIK_TEST_ENVIRONMENT};${test_ENVIRONMENT};GTEST_OUTPUT=xml:${torvik_results}/${name}.xml")
  if(test_SERIAL)
    set_tests_properties(${name} PROPERTIES RUN_SERIAL TRUE)
  endif()
  # scripts/count-results.py expects a report of these programs.
  file(WRITE ${CMAKE_BINARY_DIR}/googletest-programs/${name} "")
endfunction()

# torvik_add_command_test(NAME COMMAND program argument... [TIMEOUT seconds] [SERIAL])
#   Registers a check that is a script or a ready program; it passes by its exit code.
function(torvik_add_command_test name)
  cmake_parse_arguments(PARSE_ARGV 1 test "SERIAL" "TIMEOUT" "COMMAND")
  if(NOT test_TIMEOUT)
    set(test_TIMEOUT 300)
  endif()
  add_test(NAME ${name} COMMAND ${test_COMMAND})
  set_tests_properties(${name} PROPERTIES TIMEOUT ${test_TIMEOUT} ENVIRONMENT "${TORVIK_TEST_ENVIRONMENT}")
  if(test_SERIAL)
    set_tests_properties(${name} PROPERTIES RUN_SERIAL TRUE)
  endif()
endfunction()
