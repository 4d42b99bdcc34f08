# Settings shared by every target: language level, warnings, platform folder, staged header-only libraries.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 99)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
if(NOT CMAKE_BUILD_TYPE)
  set(CMAKE_BUILD_TYPE RelWithDebInfo)
endif()

option(TORVIK_BUILD_TESTS "Build the tests" ON)
option(TORVIK_BUILD_BENCH "Build the benchmarks" OFF)
option(TORVIK_BUILD_FUZZERS "Make targets of the fuzzers; needs clang" OFF)
# Most of a test file's or a tool file's compilation is the headers of GoogleTest, fmt and CLI11.
option(TORVIK_COMPILE_TOGETHER "Compile the files of a test program, of the tool and of the virtual adapter together" ON)
option(TORVIK_COMPILE_LIBRARY_TOGETHER "Compile the library's files together: quick, for builds that only check" OFF)
set(TORVIK_SANITIZE "" CACHE STRING "Sanitizers to build with, as -fsanitize takes them")

if(WIN32)
  set(TORVIK_PLATFORM windows)
else()
  set(TORVIK_PLATFORM linux)
endif()

# Warnings are errors in all code of ours.
add_library(torvik_warnings INTERFACE)
target_compile_options(torvik_warnings INTERFACE -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror)

if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
  target_compile_options(torvik_warnings INTERFACE -Wthread-safety)
endif()

set(THREADS_PREFER_PTHREAD_FLAG ON)
find_package(Threads REQUIRED)

if(TORVIK_SANITIZE)
  add_compile_options(-fsanitize=${TORVIK_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=${TORVIK_SANITIZE})
  if(CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    # Libraries are called across the C interface with each side's own names for the structures.
    add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-fno-sanitize=function>)
  endif()
endif()

# A GNU unique symbol would pin a library in the process for ever.
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
  add_compile_options($<$<COMPILE_LANGUAGE:CXX>:-fno-gnu-unique>)
endif()

# The cross compiler must not see /usr/include: the header-only libraries are staged in the build tree.
add_library(torvik_staged_headers INTERFACE)
set(stage ${CMAKE_BINARY_DIR}/staged-include)
foreach(folder CLI fmt toml++)
  if(EXISTS /usr/include/${folder})
    file(COPY /usr/include/${folder} DESTINATION ${stage})
  endif()
endforeach()
target_include_directories(torvik_staged_headers SYSTEM INTERFACE ${stage})
target_compile_definitions(torvik_staged_headers INTERFACE FMT_HEADER_ONLY=1)
