# Checks that clang-format would change no source:
#   cmake -DTREE=FOLDER -DCLANG_FORMAT=PROGRAM -P CheckFormat.cmake
# `make format` repairs what it finds.
cmake_minimum_required(VERSION 3.24)

if(NOT CLANG_FORMAT)
  message(FATAL_ERROR "clang-format is missing: run scripts/setup.sh tests")
endif()
file(GLOB_RECURSE files ${TREE}/*.h ${TREE}/*.c ${TREE}/*.cpp)
list(FILTER files EXCLUDE REGEX "^${TREE}/build/")
if(NOT files)
  message(FATAL_ERROR "There are no sources in ${TREE}")
endif()
execute_process(COMMAND ${CLANG_FORMAT} --dry-run -Werror ${files}
  RESULT_VARIABLE result ERROR_VARIABLE said OUTPUT_QUIET)
if(NOT result EQUAL 0)
  string(REGEX MATCHALL "[^\n]*: error: [^\n]*" lines "${said}")
  list(TRANSFORM lines REPLACE ":[0-9]+:[0-9]+: .*" "")
  list(REMOVE_DUPLICATES lines)
  list(JOIN lines "\n  " text)
  message(FATAL_ERROR "\n  ${text}\nare not formatted: run make format\n")
endif()
list(LENGTH files count)
message(STATUS "${count} files are formatted")
