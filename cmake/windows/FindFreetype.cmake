# CMake's own module, and what a static FreeType needs beside itself.
include("${CMAKE_ROOT}/Modules/FindFreetype.cmake")
if(FREETYPE_FOUND)
  include(CMakeFindDependencyMacro)
  find_dependency(ZLIB)
  set_property(TARGET Freetype::Freetype PROPERTY INTERFACE_LINK_LIBRARIES ZLIB::ZLIB)
endif()
