# zelm_add_component_library(NAME <Name> VERSION <x.y.z> SOURCES <file>...)
#
# Builds the component library lib<Name>.so.<x.y.z> as target <Name>: linked with Zelm::Core, symbols hidden unless
# marked, RUNPATH $ORIGIN so that libraries installed beside it are found. Two things make it fit for the repository:
#  - the file name carries its version, since the scan takes only files that match "*.so.*";
#  - the SONAME equals the file name, so that a library which the scan opened by its path is recognised when the
#    repository asks the dynamic loader for it by its bare name later on.
# The link fails if no source defines getComponentFactory.
function(zelm_add_component_library)
  cmake_parse_arguments(PARSE_ARGV 0 arg "" "NAME;VERSION" "SOURCES")
  foreach(required NAME VERSION SOURCES)
    if(NOT arg_${required})
      message(FATAL_ERROR "zelm_add_component_library: ${required} is missing")
    endif()
  endforeach()
  if(arg_UNPARSED_ARGUMENTS)
    message(FATAL_ERROR "zelm_add_component_library: unknown arguments: ${arg_UNPARSED_ARGUMENTS}")
  endif()

  add_library(${arg_NAME} SHARED ${arg_SOURCES})
  target_link_libraries(${arg_NAME} PRIVATE Zelm::Core)
  target_link_options(${arg_NAME} PRIVATE LINKER:--require-defined=getComponentFactory)
  set_target_properties(${arg_NAME} PROPERTIES
    VERSION ${arg_VERSION}
    SOVERSION ${arg_VERSION}
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON
    BUILD_WITH_INSTALL_RPATH ON
    INSTALL_RPATH "$ORIGIN")
endfunction()
