#!/bin/sh
# Installs the library into an empty folder and builds programs against what lies there:
#   installed.sh CMAKE BUILD-FOLDER COMPILER FLAGS
set -eu
cmake="$1" build="$2" compiler="$3" flags="$4"
source="$(cd "$(dirname "$0")" && pwd)/installed"
folder="$(mktemp -d)"
trap 'rm -rf "$folder"' EXIT
export XDG_CONFIG_HOME="$folder/config"

run() {
  "$@" >"$folder/log" 2>&1 || {
    cat "$folder/log" >&2
    echo "failed: $*" >&2
    exit 1
  }
}

# Moved after the installation: nothing may remember where it was.
run "$cmake" --install "$build" --prefix "$folder/first" --component library
mv "$folder/first" "$folder/prefix"
if grep -rlI -e "$folder/first" -e "$build" "$folder/prefix"; then
  echo "these files name folders of the build" >&2
  exit 1
fi

# Every header stands alone.
for header in $(cd "$folder/prefix/include/fxbox4" && find . -name '*.h' | sort); do
  echo "#include \"$header\""  >"$folder/one.cpp"
  run "$compiler" -std=c++20 $flags -fsyntax-only -I"$folder/prefix/include/fxbox4" \
    -I"$folder/prefix/include/fxbox4/platform/native" "$folder/one.cpp"
done

run "$cmake" -S "$source" -B "$folder/build" -DCMAKE_PREFIX_PATH="$folder/prefix" \
  -DCMAKE_CXX_COMPILER="$compiler" -DCMAKE_CXX_FLAGS="$flags"
run "$cmake" --build "$folder/build"
run "$folder/build/host_fxbox4"
run "$folder/build/host_static"

PKG_CONFIG_PATH="$(dirname "$(find "$folder/prefix" -name fxbox4.pc)")"
export PKG_CONFIG_PATH
run "$compiler" -std=c++20 $flags "$source/host.cpp" -o "$folder/host" $(pkg-config --cflags --libs fxbox4)
LD_LIBRARY_PATH="$(pkg-config --variable=libdir fxbox4)" run "$folder/host"
