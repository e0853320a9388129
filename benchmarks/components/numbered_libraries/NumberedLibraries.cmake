# The libraries that the benchmarks of components install many copies of: see components/installation.h.

# zelm_as_numbered_library(<target> <user> <definition>)
#
# Builds the shared library <target> as lib<target>_numbered_0000.so.1.0.0. The sources of the target <user> get its
# path as <definition>.
function(zelm_as_numbered_library target user definition)
  set_target_properties(${target} PROPERTIES
    OUTPUT_NAME ${target}_numbered_0000
    VERSION 1.0.0
    SOVERSION 1.0.0
    LIBRARY_OUTPUT_DIRECTORY "${CMAKE_CURRENT_BINARY_DIR}/numbered_libraries")
  target_include_directories(${target} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
  target_link_libraries(${target} PRIVATE zelm_settings)
  # A library with a symbol that is unique in the process can't be closed, but some benchmarks close what they open.
  if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(${target} PRIVATE -fno-gnu-unique)
  endif()
  target_compile_definitions(${user} PRIVATE ${definition}="$<TARGET_FILE:${target}>")
  add_dependencies(zelm_components_benchmarks ${target})
endfunction()

target_compile_definitions(zelm_components_benchmarks PRIVATE ZELM_BENCHMARK_FOLDER="${CMAKE_CURRENT_BINARY_DIR}")
zelm_add_component_library(NAME zelm_benchmark VERSION 1.0.0 SOURCES components/numbered_libraries/zelm_library.cpp)
zelm_as_numbered_library(zelm_benchmark zelm_components_benchmarks ZELM_NUMBERED_LIBRARY)

if(TARGET zelm_components_benchmarks_class_loader)
  # Its package for CMake asks for tools that Debian doesn't have in that form, hence the headers' folders by hand.
  add_library(class_loader_benchmark SHARED peers/components/class_loader_library.cpp)
  target_link_libraries(class_loader_benchmark PRIVATE class_loader console_bridge)
  zelm_as_numbered_library(class_loader_benchmark zelm_components_benchmarks_class_loader ZELM_CLASS_LOADER_LIBRARY)
  foreach(folder class_loader rcpputils rcutils)
    foreach(user class_loader_benchmark zelm_components_benchmarks_class_loader)
      target_include_directories(${user} SYSTEM PRIVATE ${zelm_has_class_loader_class_loader_class_loader_hpp}/${folder})
    endforeach()
  endforeach()
endif()
if(TARGET zelm_components_benchmarks_poco)
  add_library(poco_benchmark SHARED peers/components/poco_library.cpp)
  target_link_libraries(poco_benchmark PRIVATE Poco::Foundation)
  zelm_as_numbered_library(poco_benchmark zelm_components_benchmarks_poco ZELM_POCO_LIBRARY)
endif()
