#!/bin/sh
# Runs a command and demands that it leaves the registry as it was:
#   registry-unchanged.sh linux COMMAND...            in a registry of its own
#   registry-unchanged.sh RUNNER COMMAND...           Windows; RUNNER runs a Windows program
set -eu
system="$1"
shift
folder="$(mktemp -d)"
trap 'rm -rf "$folder"' EXIT

if [ "$system" = linux ]; then
  export XDG_CONFIG_HOME="$folder/config"
  mkdir "$XDG_CONFIG_HOME"
  # The key that holds all classes is there from the start, as everywhere.
  classes="$XDG_CONFIG_HOME/fxbox4/registry/HKEY_CLASSES_ROOT"
  mkdir -p "$classes/CLSID" "$classes/Component Categories"
  snapshot() {
    (cd "$classes" && find . | sort && find . -type f | sort | tr "\n" "\0" | xargs -0r cat) >"$1"
  }
else
  # There from the start on every Windows but a fresh Wine.
  "$system" reg add 'HKCU\Software\Classes\CLSID' /f >/dev/null
  snapshot() {
    for hive in 'HKLM\Software\Classes' 'HKCU\Software\Classes'; do
      "$system" reg export "$hive" "Z:$folder/export.reg" /y >/dev/null 2>&1 || continue
      iconv -f utf-16 "$folder/export.reg"
    done >"$1"
    # An export that holds nothing would always be equal.
    grep -qi inprocserver32 "$1" || { echo "the registry could not be read" >&2; exit 1; }
  }
fi

snapshot "$folder/before"
status=0
"$@" || status=$?
snapshot "$folder/after"
if ! diff "$folder/before" "$folder/after"; then
  echo "the registry has changed" >&2
  exit 1
fi
exit $status
