# Options, flags and the two helpers that every folder uses.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)

set(FXBOX_SANITIZE "" CACHE STRING "Sanitizers to build with: address (with undefined), thread, or none")
option(FXBOX_FUZZ "Build the fuzz targets (needs clang)" OFF)
option(FXBOX_TESTS "Build the tests" ON)
option(FXBOX_PRECOMPILE "Read the standard headers once for all sources" OFF)
option(FXBOX_WARNINGS_AS_ERRORS "Stop at the first warning" OFF)
if(WIN32)
  option(FXBOX_BENCHMARKS "Build the benchmarks" OFF)
else()
  option(FXBOX_BENCHMARKS "Build the benchmarks" ON)
endif()

set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)

# Fused multiply-adds change last bits; the same bytes on every build come first.
add_compile_options(-ffp-contract=off)

add_library(fxbox_warnings INTERFACE)
target_compile_options(fxbox_warnings INTERFACE -Wall -Wextra -Wconversion -Wshadow
  $<$<BOOL:${FXBOX_WARNINGS_AS_ERRORS}>:-Werror>)

if(FXBOX_SANITIZE STREQUAL "address")
  # Not vptr: a host's objects may come from a language whose tables carry no C++ type information.
  # Not null, not object-size: the address sanitizer stops at both, and they are a tenth of the build.
  add_compile_options(-fsanitize=address,undefined -fno-sanitize=vptr,null,object-size
    -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=address,undefined)
elseif(FXBOX_SANITIZE STREQUAL "thread")
  add_compile_options(-fsanitize=thread)
  add_link_options(-fsanitize=thread)
elseif(FXBOX_SANITIZE)
  message(FATAL_ERROR "FXBOX_SANITIZE is '${FXBOX_SANITIZE}', not address or thread")
endif()
if(FXBOX_FUZZ)
  add_compile_options(-fsanitize=fuzzer-no-link,address)
  add_link_options(-fsanitize=address)
endif()

# What the system's own headers are: stand-ins on Linux, the real ones elsewhere.
add_library(fxbox_system INTERFACE)
target_include_directories(fxbox_system INTERFACE $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}>)
if(WIN32)
  target_compile_definitions(fxbox_system INTERFACE NOMINMAX WIN32_LEAN_AND_MEAN UNICODE _UNICODE
    _WIN32_WINNT=0x0A00)
else()
  target_include_directories(fxbox_system INTERFACE
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/platform/native>)
endif()

# fxbox_read_ahead(NAME [HEADER]...): NAME has read the standard headers and those named, for the
# targets that say target_precompile_headers(... REUSE_FROM NAME). A source still includes what it
# uses: the release build for Linux reads nothing ahead.
function(fxbox_read_ahead name)
  set(headers algorithm array atomic cmath cstdint cstdlib cstring filesystem fstream functional map
    memory mutex optional random span string string_view thread utility vector ${ARGN})
  list(TRANSFORM headers REPLACE "(.+)" "<\\1>")
  set(source ${CMAKE_CURRENT_BINARY_DIR}/${name}.cpp)
  file(WRITE ${source} "")
  add_library(${name} OBJECT ${source})
  target_link_libraries(${name} PRIVATE fxbox_system fxbox_warnings)
  target_precompile_headers(${name} PRIVATE ${headers})
endfunction()
if(FXBOX_PRECOMPILE)
  if(WIN32) # GCC warns falsely of short strings whose header was read ahead
    target_compile_options(fxbox_warnings INTERFACE -Wno-array-bounds -Wno-stringop-overread
      -Wno-stringop-overflow)
  endif()
  fxbox_read_ahead(fxbox_headers)
endif()

# fxbox_room(NAME SOURCES ... ROOMS ... LIBRARIES ...): the static library of one folder. ROOMS are the
# folders that it may include, LIBRARIES what it needs from outside.
function(fxbox_room name)
  cmake_parse_arguments(ROOM "" "" "SOURCES;ROOMS;LIBRARIES" ${ARGN})
  add_library(fxbox_${name} STATIC ${ROOM_SOURCES})
  target_compile_definitions(fxbox_${name} PRIVATE FXBOX_API=${FXBOX_EXPORT})
  list(TRANSFORM ROOM_ROOMS PREPEND fxbox_)
  target_link_libraries(fxbox_${name} PUBLIC fxbox_system ${ROOM_ROOMS} ${ROOM_LIBRARIES}
    PRIVATE $<BUILD_INTERFACE:fxbox_warnings>)
  if(FXBOX_PRECOMPILE)
    target_precompile_headers(fxbox_${name} REUSE_FROM fxbox_headers)
  endif()
endfunction()

if(WIN32)
  set(FXBOX_EXPORT "__declspec(dllexport)")
else()
  set(FXBOX_EXPORT "__attribute__((visibility(\"default\")))")
endif()

# fxbox_split_symbols(TARGET): what debuggers want of a module for Windows lies beside it as
# NAME.debug, and the module itself has none of it.
function(fxbox_split_symbols target)
  set(file $<TARGET_FILE:${target}>)
  add_custom_command(TARGET ${target} POST_BUILD VERBATIM
    COMMAND ${CMAKE_OBJCOPY} --only-keep-debug ${file} ${file}.debug
    COMMAND ${CMAKE_STRIP} --strip-unneeded ${file}
    COMMAND ${CMAKE_OBJCOPY} --add-gnu-debuglink=${file}.debug ${file})
endfunction()
