#!/bin/bash
# Runs all fuzz targets one after the other: fuzz.sh SECONDS [TARGET]... The seconds are those of all
# together. What they find lies in build/linux-fuzz/findings/, what they learn in
# build/linux-fuzz/corpus/.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

seconds="${1:?the seconds are missing}"
shift
cd "$project/build/linux-fuzz"
[ $# -gt 0 ] || set -- $(cd tests/fuzz && find . -maxdepth 1 -name 'fuzz_*' -executable -type f -printf '%f ')
[ $# -gt 0 ] || die "there are no fuzz targets: run make fuzz"
mkdir -p findings
failed=()
for target in "$@"; do
  say "Fuzzing $target for $((seconds / $#)) seconds"
  mkdir -p "corpus/$target"
  "tests/fuzz/$target" "corpus/$target" -max_total_time="$((seconds / $#))" -timeout=20 \
    -rss_limit_mb=2048 -verbosity=0 -print_final_stats=1 -artifact_prefix="findings/$target-" ||
    failed+=("$target")
done
[ ${#failed[@]} -eq 0 ] || die "failed, with inputs in build/linux-fuzz/findings: ${failed[*]}"
