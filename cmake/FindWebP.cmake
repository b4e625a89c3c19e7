# WebP::WebP, the library of WebP pictures with what packs and unpacks their files. CMake has no
# module for it.
find_path(WebP_INCLUDE_DIR webp/mux.h)
set(webp_files "")
foreach(part webpmux webpdemux webp)
  find_library(WebP_${part}_LIBRARY ${part})
  list(APPEND webp_files ${WebP_${part}_LIBRARY})
endforeach()
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(WebP DEFAULT_MSG WebP_webp_LIBRARY WebP_webpmux_LIBRARY
  WebP_webpdemux_LIBRARY WebP_INCLUDE_DIR)
if(WebP_FOUND AND NOT TARGET WebP::WebP)
  add_library(WebP::WebP INTERFACE IMPORTED)
  set_target_properties(WebP::WebP PROPERTIES INTERFACE_LINK_LIBRARIES "${webp_files}"
    INTERFACE_INCLUDE_DIRECTORIES ${WebP_INCLUDE_DIR})
endif()
