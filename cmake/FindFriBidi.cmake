# FriBidi::FriBidi, the library that orders texts of mixed directions. CMake has no module for it.
find_path(FriBidi_INCLUDE_DIR fribidi.h PATH_SUFFIXES fribidi)
find_library(FriBidi_LIBRARY fribidi)
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(FriBidi DEFAULT_MSG FriBidi_LIBRARY FriBidi_INCLUDE_DIR)
if(FriBidi_FOUND AND NOT TARGET FriBidi::FriBidi)
  add_library(FriBidi::FriBidi UNKNOWN IMPORTED)
  set_target_properties(FriBidi::FriBidi PROPERTIES IMPORTED_LOCATION ${FriBidi_LIBRARY}
    INTERFACE_INCLUDE_DIRECTORIES ${FriBidi_INCLUDE_DIR})
endif()
