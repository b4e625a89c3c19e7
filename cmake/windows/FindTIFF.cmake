# CMake's own module, and what a static libtiff needs beside itself.
include("${CMAKE_ROOT}/Modules/FindTIFF.cmake")
if(TIFF_FOUND)
  include(CMakeFindDependencyMacro)
  find_dependency(JPEG)
  find_dependency(ZLIB)
  set_property(TARGET TIFF::TIFF PROPERTY INTERFACE_LINK_LIBRARIES JPEG::JPEG ZLIB::ZLIB)
endif()
