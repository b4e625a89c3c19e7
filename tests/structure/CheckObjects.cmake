# Checks what the files with a processor suffix emit:
#   cmake -DNM=PROGRAM -DOBJECTS=LIST -P CheckObjects.cmake
# The linker keeps one copy of an inline function that several files emit, whichever comes first. One
# compiled for a wider processor would then run on processors that lack its instructions: such a file
# may define functions of its own alone.
cmake_minimum_required(VERSION 3.24)

set(count 0)
set(wrong "")
foreach(object IN LISTS OBJECTS)
  if(NOT object MATCHES "_avx(2|512)[.]")
    continue()
  endif()
  math(EXPR count "${count} + 1")
  execute_process(COMMAND ${NM} --demangle --defined-only ${object}
    OUTPUT_VARIABLE symbols COMMAND_ERROR_IS_FATAL ANY)
  # W and V are weak, u is unique to the program. The reference to the handler of exceptions is data.
  string(REGEX MATCHALL "[0-9a-f]+ [WVu] [^\n]*" shared "${symbols}")
  list(FILTER shared EXCLUDE REGEX " DW[.]ref[.]")
  get_filename_component(name ${object} NAME)
  list(TRANSFORM shared REPLACE "^[0-9a-f]+ . " "${name} shares ")
  list(APPEND wrong ${shared})
endforeach()

if(count EQUAL 0)
  message(FATAL_ERROR "No object has a processor suffix")
endif()
if(wrong)
  list(JOIN wrong "\n  " text)  # indented lines are not wrapped
  message(FATAL_ERROR "\n  ${text}\n")
endif()
message(STATUS "${count} objects share nothing")
