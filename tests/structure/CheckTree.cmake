# Checks which folder includes which, and where the system may be asked for:
#   cmake -DTREE=FOLDER -P CheckTree.cmake
# Every rule is one table below. What breaks a rule is listed, one line each, and the script fails.
cmake_minimum_required(VERSION 3.24)

# Folder, and the folders that it may include besides itself. A longer folder comes before the one that
# holds it, and stands for itself alone. Single files with rights of their own come first of all.
set(rules
  "core/FilterBox[.]|core storage settings picture platform base"
  "base/|"
  "platform/|base"
  "settings/|platform base"
  "picture/|platform base"
  "storage/|settings platform base"
  "imageio/|platform base"
  "core/|settings picture platform base"
  "filters/tools/|picture base"
  "filters/colour/|filters/tools core settings picture platform base"
  "filters/detail/|filters/tools core settings picture platform base"
  "filters/geometry/|filters/tools core settings picture platform base"
  "filters/frames/|filters/tools core settings picture platform base"
  "filters/|core settings picture platform base"
  "dialogs/|core settings picture platform base"
  "component/|ANY"
  "program/|ANY"
  "benchmarks/|ANY"
  "tests/|ANY")

# Filters that lie beside the families are shared by them; the list of all classes is not.
set(shared_by_families "filters/[A-Za-z]+[.]h")
set(shared_by_nobody "filters/FilterClasses[.]h")

# Who may ask which system it is, and who may include the parts of one system.
set(system_words "_WIN32|_WIN64|__linux__|__MINGW32__|__unix__")
set(may_ask "^(platform|component|dialogs|tests)/")
set(may_include_systems "^(platform|component|tests)/")
set(may_include_fakes "^(platform/fake|tests|benchmarks)/")

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

# Whether the rule of one folder lets it include the file.
function(is_allowed rule included out)
  set(${out} TRUE PARENT_SCOPE)
  string(REGEX REPLACE "[|].*" "" own "${rule}")
  string(REGEX REPLACE ".*[|]" "" others "${rule}")
  find_rule("${included}" target)
  string(REGEX REPLACE "[|].*" "" target "${target}")
  if(target STREQUAL own OR others STREQUAL "ANY")
    return()
  endif()
  string(REPLACE " " ";" others "${others}")
  string(REGEX REPLACE "/$" "" target "${target}")
  if(target IN_LIST others)
    return()
  endif()
  # A file with rights of its own belongs to its folder.
  if(target MATCHES "[[]" AND own STREQUAL "core/")
    return()
  endif()
  if(own MATCHES "^filters/[a-z]+/" AND NOT own STREQUAL "filters/tools/" AND
     included MATCHES "^${shared_by_families}$" AND NOT included MATCHES "^${shared_by_nobody}$")
    return()
  endif()
  if(own STREQUAL "filters/" AND included MATCHES "^filters/")
    return()
  endif()
  set(${out} FALSE PARENT_SCOPE)
endfunction()

set(top_folders base platform settings picture storage imageio core filters dialogs component program
  benchmarks tests)
set(count 0)
foreach(top IN LISTS top_folders)
  file(GLOB_RECURSE files RELATIVE ${TREE} ${TREE}/${top}/*.h ${TREE}/${top}/*.cpp ${TREE}/${top}/*.c)
  foreach(file IN LISTS files)
    math(EXPR count "${count} + 1")
    find_rule("${file}" rule)
    file(STRINGS ${TREE}/${file} lines REGEX "^[ \t]*#[ \t]*(include[ \t]*\"|if|elif|ifdef|ifndef)")
    foreach(line IN LISTS lines)
      if(line MATCHES "include[ \t]*\"([^\"]*)\"")
        set(included "${CMAKE_MATCH_1}")
        string(REGEX MATCH "^[^/]*" included_top "${included}")
        if(NOT included MATCHES "/" OR NOT included_top IN_LIST top_folders)
          complain("includes \"${included}\", which is not written from the root")
          continue()
        endif()
        is_allowed("${rule}" "${included}" allowed)
        if(NOT allowed)
          complain("may not include \"${included}\"")
        endif()
        if(included MATCHES "^platform/(linux|windows)/" AND NOT file MATCHES "${may_include_systems}")
          complain("may not include \"${included}\", which is there on one system alone")
        endif()
        if(included MATCHES "^platform/fake/" AND NOT file MATCHES "${may_include_fakes}")
          complain("may not include \"${included}\", which is for tests")
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
