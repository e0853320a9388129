# How this project compiles its own code. Nothing here reaches those who link the library: warnings and sanitizers are
# our own affair.

set(CMAKE_CXX_STANDARD 17)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

if(PROJECT_IS_TOP_LEVEL)
  # One folder for programs and one for libraries, as in an installation.
  set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")
  set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")
  find_program(ZELM_CCACHE ccache)
  if(ZELM_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
    set(CMAKE_CXX_COMPILER_LAUNCHER "${ZELM_CCACHE}")
  endif()
endif()

# zelm_join_sources()
#
# From here on, in this directory and below it, several sources of a target are compiled as one if ZELM_JOIN_SOURCES asks
# for that.
macro(zelm_join_sources)
  if(ZELM_JOIN_SOURCES)
    set(CMAKE_UNITY_BUILD ON)
    # GCC would take joined sources for headers, whose classes may use no anonymous namespace.
    add_compile_options($<$<CXX_COMPILER_ID:GNU>:-Wno-subobject-linkage>)
  endif()
endmacro()

add_library(zelm_settings INTERFACE)
target_compile_options(zelm_settings INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Woverloaded-virtual
  # Of a macro of the test framework that may be called without its last arguments, as standards after C++17 allow.
  $<$<CXX_COMPILER_ID:Clang>:-Wno-gnu-zero-variadic-macro-arguments>
  # A fused multiply-add would change the last digits of text-to-double conversions on some processors only.
  -ffp-contract=off)
if(ZELM_WARNINGS_AS_ERRORS)
  target_compile_options(zelm_settings INTERFACE -Werror)
endif()
if(ZELM_SANITIZE)
  target_compile_options(zelm_settings INTERFACE
    -fsanitize=${ZELM_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(zelm_settings INTERFACE -fsanitize=${ZELM_SANITIZE})
  if(ZELM_SANITIZE MATCHES "undefined" AND CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    # vptr tells by means of a pipe whether an object can be read, and calls it invalid in tests that leave no descriptors.
    target_compile_options(zelm_settings INTERFACE
      -fno-sanitize=vptr -fsanitize-ignorelist=${CMAKE_CURRENT_LIST_DIR}/sanitizer_ignores.txt)
  endif()
endif()
if(ZELM_BUILD_FUZZERS)
  if(NOT CMAKE_CXX_COMPILER_ID STREQUAL "Clang")
    message(FATAL_ERROR "ZELM_BUILD_FUZZERS: libFuzzer comes with clang++ (the preset fuzz takes it)")
  endif()
  # Counts the edges that an input takes. The loop that makes the inputs is linked into the targets alone.
  target_compile_options(zelm_settings INTERFACE -fsanitize=fuzzer-no-link)
endif()
if(ZELM_COVERAGE)
  # Only what ships is counted, wherever it is compiled: its headers also in tests and examples. Nothing else is
  # instrumented, so that the build takes hardly longer than an ordinary one. ccache may make paths relative to the build.
  # The options stand in a file, since ccache gives up on a command line with a -fprofile- option that it doesn't know.
  set(coverage_specs "${PROJECT_BINARY_DIR}/coverage.specs")
  file(RELATIVE_PATH coverage_relative "${PROJECT_BINARY_DIR}" "${PROJECT_SOURCE_DIR}")
  set(coverage_filter "")
  foreach(top IN ITEMS "${PROJECT_SOURCE_DIR}/" "${coverage_relative}")
    string(REGEX REPLACE "[^A-Za-z0-9/_-]" "." top "${top}")  # for a regular expression
    string(APPEND coverage_filter ";^${top}zelm/;^${top}component_libraries/")
  endforeach()
  string(SUBSTRING "${coverage_filter}" 1 -1 coverage_filter)
  file(CONFIGURE OUTPUT "${coverage_specs}" CONTENT
    "*cc1plus:\n+ -fprofile-update=atomic -fprofile-filter-files=${coverage_filter}\n\n")
  target_compile_options(zelm_settings INTERFACE --coverage "-specs=${coverage_specs}")
  target_link_options(zelm_settings INTERFACE --coverage)
endif()
