# Cuts the C program out of README: cmake -DREADME=FILE -DOUT=FILE -P ReadmeProgram.cmake
file(READ ${README} text)
# Semicolons would part the text into a list.
string(REPLACE ";" "<semicolon>" text "${text}")
if(NOT text MATCHES "\n```c\n([^`]*)```\n")
  message(FATAL_ERROR "README has no program in C")
endif()
string(REPLACE "<semicolon>" ";" program "${CMAKE_MATCH_1}")
file(WRITE ${OUT} "${program}")
