#!/bin/sh
# The trace log and several processes: ProcessTest.sh CASE WRITER...
#   CASE    one of the functions test_... below
#   WRITER  the program TraceWriter, with what runs it ahead of it where it is one of another system
set -u
case_name=$1
shift
writer="$*"

folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder" || exit 1
export XDG_CONFIG_HOME="$folder/config" XDG_STATE_HOME="$folder/state"

fail() {
  echo "FAILED: $*" >&2
  [ -z "${log:-}" ] || tail -n 5 "$log" | sed 's/^/  log: /' >&2
  exit 1
}

run() {
  $writer "$@" >output || fail "status $?: $*"
  grep -q done output || fail "did not get through: $*"
}

# The log of the folder.
find_log() {
  log=$(echo "$1"/Trac*.log)
  [ -f "$log" ] || fail "there is no log in $1"
}

# Every line is whole: nothing but start and stop lines, empty ones behind those, and numbered ones.
demand_whole_lines() {
  front='[0-9:.]{12}  +[0-9]+ +[0-9a-f]+ : *[0-9a-f]+	'
  strangers=$(tr -d '\r' <"$log" | grep -avE \
    "^($front(Starting Program/DLL \".*\"|Program/DLL \".*\" terminated correctly|JournalThread starting\.|[a-z]+ [0-9]+ \.{300} end))?$")
  [ -z "$strangers" ] || fail "broken lines: $(echo "$strangers" | head -c 300)"
}

# The numbers of the lines of one writer.
numbers() {
  tr -d '\r' <"$log" | sed -n "s/^.*	$1 \([0-9]*\) .* end$/\1/p"
}

test_two_writers() {
  $writer write logs first 300 >/dev/null &
  $writer journal logs second 300 >/dev/null &
  run write logs third 300
  wait
  find_log logs
  demand_whole_lines
  for name in first second third; do
    numbers $name >found
    seq 0 299 | cmp -s - found || fail "$name wrote $(wc -l <found) lines in order, not 300"
  done
}

# A writer that is there all the time sees the mutex abandoned, ends the torn line and loses one of its
# own each time.
test_killed_beside_a_writer() {
  $writer until logs steady 0 >/dev/null &
  steady=$!
  until grep -qs steady logs/*; do sleep 0.05; done
  for i in 1 2 3; do $writer die logs x 0 >/dev/null 2>&1; done
  touch logs/stop
  wait $steady || fail "the steady writer ended with $?"
  find_log logs
  # The torn lines stand alone.
  [ "$(grep -ac '^torn lin.\?$' "$log")" -eq 3 ] || fail "torn lines are not on their own"
  sed -i '/^torn lin.\?$/d' "$log"
  demand_whole_lines
  numbers steady >found
  sort -n -u found | cmp -s - found || fail "lines out of order"
  lost=$(($(tail -n 1 found) + 1 - $(wc -l <found)))
  [ "$lost" -le 3 ] || fail "$lost lines are lost"
}

# A full disk, a file in the way, and a place where not even the superuser can make a file.
test_nowhere_to_write() {
  name=$($writer where probe x 0 | tr -d '\r' | head -n 1)
  mkdir logs
  ln -s /dev/full "logs/$name"
  echo text >file
  place=/proc/fxbox
  case "$writer" in *.exe) place=Z:$place ;; esac
  for place in logs file/logs "$place"; do
    run write "$place" first 5
    run journal "$place" second 5
  done
  [ -L "logs/$name" ] || fail "the log was replaced"
  [ "$(cat file)" = text ] || fail "the file in the way has changed"
}

test_$case_name
