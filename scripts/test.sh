#!/bin/bash
# Builds one preset and runs its tests: test.sh PRESET [CTEST-ARGUMENT]...
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

preset="${1:?the preset is missing}"
shift
cd "$project"
scripts/build.sh "$preset"
say "Testing $preset"
around=()
case "$preset" in
  windows)
    around=(scripts/with-display.sh)
    FXBOX_WINEPREFIX="$(scripts/wine-prefix.sh --where)" # once here, not once a test
    export FXBOX_WINEPREFIX
    # One test lets the programs of both systems exchange their files.
    scripts/build.sh linux fxbox
    ;;
  linux-tsan)
    # The thread sanitizer cannot place its memory where the kernel scatters addresses too widely, and
    # it does not know the locks of the system's windows: those in memory are for it. It hands a
    # signal to no thread that waits for a future.
    if setarch -R true 2>/dev/null; then around=(setarch -R); fi
    unfit='^(toolkit\.Window|dialogs\.(Window|OnScreen)|desk\.(Walk|Accessible)|program\.(dialog|list_as_it_comes))$'
    set -- -E "$unfit" "$@"
    ;;
esac
"${around[@]}" ctest --preset "$preset" --no-tests=error -j "$(nproc)" "$@"
