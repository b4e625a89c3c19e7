# Cross build for 64-bit ARM on Linux with Debian's compiler, of static rooms alone: nothing is
# linked, so that headers of the libraries from outside, which are the same everywhere, suffice.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)

# Where CMake finds this machine's libraries, whose headers the compiler sees.
file(GLOB host_libraries /usr/lib/*-linux-gnu)
set(CMAKE_LIBRARY_PATH ${host_libraries})
