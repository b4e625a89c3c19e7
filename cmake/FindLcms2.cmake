# Lcms2::Lcms2, the library that reads colour profiles. CMake has no module for it.
find_path(Lcms2_INCLUDE_DIR lcms2.h)
find_library(Lcms2_LIBRARY lcms2)
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(Lcms2 DEFAULT_MSG Lcms2_LIBRARY Lcms2_INCLUDE_DIR)
if(Lcms2_FOUND AND NOT TARGET Lcms2::Lcms2)
  add_library(Lcms2::Lcms2 UNKNOWN IMPORTED)
  set_target_properties(Lcms2::Lcms2 PROPERTIES IMPORTED_LOCATION ${Lcms2_LIBRARY}
    INTERFACE_INCLUDE_DIRECTORIES ${Lcms2_INCLUDE_DIR})
endif()
