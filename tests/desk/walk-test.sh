#!/bin/bash
# Works on a picture in the real window as a person does, and compares what is exported with what
# the command line makes of the same chain:
#   walk-test.sh FXBOX DESK [RUNNER...]     RUNNER: what runs programs of another system
# FXBOX_DESK_PICTURE, when set, names a file for a picture of the window. FXBOX_DESKTOP, when set, is
# a command that gives the window a desktop of its own. Needs a display.
set -eu
fxbox=$1
desk=$2
shift 2
folder="$(mktemp -d)"
out="$folder/out"
host=0
cd "$folder"
export XDG_STATE_HOME="$folder/state" LOCALAPPDATA="$folder/state"

# The desks of this walk, which alone have its folder in their environment: under a runner they are
# no children of ours.
desks() {
  local process
  for process in /proc/[0-9]*; do
    if grep -qs '^fxbox-desk' "$process/comm" &&
      grep -qszxF "XDG_STATE_HOME=$XDG_STATE_HOME" "$process/environ"; then
      basename "$process"
    fi
  done
}
# Whatever happened, no window stays. The runner ends by itself once its program is gone.
end() {
  desks | xargs -r kill -9 2>/dev/null || true
  for _ in $(seq 100); do
    if [ $host = 0 ] || ! kill -0 $host 2>/dev/null; then break; fi
    sleep 0.1
  done
  rm -rf "$folder"
}
trap end EXIT
trap 'exit 1' HUP INT TERM

fail() { echo "FAILED: $*" >&2; echo "the desk said:" >&2; tail -20 "$out" >&2; exit 1; }

# A picture of stripes and slopes, without a tool.
{
  printf 'P6\n480 320\n255\n'
  awk 'BEGIN { for (y = 0; y < 320; ++y) for (x = 0; x < 480; ++x)
    printf "%c%c%c", 1 + x / 4, 1 + y / 4, 1 + (x + y) % 120 }' | LC_ALL=C head -c 460800
} >photo.ppm

start() {
  : >"$out"
  (set -o pipefail; "$@" | sed -u 's/\r$//' >"$out") &
  host=$!
}
# said PATTERN: whether the desk has said such a line since the last look.
seen=0
said() { tail -n +$((seen + 1)) "$out" | grep -qE "^$1"; }
# expect PATTERN: waits until it is said.
expect() {
  for _ in $(seq 300); do
    if said "$1"; then return; fi
    sleep 0.1
  done
  fail "missing: $1"
}
forget() { seen="$(wc -l <"$out")"; }
# point NAME X Y: moves the mouse to a place of a part, in pixels from its corner.
point() {
  read -r _ _ left top _ _ < <(grep "^place $1 " "$out" | tail -1)
  xdotool mousemove $((left + $2)) $((top + $3))
  sleep 0.15
}
click() { point "$1" "$2" "$3"; xdotool click 1; sleep 0.2; }
keys() { xdotool key --delay 60 "$@"; sleep 0.2; }
# again PATTERN COMMAND...: until the desk says it. Without a window manager a key or a click is lost
# now and then.
again() {
  local pattern="$1"
  shift
  forget
  for _ in 1 2 3; do
    "$@"
    for _ in $(seq 60); do
      if said "$pattern"; then return; fi
      sleep 0.1
    done
  done
  fail "missing after $*: $pattern"
}
press() { again "$2" keys "$1"; }
lastchain() { grep '^chain ' "$out" | tail -1 | cut -d' ' -f2-; }

start "$@" ${FXBOX_DESKTOP:-} "$desk" --tell --export exported.ppm photo.ppm
expect 'ready'
expect 'shown 2'

# Three filters by the search field. Each opens its dialog, which Escape closes.
choose() {
  click search 40 10
  keys ctrl+a
  xdotool type --delay 60 "$1"
  sleep 0.3
  keys Return
}
add() {
  again "chain .*ZNFilter[.]$2[.]1" choose "$1"
  sleep 1
}
closedialog() { xdotool mousemove 60 60; sleep 0.3; keys Escape; sleep 0.5; }
add sepia Sepia
# The slider of the dialog has the focus.
forget
xdotool mousemove 60 60
sleep 0.3
keys Right Right Right Right Right
expect 'chain ZNFilter[.]Sepia[.]1[(]Sepia=005'
closedialog
add emboss Emboss
closedialog
add 'offset' Offset
closedialog

# The last one goes to the front, and back by undo.
forget
point chain 120 110
xdotool mousedown 1
sleep 0.2
for y in 90 60 30 5; do point chain 120 $y; done
xdotool mouseup 1
expect 'chain ZNFilter[.]Offset[.]1.*Sepia'
press ctrl+z 'chain ZNFilter[.]Sepia[.]1[(]Sepia=005.*Offset'
press ctrl+y 'chain ZNFilter[.]Offset[.]1'
expect 'shown 2'
if [ -n "${FXBOX_DESK_PICTURE:-}" ]; then import -window root "$FXBOX_DESK_PICTURE"; fi
press ctrl+e 'done Exported'
chain="$(lastchain)"
"$@" "$fxbox" apply --quiet -c "$chain" -o applied.ppm photo.ppm
cmp exported.ppm applied.ppm || fail 'another picture than apply makes'
cmp -s exported.ppm photo.ppm && fail 'the chain did nothing'

# The clipboard, as other programs see it.
click chain 120 66
press ctrl+c copied
press ctrl+v 'chain ZNFilter[.]Offset[.]1.*Sepia.*Sepia'
sepia="ZNFilter.Sepia.1(Sepia=005)"
xclip -selection clipboard -o -t UTF8_STRING >pasted.txt
"$@" "$fxbox" drag "$sepia" >dragged.txt
tr -d '\r\0' <pasted.txt | cmp - <(tr -d '\r' <dragged.txt) || fail 'another text on the clipboard'
"$@" "$fxbox" drag 'ZNFilter.Invert.1(Inversity=100)' | xclip -selection clipboard -i >/dev/null 2>&1
click chain 120 66
press ctrl+v 'chain .*Invert'

# The batch window begins with this picture, and a folder beside it.
press ctrl+b 'batch 1'
xdotool mousemove 60 60
sleep 0.5
press alt+s 'batched 1 1'
chain="$(lastchain)"
"$@" "$fxbox" apply --quiet -c "$chain" -o applied.ppm photo.ppm
cmp fxbox/photo.ppm applied.ppm || fail 'the batch makes another picture than apply'
keys Escape
sleep 0.5

# What was not saved comes back after the end without a warning. The runner is not the program.
if [ $# = 0 ]; then
  sleep 0.5
  desks | xargs kill -9 || fail 'the desk is gone already'
  wait $host 2>/dev/null || true
  seen=0
  start "$desk" --tell
  expect 'ready'
  expect "picture .*photo.ppm"
  expect 'shown 2'
  [ "$(lastchain)" = "$chain" ] || fail "another chain came back: $(lastchain)"
fi
# The chain is not saved, which it asks about.
leave() {
  xdotool mousemove 640 300
  keys ctrl+q
  sleep 1
  xdotool mousemove 60 60
  sleep 0.3
  keys alt+d
  for _ in $(seq 50); do kill -0 $host 2>/dev/null || return 0; sleep 0.1; done
}
for _ in 1 2 3; do
  ! kill -0 $host 2>/dev/null || leave
done
kill -0 $host 2>/dev/null && fail 'it does not end'
host=0
ls "$folder"/state/fxbox-desk/work-* >/dev/null 2>&1 && fail 'work is left behind'
exit 0
