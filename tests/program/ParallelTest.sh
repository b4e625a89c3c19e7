#!/bin/sh
# The recipe for GNU parallel as docs/at-scale.md has it: ParallelTest.sh DOCS PROGRAM
# 20 pictures, FXBOX_SOAK=N: N of them. One is broken at first and the first run is killed: after two
# more runs every result is there, whole, and equal to that of a single run.
set -u
docs=$1
FXBOX=$2
export FXBOX BATCH=5
count=${FXBOX_SOAK:-20}

. "$(dirname "$0")/Outside.sh"
HOME=$folder
export HOME

mkdir in
i=0
while [ $i -lt "$count" ]; do
  { printf 'P6\n40 30\n255\n'; head -c 3600 /dev/urandom; } >"in/picture $i.ppm"
  i=$((i + 1))
done
find in -name '*.ppm' | sort >list
echo 'ZNFilter.Sepia.1(Sepia=080)ZNFilter.Invert.1(Inversity=020)' >chain
"$FXBOX" apply -f chain --files-from list -o want >/dev/null || fail 'the single run'

cp "in/picture 7.ppm" whole
printf 'P6\n40 30\n255\n' >"in/picture 7.ppm"
# Killed in the middle: of the jobs in work nothing is said, and their pictures stay or come anew.
setsid sh "$docs/recipes/parallel.sh" chain list out 2 2>/dev/null &
run=$!
tries=0
until [ -e out ] && [ "$(ls out | wc -l)" -gt 2 ]; do
  tries=$((tries + 1))
  [ $tries -lt 3000 ] || fail 'no results come'
  sleep 0.02
done
kill -KILL -$run
wait $run 2>/dev/null

sh "$docs/recipes/parallel.sh" chain list out 2 2>errors && fail 'a broken picture is no failure'
grep -q 'in/picture 7.ppm: the file ends in the middle' errors || fail "other errors: $(cat errors)"
[ "$(ls out | wc -l)" -eq $((count - 1)) ] || fail 'other results are missing, too'
cp whole "in/picture 7.ppm"
sh "$docs/recipes/parallel.sh" chain list out 2 || fail 'the last run'
diff -r want out || fail 'other results than those of a single run'
[ "$(wc -l <out.jobs)" -ge $((count / 5 + 1)) ] || fail 'jobs are missing in the log'

# What the document shows is what was run.
tail -n 4 "$docs/recipes/parallel.sh" >shown
awk '/^```sh$/ { on = 1; next } /^```$/ { on = 0 } on' "$docs/at-scale.md" | cmp -s - shown ||
  fail 'docs/at-scale.md shows another recipe'

# The lines name every picture and its sum.
sed -n 's/.*"output":"\([^"]*\)".*"sha256":"\([0-9a-f]*\)".*/\2  \1/p' out.lines | sort -u >sums
sha256sum --quiet --check sums || fail 'other sums than the lines say'
[ "$(sort -u -k 2 sums | wc -l)" -eq "$count" ] || fail 'pictures without a line'
