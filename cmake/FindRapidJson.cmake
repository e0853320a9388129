# Finds RapidJSON (Debian's rapidjson-dev), which is headers only, and makes the target RapidJson::RapidJson. Used inside
# the library alone: nobody who links it needs these headers.
find_path(RapidJson_INCLUDE_DIR rapidjson/document.h)
mark_as_advanced(RapidJson_INCLUDE_DIR)

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(RapidJson REQUIRED_VARS RapidJson_INCLUDE_DIR)

if(RapidJson_FOUND AND NOT TARGET RapidJson::RapidJson)
  add_library(RapidJson::RapidJson INTERFACE IMPORTED)
  set_target_properties(RapidJson::RapidJson PROPERTIES INTERFACE_INCLUDE_DIRECTORIES "${RapidJson_INCLUDE_DIR}")
endif()
