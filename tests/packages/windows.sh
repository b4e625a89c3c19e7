#!/bin/bash
# Installs the package for Windows under Wine, uses it and removes it: windows.sh [PACKAGES-FOLDER]
# For one user and for all; by its registration, and without one from the zip. The registry and the
# folder are as before in the end. Part of `make soak`.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/../../scripts/common.sh"

packages="$(cd "${1:-$project/build/packages}" && pwd)"
installer="$(ls "$packages"/fxbox-*-windows-x64.exe)"
zip="$(ls "$packages"/fxbox-*-windows-x64.zip)"
folder="$(mktemp -d)"
trap 'rm -rf "$folder"' EXIT
windows() { "$project/scripts/run-wine.sh" "$@"; }

# There from the start on every Windows but a fresh Wine.
for key in 'HKCU\Software\Classes\CLSID' 'HKCU\Software\Microsoft\Windows\CurrentVersion\Uninstall'; do
  windows reg add "$key" /f >/dev/null
done
snapshot() {
  local hive
  for hive in 'HKLM\Software\Classes' 'HKCU\Software\Classes' 'HKCU\Software\Fxbox' 'HKLM\Software\Fxbox' \
    'HKCU\Software\Microsoft\Windows\CurrentVersion\Uninstall' \
    'HKLM\Software\Microsoft\Windows\CurrentVersion\Uninstall'; do
    rm -f "$folder/export.reg"
    windows reg export "$hive" "Z:$folder/export.reg" /y >/dev/null 2>&1 || continue
    iconv -f utf-16 "$folder/export.reg"
  done >"$1"
  grep -qi inprocserver32 "$1" || die "the registry could not be read"
}

check() { # WHAT COMMAND...
  local what="$1"
  shift
  "$@" >"$folder/said" 2>&1 || {
    cat "$folder/said" >&2
    die "$what: failed"
  }
  say "$what"
}

expectChain() { grep -q '^ZNFilter.Sepia.1(Sepia=080)' "$folder/said" || { cat "$folder/said" >&2; die "$1: no chain text"; }; }

snapshot "$folder/before"
mkdir "$folder/zip" "$folder/alone"
(cd "$folder/zip" && unzip -q "$zip")
cp "$folder/zip/sample/sample.exe" "$folder/alone/"

# Without registration, by the manifests beside the sample; and not without them.
check "sample by its manifest" windows "$folder/zip/sample/sample.exe"
expectChain "sample by its manifest"
if windows "$folder/alone/sample.exe" >/dev/null 2>&1; then die "the sample runs without anything"; fi

target="$folder/installed"
for mode in CurrentUser AllUsers; do
  check "install, $mode" windows "$installer" /S "/$mode" "/D=Z:${target//\//\\}"
  [ -f "$target/fxbox.exe" ] || die "$mode: nothing was installed"
  check "program, $mode" windows "$target/fxbox.exe" filters
  [ "$(grep -c ZNFilter "$folder/said")" -ge 46 ] || die "$mode: filters are missing"
  if [ "$mode" = AllUsers ]; then
    check "sample by registration, $mode" windows "$folder/alone/sample.exe"
    expectChain "sample by registration, $mode"
  else
    # This Wine does not look for classes in the user's own part, so the entries have to do.
    check "registration, $mode" windows reg query 'HKCU\Software\Classes\ZNFilter.Creator.1\CLSID'
  fi
  check "uninstall, $mode" windows "$target/uninstall.exe" "/$mode" /S
  # It goes on in a copy of itself.
  for ((i = 0; i < 100; ++i)); do
    [ -e "$target" ] || break
    sleep 0.2
  done
  [ ! -e "$target" ] || { find "$target" | head; die "$mode: files are left"; }
  snapshot "$folder/after"
  diff "$folder/before" "$folder/after" || die "$mode: the registry has changed"
  say "registry and folder as before, $mode"
done
