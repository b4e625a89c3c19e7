# Cross build for 64-bit Windows with Debian's MinGW-w64 (threads of the posix kind).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

# The compiler's runtime and threads go into every program and DLL: only system DLLs are imported.
set(CMAKE_EXE_LINKER_FLAGS_INIT "-static -static-libgcc -static-libstdc++")
set(CMAKE_SHARED_LINKER_FLAGS_INIT "${CMAKE_EXE_LINKER_FLAGS_INIT}")
set(CMAKE_MODULE_LINKER_FLAGS_INIT "${CMAKE_EXE_LINKER_FLAGS_INIT}")

# The picture libraries (zlib, JPEG, PNG, TIFF; static) lie in the user's cache.
if(NOT FXBOX_WINDOWS_LIBRARIES)
  execute_process(
    COMMAND "${CMAKE_CURRENT_LIST_DIR}/../scripts/windows-libraries.sh" --where
    OUTPUT_VARIABLE FXBOX_WINDOWS_LIBRARIES
    OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
endif()
if(NOT IS_DIRECTORY "${FXBOX_WINDOWS_LIBRARIES}")
  message(FATAL_ERROR "The picture libraries for Windows are missing: run scripts/setup.sh windows")
endif()
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES FXBOX_WINDOWS_LIBRARIES)

set(CMAKE_FIND_ROOT_PATH "${FXBOX_WINDOWS_LIBRARIES}" /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
list(APPEND CMAKE_MODULE_PATH "${CMAKE_CURRENT_LIST_DIR}/windows")

set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/../scripts/run-wine.sh")
