# zelm_folder(<folder> [MAY_USE <folder>...])
#
# Makes the object library zelm_folder_<folder> from zelm/<folder>; its sources are listed in that folder's own
# CMakeLists.txt with target_sources. The build stops if a file in it includes a folder that isn't named in MAY_USE.
function(zelm_folder folder)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "MAY_USE")
  set(target zelm_folder_${folder})
  add_library(${target} OBJECT)
  target_include_directories(${target} PUBLIC ${PROJECT_SOURCE_DIR})
  target_link_libraries(${target} PRIVATE zelm_settings)
  add_subdirectory(${folder})

  get_target_property(sources ${target} SOURCES)
  list(TRANSFORM sources PREPEND "${CMAKE_CURRENT_SOURCE_DIR}/${folder}/" REGEX "^[^/]")
  set(stamp "${CMAKE_CURRENT_BINARY_DIR}/${folder}_includes.stamp")
  list(JOIN arg_MAY_USE "," may_use)
  add_custom_command(OUTPUT "${stamp}"
    COMMAND ${CMAKE_COMMAND} -DFOLDER=${folder} "-DMAY_USE=${may_use}" "-DDIR=${CMAKE_CURRENT_SOURCE_DIR}/${folder}"
            -P "${PROJECT_SOURCE_DIR}/cmake/CheckIncludes.cmake"
    COMMAND ${CMAKE_COMMAND} -E touch "${stamp}"
    DEPENDS ${sources} "${PROJECT_SOURCE_DIR}/cmake/CheckIncludes.cmake"
    COMMENT "Checking what zelm/${folder} includes" VERBATIM)
  add_custom_target(${target}_includes DEPENDS "${stamp}")
  add_dependencies(${target} ${target}_includes)
endfunction()
