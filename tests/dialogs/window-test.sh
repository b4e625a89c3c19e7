#!/bin/bash
# Moves the slider of a dialog by mouse and keys as a person does, and reads what the host saw:
#   window-test.sh COMMAND...     the command line of dialogs_window_host with its library
# Needs a display; under with-display.sh there is one.
set -eu
"$@"

out="$(mktemp)"
trap 'kill $host 2>/dev/null || true; rm -f "$out"' EXIT
("$@" ZNFilter.Sepia.1 | sed -u 's/\r$//' >"$out") &
host=$!
for _ in $(seq 200); do
  grep -q '^ready' "$out" && break
  kill -0 $host 2>/dev/null || { echo "the host ended: $(cat "$out")" >&2; exit 1; }
  sleep 0.1
done
expect() {
  for _ in $(seq 50); do
    if grep -qx "$1" "$out"; then return; fi
    sleep 0.1
  done
  echo "missing: $1; the host said:" >&2
  cat "$out" >&2
  exit 1
}

# Where no window manager runs, keys go to the window under the mouse; the slider has the focus.
window="$(xdotool search --name '^Sepia$' | tail -1)"
eval "$(xdotool getwindowgeometry --shell "$window")"
xdotool mousemove $((X + WIDTH / 3)) $((Y + HEIGHT / 2)); sleep 0.2
xdotool key --delay 40 Right; sleep 0.1
expect 'text Sepia=001'
xdotool key --delay 40 Page_Up
expect 'text Sepia=011'
expect 'pixel 121 126 133'
xdotool key --delay 40 End
expect 'text Sepia=100'
expect 'pixel 73 115 177'
[ "$(grep -c '^text' "$out")" = "$(grep -c '^pixel' "$out")" ]
xdotool key Escape
expect 'closed'
wait $host
echo "window-test: passed"
