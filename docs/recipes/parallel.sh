#!/bin/sh
# Applies a chain to every picture of a list with GNU parallel: parallel.sh CHAIN LIST OUT [JOBS]
#   CHAIN  a file with the chain text
#   LIST   a file with a name a line
#   OUT    the folder for the results; OUT.lines gets a line of JSON for each picture, OUT.jobs tells
#          which jobs are done
# Say it again after a crash, a full disk or a broken picture that was repaired: only what is missing
# is done. The exit status is the number of jobs that failed.
set -eu
chain=$1 list=$2 out=$3
mkdir -p "$out"
parallel --will-cite --jobs "${4:-100%}" --max-args "${BATCH:-50}" \
  --joblog "$out.jobs" --resume-failed \
  "${FXBOX:-fxbox}" apply -f "$chain" --jobs 1 --skip-existing --json-lines -o "$out/" {} \
  <"$list" >>"$out.lines"
