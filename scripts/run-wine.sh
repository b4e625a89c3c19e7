#!/bin/bash
# Runs a Windows program: run-wine.sh PROGRAM.exe [ARGUMENT]... The exit status is the program's, and
# never 0 when it crashed. Windows need a display: see with-display.sh. FXBOX_WINEPREFIX names another
# prefix than the one that wine-prefix.sh makes.
set -u
here="$(dirname "$(readlink -f "${BASH_SOURCE[0]}")")"
WINEPREFIX="${FXBOX_WINEPREFIX:-$("$here/wine-prefix.sh" --where)}" || exit 1
if [ ! -d "$WINEPREFIX" ]; then
  echo "run-wine.sh: the Wine prefix is missing: run scripts/setup.sh windows" >&2
  exit 1
fi
export WINEPREFIX WINEARCH=win64 WINEDEBUG="${WINEDEBUG:--all}"
export WINEDLLOVERRIDES='mscoree=;mshtml=;winemenubuilder.exe='
# Everywhere the same code page (1252), and file names in UTF-8.
export LC_ALL=C.UTF-8
# Nobody dismisses a message box here: its text goes to standard error.
export FXBOX_QUIET="${FXBOX_QUIET:-1}"

# The first program starts Wine's services, which would hold our output open long after its end. So
# the server is started here with the one that component hosts need, stays a while after the last
# program, and warms up without our output.
(
  flock 9
  if wineserver -p60 </dev/null >/dev/null 2>&1 9>&-; then # 0: started now, 2: it was there
    wine net start RpcSs </dev/null >/dev/null 2>&1 9>&-
  fi
) 9>"$WINEPREFIX/run-wine.lock"

# GoogleTest keeps a file in this folder while its tests run: it is left over when the program died in
# between, and the folder is untouched when the tests never began.
room="$(mktemp -d -t fxbox-wine-XXXXXXXX)" || exit 1
trap 'rm -rf "$room"' EXIT
untouched="$(stat -c %y "$room")"
run_wine() { TEST_PREMATURE_EXIT_FILE="Z:$room/running" wine "$@"; }
# The first program that has a window starts Wine's desktop with its own standard error, and the desktop
# stays while any program has a window. Who reads a pipe to its end would wait for that: so what the
# program says goes through a pipe of ours, which is read up to the program's end.
said_all="said all $room"
run() {
  if [ ! -p /dev/stderr ]; then
    run_wine "$@"
    return
  fi
  local said pump status
  exec {said}> >(trap '' INT && exec sed -u -n "\\|$said_all|{s|$said_all||;/./p;q};p" >&2)
  pump=$!
  run_wine "$@" 2>&"$said" {said}>&-
  status=$?
  echo "$said_all" >&"$said"
  exec {said}>&-
  wait "$pump"
  return $status
}

run "$@"
status=$?
# Now and then Wine fails to start a program, without a word. Such a test program is started once more.
if [ $status -ne 0 ] && [[ $1 == *_test.exe ]] && [ "$(stat -c %y "$room")" = "$untouched" ]; then
  echo "run-wine.sh: $1 ended with status $status before its first test and is started again" >&2
  run "$@"
  status=$?
fi
if [ -e "$room/running" ] && [ $status -eq 0 ]; then status=99; fi
exit $status
