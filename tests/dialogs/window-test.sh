#!/bin/bash
# Opens the dialogs of all classes, then moves the slider of one by mouse and keys as a person does,
# and reads what the host saw:
#   window-test.sh COMMAND...     the command line of dialogs_window_host with its library
# Needs a display; under with-display.sh there is one. FXBOX_SOAK=200 drags a thousand times.
set -eu
out="$(mktemp)"
host=""
trap '[ -z "$host" ] || kill $host 2>/dev/null || true; rm -f "$out"' EXIT

# A desktop of Wine's own gives no exit status, so the last line tells.
"$@" | sed 's/\r$//' >"$out"
[ "$(tail -1 "$out")" = well ] || { cat "$out" >&2; exit 1; }

("$@" ZNFilter.Sepia.1 | sed -u 's/\r$//' >"$out") &
host=$!
for _ in $(seq 200); do
  grep -q '^ready' "$out" && break
  kill -0 $host 2>/dev/null || { echo "the host ended: $(cat "$out")" >&2; exit 1; }
  sleep 0.1
done
fail() {
  echo "$1; the host said:" >&2
  cat "$out" >&2
  exit 1
}
expect() {
  for _ in $(seq 50); do
    if grep -qx "$1" "$out"; then return; fi
    sleep 0.1
  done
  fail "missing: $1"
}
last() { grep "^$1" "$out" | tail -1; }
value() { last text | sed 's/.*=0*\([0-9]\)/\1/'; }

# Where the slider lies: the host tells it on Windows; elsewhere it is the first thing, going down the
# middle of the window, that answers a click.
if read -r _ x y width height < <(grep '^slider ' "$out"); then
  y=$((y + height / 2))
else
  window="$(xdotool search --name '^Sepia$' | tail -1)"
  eval "$(xdotool getwindowgeometry --shell "$window")"
  x=$((X + WIDTH / 4)) width=$((WIDTH / 2))
  for ((y = Y + 8; y < Y + HEIGHT / 2; y += 8)); do
    xdotool mousemove $((X + WIDTH / 2)) $y click 1
    sleep 0.3
    if grep -q '^text' "$out"; then break; fi
  done
fi

# Keys. Where no window manager runs, they go to the window under the mouse.
xdotool mousemove $((x + width / 2)) $y click 1; sleep 0.3
xdotool key --delay 40 Home; expect 'text Sepia=000'
xdotool key --delay 40 Right; expect 'text Sepia=001'
xdotool key --delay 40 Page_Up; expect 'text Sepia=011'
expect 'pixel 121 126 133'
xdotool key --delay 40 End; expect 'text Sepia=100'
expect 'pixel 73 115 177'

# The mouse takes the thumb from the right end to the left, and back and forth. Nothing is left to do
# when it is let go: the last text is there at once, and no other comes.
end=$((x + width - 8)) middle=$((x + width / 2))
while [ $end -gt $middle ]; do
  before="$(grep -c '^text' "$out")"
  xdotool mousemove $end $y mousedown 1 sleep 0.05 mousemove $((end - 20)) $y sleep 0.05 \
    mousemove $middle $y sleep 0.1
  sleep 0.4
  [ "$(value)" -gt 80 ] || break # else the thumb was not there
  xdotool mouseup 1
  xdotool key End; sleep 0.2
  end=$((end - 4))
done
dragged="$(value)"
[ "$dragged" -gt 20 ] && [ "$dragged" -lt 80 ] || fail "the thumb did not follow the mouse"
steps=()
for ((i = 0; i < ${FXBOX_SOAK:-20} * 5; ++i)); do
  steps+=(mousemove $((middle + (i * 7) % 60 - 30)) $y sleep 0.01)
done
xdotool "${steps[@]}" mousemove $middle $y
for _ in 1 2 3 4 5; do
  sleep 0.1
  [ "$(value)" != "$dragged" ] || break
done
[ "$(value)" = "$dragged" ] || fail "updates were left in a queue"
count="$(grep -c '^text' "$out")"
sleep 0.5
[ "$(grep -c '^text' "$out")" = "$count" ] || fail "updates came when nothing moved"
xdotool mouseup 1

# One pull for each change, and no change twice.
[ "$count" = "$(grep -c '^pixel' "$out")" ] || fail "not one pull for each change"
[ -z "$(grep '^text' "$out" | uniq -d)" ] || fail "a value was sent twice"
xdotool key Escape
expect 'closed'
expect 'well'
wait $host
echo "window-test: $count changes"
