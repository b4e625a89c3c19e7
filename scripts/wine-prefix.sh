#!/bin/bash
# Makes the Wine prefix that the Windows programs of this project run in, once, in the user's cache;
# --where tells the folder. The user's own ~/.wine is neither read nor written.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

wineFiles=/usr/lib/x86_64-linux-gnu/wine/x86_64-windows
fonts=/usr/share/wine/fonts

where() {
  local wine hash
  wine="$(dpkg-query -W -f '${Version} ' wine64 fonts-wine 2>/dev/null)" ||
    die "Wine is missing: run scripts/setup.sh windows"
  hash="$(cat - "${BASH_SOURCE[0]}" <<<"$wine" | sha256sum | cut -c1-16)"
  echo "$(cacheFolder)/wine-$hash"
}

# Most of a prefix are copies of Wine's own files: links to them serve, and 32 bit is not used.
slim() {
  local file
  rm -rf "$WINEPREFIX/drive_c/windows/syswow64"
  for file in "$WINEPREFIX"/drive_c/windows/system32/*; do
    if [ -f "$file" ] && cmp -s "$file" "$wineFiles/${file##*/}"; then
      ln -sf "$wineFiles/${file##*/}" "$file"
    fi
  done
}

# Wine links a new prefix's Documents and the like to the folders of the user: real ones keep apart.
ownUserFolders() {
  local link
  find "$WINEPREFIX/drive_c/users" -type l | while read -r link; do
    rm "$link"
    mkdir "$link"
  done
}

makePrefix() {
  say "Making the Wine prefix, once"
  export WINEPREFIX="$1" WINEARCH=win64 WINEDEBUG=-all
  export WINEDLLOVERRIDES='mscoree=;mshtml=;winemenubuilder.exe='
  unset DISPLAY WAYLAND_DISPLAY  # without one, no window tells of the progress
  {
    wine wineboot --init
    wine winecfg -v win10
    wine reg add 'HKCU\Software\Wine\WineDbg' /v ShowCrashDialog /t REG_DWORD /d 0 /f
    # A debugger at hand would take the crashed program's exit status with it. This one cannot be
    # started, so that the status is the exception's code.
    wine reg add 'HKLM\Software\Microsoft\Windows NT\CurrentVersion\AeDebug' /v Debugger /d none /f
    wine reg add 'HKLM\Software\Microsoft\Windows NT\CurrentVersion\AeDebug' /v Auto /d 1 /f
    wineserver -k -w
  } </dev/null >"$1/setup.log" 2>&1 || {
    cat "$1/setup.log" >&2
    die "the Wine prefix could not be made"
  }
  [ -f "$1/drive_c/windows/system32/kernel32.dll" ] || die "Wine made no prefix; see $1/setup.log"
  cp "$fonts"/*.ttf "$fonts"/*.fon "$1/drive_c/windows/Fonts/"
  ownUserFolders
  slim
  echo disable >"$1/.update-timestamp"
}

case "${1:-}" in
  --where) where ;;
  '') makeOnce "$(where)" makePrefix ;;
  *) die "unknown argument: $1" ;;
esac
