#!/bin/bash
# Sizes, texts and times of all dialogs in real windows, and that opening them leaves nothing behind:
#   on-screen-test.sh COMMAND...     the command line of dialogs_on_screen
# Needs a display; under with-display.sh there is one. FXBOX_SOAK=200 opens a thousand.
set -eu
# A desktop of Wine's own gives no exit status, so the last line tells.
run() {
  "${command[@]}" "$@" | sed 's/\r$//' | tee "$out"
  [ "$(tail -1 "$out")" = well ] || { echo "on-screen-test: $1 failed" >&2; exit 1; }
}
command=("$@")
out="$(mktemp)"
trap 'rm -f "$out"' EXIT
run check
run repeat $((${FXBOX_SOAK:-20} * 5))
