#!/bin/bash
# Runs all fuzz targets, one on each processor: fuzz.sh SECONDS [TARGET]... The seconds are those of
# all together. What they find, and what each of them said, lies in build/linux-fuzz/findings/, what
# they learn in build/linux-fuzz/corpus/.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

seconds="${1:?the seconds are missing}"
shift
cd "$project/build/linux-fuzz"
[ $# -gt 0 ] || set -- $(cd tests/fuzz && find . -maxdepth 1 -name 'fuzz_*' -executable -type f -printf '%f ')
[ $# -gt 0 ] || die "there are no fuzz targets: run make fuzz"
export each=$((seconds / $#))

# A file of a few bytes may claim a picture of nearly 2 GiB, which is the most that a bitmap has.
fuzz() {
  local said="findings/$1.log"
  mkdir -p "corpus/$1"
  if "tests/fuzz/$1" "corpus/$1" -max_total_time="$each" -timeout=20 -rss_limit_mb=4096 \
    -verbosity=0 -print_final_stats=1 -artifact_prefix="findings/$1-" >"$said" 2>&1; then
    say "$1: $(sed -n 's/^stat::number_of_executed_units: *//p' "$said") runs, nothing found"
  else
    cat "$said"
    return 1
  fi
}
export -f fuzz say

mkdir -p findings
say "Fuzzing $# targets, $each seconds each"
printf '%s\n' "$@" | xargs -P "$(nproc)" -I '{}' bash -c 'fuzz {}' ||
  die "something was found; the inputs are in build/linux-fuzz/findings"
