# HarfBuzz::HarfBuzz, the library that shapes texts. CMake has no module of its own for it.
find_path(HarfBuzz_INCLUDE_DIR hb.h PATH_SUFFIXES harfbuzz)
find_library(HarfBuzz_LIBRARY harfbuzz)
include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(HarfBuzz DEFAULT_MSG HarfBuzz_LIBRARY HarfBuzz_INCLUDE_DIR)
if(HarfBuzz_FOUND AND NOT TARGET HarfBuzz::HarfBuzz)
  # Built static it asks FreeType for glyphs.
  find_package(Freetype REQUIRED)
  add_library(HarfBuzz::HarfBuzz UNKNOWN IMPORTED)
  set_target_properties(HarfBuzz::HarfBuzz PROPERTIES IMPORTED_LOCATION ${HarfBuzz_LIBRARY}
    INTERFACE_INCLUDE_DIRECTORIES ${HarfBuzz_INCLUDE_DIR}
    INTERFACE_LINK_LIBRARIES Freetype::Freetype)
endif()
