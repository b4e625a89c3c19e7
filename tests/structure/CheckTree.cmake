# Checks which folder includes which, and where the system may be asked for:
#   cmake -DTREE=FOLDER -P CheckTree.cmake
# Every rule is one table below. What breaks a rule is listed, one line each, and the script fails.
cmake_minimum_required(VERSION 3.24)

# Folder, and the folders that it may include besides itself. A longer folder comes before the one that
# holds it, and stands for itself alone. Files with rights of their own come before their folder.
set(rules
  "base/|"
  "platform/|base"
  "settings/|platform base"
  "picture/|storage settings imageio platform base"
  "imageio/|platform base"
  "storage/|imageio settings platform base"
  "core/IconPicture[.]|storage settings picture platform base"
  "core/|settings picture platform base"
  "editing/|core settings picture platform base"
  "filters/pixels/simd/|base"
  "filters/pixels/|filters/pixels/simd base")

# A family holds filters and their parameters, which know the pipeline, and kernels, which know rows and
# numbers alone. No family includes another.
set(pipeline "filters editing core settings picture platform base")
set(pixels "filters/pixels filters/pixels/simd")
foreach(family colour/tone colour detail frames geometry/size geometry/rotation)
  foreach(kind Filter Parameters)
    list(APPEND rules "filters/${family}/[A-Za-z0-9]*${kind}[.]|${pixels} ${pipeline}")
  endforeach()
  list(APPEND rules "filters/${family}/|${pixels} editing base")
endforeach()
foreach(kind Filter Parameters)
  list(APPEND rules "filters/text/[A-Za-z0-9]*${kind}[.]|${pixels} ${pipeline}")
endforeach()
# Reads fonts and pictures, still without the pipeline.
list(APPEND rules "filters/text/|${pixels} imageio picture platform base")
list(APPEND rules
  "filters/geometry/|filters/geometry/size filters/geometry/rotation ${pixels} ${pipeline}"
  "filters/FilterClasses[.]|ANY"
  "filters/|editing core settings picture platform base"
  "toolkit/|editing core settings picture platform base"
  "dialogs/|toolkit editing core settings picture platform base"
  "component/|ANY"
  "host/|component filters filters/text editing core settings imageio picture platform base"
  "program/|ANY"
  "python/|ANY"
  "desk/|ANY"
  "benchmarks/|ANY"
  "tests/|ANY")

# The list of all classes is no matter of the filters in it.
set(filters "^filters/")
set(list_of_classes "^filters/FilterClasses[.]h")

# Who may ask which system it is, and who may include the parts of one system.
set(system_words "_WIN32|_WIN64|__linux__|__MINGW32__|__unix__")
set(may_ask "^(platform|component|toolkit/(windows|gtk)|tests)/")
set(may_include_systems "^(platform|component|toolkit/windows|tests)/")
set(may_use_intrinsics "^filters/pixels/simd/Avx(2|512)[.]h$")
set(may_include_fakes "^(platform/fake|toolkit/fake|tests|benchmarks)/")

set(wrong "")
macro(complain text)
  list(APPEND wrong "${file}: ${text}")
endmacro()

function(find_rule file out)
  foreach(rule IN LISTS rules)
    string(REGEX REPLACE "[|].*" "" folder "${rule}")
    if(file MATCHES "^${folder}")
      set(${out} "${rule}" PARENT_SCOPE)
      return()
    endif()
  endforeach()
  set(${out} "" PARENT_SCOPE)
endfunction()

# The folder that a file belongs to: that of the first rule for a whole folder.
function(find_room file out)
  set(whole_folders ${rules})
  list(FILTER whole_folders EXCLUDE REGEX "[[]")
  foreach(rule IN LISTS whole_folders)
    string(REGEX REPLACE "/[|].*" "" folder "${rule}")
    if(file MATCHES "^${folder}/")
      set(${out} "${folder}" PARENT_SCOPE)
      return()
    endif()
  endforeach()
  set(${out} "" PARENT_SCOPE)
endfunction()

# Whether the rule of a file lets it include another one.
function(is_allowed file rule included out)
  find_room("${file}" own)
  find_room("${included}" target)
  string(REGEX REPLACE ".*[|]" "" others "${rule}")
  string(REPLACE " " ";" others "${others}")
  set(${out} FALSE PARENT_SCOPE)
  if(target STREQUAL own OR others STREQUAL "ANY" OR target IN_LIST others)
    set(${out} TRUE PARENT_SCOPE)
  endif()
  if(file MATCHES "${filters}" AND included MATCHES "${list_of_classes}" AND
     NOT file MATCHES "^filters/FilterClasses[.]")
    set(${out} FALSE PARENT_SCOPE)
  endif()
endfunction()

set(top_folders base platform settings picture imageio storage core editing filters toolkit dialogs component
  host program desk python benchmarks tests)
set(count 0)
foreach(top IN LISTS top_folders)
  file(GLOB_RECURSE files RELATIVE ${TREE} ${TREE}/${top}/*.h ${TREE}/${top}/*.cpp ${TREE}/${top}/*.c)
  foreach(file IN LISTS files)
    math(EXPR count "${count} + 1")
    find_rule("${file}" rule)
    file(STRINGS ${TREE}/${file} lines REGEX "^[ \t]*#[ \t]*(include[ \t]*(\"|<immintrin)|if|elif|ifdef|ifndef)")
    foreach(line IN LISTS lines)
      if(line MATCHES "include[ \t]*\"([^\"]*)\"")
        set(included "${CMAKE_MATCH_1}")
        string(REGEX MATCH "^[^/]*" included_top "${included}")
        if(NOT included MATCHES "/" OR NOT included_top IN_LIST top_folders)
          complain("includes \"${included}\", which is not written from the root")
          continue()
        endif()
        is_allowed("${file}" "${rule}" "${included}" allowed)
        if(NOT allowed)
          complain("may not include \"${included}\"")
        endif()
        if(included MATCHES "^platform/(linux|windows)/" AND NOT file MATCHES "${may_include_systems}")
          complain("may not include \"${included}\", which is there on one system alone")
        endif()
        if(included MATCHES "^toolkit/(gtk|windows)/" AND NOT file MATCHES "^toolkit/(gtk|windows)/")
          complain("may not include \"${included}\", which is there on one system alone")
        endif()
        if(included MATCHES "^(platform|toolkit)/fake/" AND NOT file MATCHES "${may_include_fakes}")
          complain("may not include \"${included}\", which is for tests")
        endif()
      elseif(line MATCHES "<immintrin")
        if(NOT file MATCHES "${may_use_intrinsics}")
          complain("may not include <immintrin.h>: filters/pixels/simd/Vectors.h does")
        endif()
      elseif(line MATCHES "(^|[^A-Za-z0-9_])(${system_words})($|[^A-Za-z0-9_])" AND
             NOT file MATCHES "${may_ask}")
        complain("asks for the system: ${line}")
      endif()
    endforeach()
  endforeach()
endforeach()

if(count EQUAL 0)
  message(FATAL_ERROR "There are no sources in ${TREE}")
endif()
if(wrong)
  list(JOIN wrong "\n  " text)  # indented lines are not wrapped
  message(FATAL_ERROR "\n  ${text}\n")
endif()
message(STATUS "${count} files keep the rules")
