#!/bin/bash
# Configures and builds one preset: build.sh PRESET [TARGET]...
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

preset="${1:?the preset is missing}"
shift
cd "$project"
say "Building $preset${*:+: $*} (build/$preset)"
mkdir -p "build/$preset"
# What was found of former libraries for Windows is forgotten.
fresh=()
if [ "$preset" = windows ] && [ -f build/windows/CMakeCache.txt ]; then
  libraries="$(scripts/windows-libraries.sh --where)"
  if grep -F "${libraries%-*}-" build/windows/CMakeCache.txt | grep -qvF "$libraries"; then
    fresh=(--fresh)
  fi
fi
if ! cmake --preset "$preset" "${fresh[@]}" >"build/$preset/configure.log"; then
  cat "build/$preset/configure.log"
  die "$preset could not be configured"
fi
# On a terminal one line tells the progress; elsewhere it would be a line a file.
quiet=()
[ -t 1 ] || quiet=(-- --quiet)
cmake --build --preset "$preset" ${@:+--target "$@"} "${quiet[@]}"
