# Proves that CheckTree.cmake finds what it is there for:
#   cmake -DWORK=FOLDER -P CheckTreeTest.cmake
# Each case is one small tree of one file: path, line, and the words of the complaint (none: it is
# right).
cmake_minimum_required(VERSION 3.24)

set(cases
  "base/A.h|#include \"base/B.h\"|"
  "base/A.h|#include \"platform/B.h\"|may not include"
  "platform/A.h|#include \"core/B.h\"|may not include"
  "platform/linux/A.cpp|#ifdef _WIN32|"
  "picture/A.cpp|#include \"core/B.h\"|may not include"
  "picture/A.cpp|#include \"platform/linux/B.h\"|on one system alone"
  "core/A.cpp|#include \"platform/fake/B.h\"|is for tests"
  "core/A.cpp|#include \"filters/B.h\"|may not include"
  "core/A.cpp|  #  if defined(_WIN32)|asks for the system"
  "core/A.cpp|#elif defined(__linux__)|asks for the system"
  "core/A.cpp|#include \"A.h\"|not written from the root"
  "filters/colour/Hues.cpp|#include \"core/B.h\"|may not include"
  "filters/colour/HueFilter.cpp|#include \"core/B.h\"|"
  "filters/colour/HueParameters.h|#include \"core/B.h\"|"
  "filters/colour/Hues.cpp|#include \"filters/pixels/B.h\"|"
  "filters/colour/HueFilter.cpp|#include \"filters/frames/B.h\"|may not include"
  "filters/colour/HueFilter.cpp|#include \"filters/colour/tone/B.h\"|may not include"
  "filters/pixels/A.cpp|#include \"filters/colour/B.h\"|may not include"
  "filters/pixels/simd/A.h|#include \"filters/pixels/B.h\"|may not include"
  "filters/pixels/simd/Avx2.h|#include <immintrin.h>|"
  "filters/pixels/A_avx2.cpp|#include <immintrin.h>|may not include <immintrin"
  "filters/detail/AFilter.cpp|#include \"filters/FilterStatics.h\"|"
  "filters/detail/AFilter.cpp|#include \"filters/FilterClasses.h\"|may not include"
  "filters/A.cpp|#include \"filters/FilterClasses.h\"|may not include"
  "filters/geometry/AFilter.cpp|#include \"filters/geometry/size/B.h\"|"
  "filters/geometry/size/AFilter.cpp|#include \"filters/geometry/rotation/B.h\"|may not include"
  "filters/FilterClasses.cpp|#include \"filters/frames/B.h\"|"
  "editing/A.cpp|#include \"filters/B.h\"|may not include"
  "program/A.cpp|#ifdef _WIN32|asks for the system"
  "tests/A.c|#ifndef _WIN32|")

set(failures "")
foreach(case IN LISTS cases)
  string(REPLACE "|" ";" parts "${case}")
  list(GET parts 0 path)
  list(GET parts 1 line)
  list(GET parts 2 complaint)
  file(REMOVE_RECURSE ${WORK})
  file(WRITE ${WORK}/${path} "${line}\n")
  execute_process(COMMAND ${CMAKE_COMMAND} -DTREE=${WORK} -P ${CMAKE_CURRENT_LIST_DIR}/CheckTree.cmake
    RESULT_VARIABLE result OUTPUT_VARIABLE said ERROR_VARIABLE said)
  if(complaint STREQUAL "")
    if(NOT result EQUAL 0)
      list(APPEND failures "refused: ${path}: ${line}")
    endif()
  elseif(result EQUAL 0 OR NOT said MATCHES "${path}: [^\n]*${complaint}")
    list(APPEND failures "not found: ${path}: ${line}")
  endif()
endforeach()

file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})
execute_process(COMMAND ${CMAKE_COMMAND} -DTREE=${WORK} -P ${CMAKE_CURRENT_LIST_DIR}/CheckTree.cmake
  RESULT_VARIABLE result OUTPUT_QUIET ERROR_QUIET)
if(result EQUAL 0)
  list(APPEND failures "an empty tree passes")
endif()

if(failures)
  list(JOIN failures "\n  " text)
  message(FATAL_ERROR "\n  ${text}\n")
endif()
