#!/bin/bash
# Clicks and types in the window of toolkit_window_host as a person does, and reads what it tells:
#   window-test.sh COMMAND...     the host's command line
# Needs a display; under with-display.sh there is one.
set -eu
out="$(mktemp)"
trap 'kill $host 2>/dev/null || true; rm -f "$out"' EXIT

(set -o pipefail; "$@" | sed -u 's/\r$//' >"$out") &
host=$!
for _ in $(seq 200); do
  grep -q '^ready' "$out" && break
  kill -0 $host 2>/dev/null || { echo "the host ended: $(cat "$out")" >&2; exit 1; }
  sleep 0.1
done

# point NAME X Y: moves the mouse to a place of a control, given in hundredths of its size.
point() {
  local name x y width height
  read -r _ name x y width height < <(grep "^place $1 " "$out" | tail -1) || true
  xdotool mousemove $((x + width * $2 / 100)) $((y + height * $3 / 100))
  sleep 0.1
}
click() { point "$1" "$2" "$3"; xdotool click "${4:-1}"; sleep 0.1; }
# Where no window manager runs, keys go to the window under the mouse.
keys() { xdotool key --delay 40 "$@"; sleep 0.1; }

failures=0
# expect WORDS: a line that the host must have written since the last look.
seen=0
expect() {
  for _ in $(seq 80); do
    if tail -n +$((seen + 1)) "$out" | grep -qx "$1"; then return; fi
    sleep 0.1
  done
  echo "missing: $1; the host said:" >&2
  tail -n +$((seen + 1)) "$out" >&2
  failures=$((failures + 1))
  kill -0 $host 2>/dev/null || { echo "the host has ended" >&2; exit 1; }
}
forget() { sleep 0.2; seen="$(wc -l <"$out")"; }
refuse() {
  sleep 0.3
  if tail -n +$((seen + 1)) "$out" | grep -q "$1"; then
    echo "unwanted: $1" >&2
    failures=$((failures + 1))
  fi
}

forget
# A wheel over a slider that has no focus does nothing.
click check 8 50
expect 'check 1'
forget
click slider 60 50 4
refuse '^slider'
# Drag the thumb from the middle to the right end, which is one step a pixel at most.
point slider 50 50
xdotool mousedown 1; sleep 0.1
for x in 60 75 90 110; do point slider $x 50; done
xdotool mouseup 1; point slider 90 50
expect 'slider 100'
# Back and forth: no value comes twice, and none when nothing moves any more.
point slider 90 50; xdotool mousedown 1; point slider 50 50
for i in $(seq "${FXBOX_SOAK:-20}"); do point slider $((40 + i * 7 % 30)) 50; done
forget
sleep 0.3; refuse '^slider'
xdotool mouseup 1
[ -z "$(grep '^slider' "$out" | uniq -d)" ] || { echo "a value came twice" >&2; exit 1; }
click slider 100 50; keys End; expect 'slider 100'
forget
keys Left Left
expect 'slider 99'
expect 'slider 98'
forget
keys Prior; refuse '^slider 108'
keys Home; expect 'slider 0'
keys Next; refuse '^slider -'
forget
click slider 0 50 4; expect 'slider 1'
forget
click field 50 50
keys ctrl+a 1 2 3
expect 'field 123'
forget
keys Up; expect 'field 124'
keys ctrl+a 9 9 9 9; refuse '^field 9999'
forget
click radio 8 50; expect 'radio 0'
forget
click radio 8 50; refuse '^radio'
click combo 50 50; sleep 0.3; keys Down Return; expect 'combo [01]'
forget
click list 20 10; expect 'list [01]'
click toggle 50 50; expect 'toggle 1'
click toggle 50 50; expect 'toggle 0'
forget
click button 50 50; expect 'button'
forget
click board 25 50; expect 'board press .* button 1'; expect 'board release .* button 1'
keys x; expect 'board key x'
point board 20 50; xdotool mousedown 1; point board 40 50; point board 60 50; xdotool mouseup 1
expect 'board move .* button 1'
forget
click board 50 50 3; refuse '^board press'
keys alt+a; expect 'button'
forget
# Menus: shortcuts work wherever the focus is, but where they edit a text; the bar by its mnemonics.
keys ctrl+o; expect 'menu open'
keys F5; expect 'menu grid 1'
keys F6; refuse '^menu off'
click field 50 50; forget
keys ctrl+a; refuse '^menu all'
keys F5; expect 'menu grid 0'
click board 50 50; keys ctrl+a; expect 'menu all'
forget
keys alt+f; sleep 0.5; keys Down Return
expect 'menu \(open\|all\)'
forget
# Escape closes an open menu, not the window.
keys alt+f; sleep 0.5; keys Escape; refuse '^closed'
# A window in the dock has its keys first, and the host those that it does not want.
click board 50 50; forget
keys F2; expect 'docked 1'; expect 'wanted 1'; expect 'ready'
forget
click guestslider 80 50; expect 'guest slider [1-9][0-9]*'
keys Home; expect 'guest slider 0'
keys F5; expect 'menu grid 1'
forget
click guestedit 50 50; keys h; expect 'guest edit h'
keys ctrl+a; refuse '^menu all'
keys ctrl+o; expect 'menu open'
forget
keys Escape; expect 'guest closed'; expect 'wanted 0'; refuse '^closed'
click board 50 50; forget
keys F2; expect 'wanted 1'; expect 'ready'
forget
keys F3; expect 'free'; expect 'ready'
forget
click guestslider 80 50; expect 'guest slider [1-9][0-9]*'
keys Escape; expect 'guest closed'
# A question blocks the window that asks.
click board 50 50; forget
keys F7; expect 'asking'; sleep 0.5
click check 8 50; refuse '^check'
xdotool mousemove 40 40; sleep 0.3
keys Escape; expect 'answer 1'
forget
click check 8 50; expect 'check 0'
click board 50 50; click board 50 50
keys ctrl+shift+d; expect 'look dark'
forget
keys Escape; expect 'closed'
wait $host || failures=$((failures + 1))
[ $failures -eq 0 ] || { echo "$failures wrong" >&2; exit 1; }
