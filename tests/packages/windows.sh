#!/bin/bash
# Installs the package for Windows under Wine, uses it and removes it: windows.sh [PACKAGES-FOLDER]
# For one user and for all; by its registration, and without one from the zip; by hosts of the other
# family of compilers. The registry and the folder are as before in the end. Part of `make soak`.
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

# --- hosts of the other family of compilers

# Its headers and run-time libraries are nobody's to pass on: those of the cross compiler stand in
# for the system's. Tables of virtual functions and calls are the other family's own.
crossed=/usr/x86_64-w64-mingw32/lib
library="$(dirname "$(x86_64-w64-mingw32-gcc-posix -print-libgcc-file-name)")"
otherCompiler() { # OBJECT OPTION... SOURCE
  local object="$1"
  shift
  clang-cl-14 --target=x86_64-pc-windows-msvc -U_MSC_VER -fms-compatibility-version=0 \
    -D__GNUC__=12 -D__GNUC_MINOR__=2 -D__MINGW32__ -D__MINGW64__ /X /Zl /GS- -w \
    /imsvc "$folder/zip/include" "${@:1:$#-1}" /imsvc /usr/share/mingw-w64/include \
    /c "/Fo$object" -- "${@: -1}"
}
otherLinker() { # PROGRAM OBJECT
  lld-link-14 /nodefaultlib /subsystem:console /alternatename:__image_base__=__ImageBase \
    "/out:$1" "$2" "$folder/zip/lib/msvc/Fxbox4.lib" "$crossed/crt2.o" "/libpath:$crossed" \
    libmingw32.a libmingwex.a libmsvcrt.a libkernel32.a libuser32.a libadvapi32.a libshell32.a \
    libole32.a libuuid.a "$library/libgcc.a"
}
inCpp=(/std:c++20 /GR- /EHs-c- /imsvc "$library/include/c++"
  /imsvc "$library/include/c++/x86_64-w64-mingw32")

otherHosts() {
  local hosts="$folder/hosts" host
  mkdir "$hosts"
  cp "$folder/zip/Fxbox4.dll" "$hosts/"
  cmake "-DREADME=$folder/zip/README.md" "-DOUT=$hosts/first.c" -P "$project/tests/host/ReadmeProgram.cmake"
  otherCompiler "$hosts/first.obj" "$hosts/first.c"
  mkdir -p "$hosts/own/tests/support"
  cp "$project/tests/support/Check.h" "$hosts/own/tests/support/"
  otherCompiler "$hosts/tables.obj" "/I$hosts/own" "$project/tests/host/TableHost.c"
  otherCompiler "$hosts/classes.obj" "${inCpp[@]}" "$project/tests/packages/OtherCompiler.cpp"
  for host in first tables classes; do
    check "other compiler: links $host" otherLinker "$hosts/$host.exe" "$hosts/$host.obj"
    check "other compiler: runs $host" windows "$hosts/$host.exe"
  done
}

# --- the package

snapshot "$folder/before"
mkdir "$folder/zip" "$folder/alone"
(cd "$folder/zip" && unzip -q "$zip")
cp "$folder/zip/sample/sample.exe" "$folder/alone/"

# Without registration, by the manifests beside the sample; and not without them.
check "sample by its manifest" windows "$folder/zip/sample/sample.exe"
expectChain "sample by its manifest"
if windows "$folder/alone/sample.exe" >/dev/null 2>&1; then die "the sample runs without anything"; fi
otherHosts

# shortcuts: those of the start menu that name the program.
shortcuts() { find "$("$project/scripts/wine-prefix.sh" --where)/drive_c" -name 'Fxbox Desk.lnk'; }

target="$folder/installed"
readsAndWrites() {
  printf 'P6\n2 1\n255\n\372\240\050\050\132\310' >"$folder/in.ppm"
  check "writes WebP, $1" windows "$target/fxbox.exe" apply -c '' --quality 100 \
    -o "Z:$folder/out.webp" "Z:$folder/in.ppm"
  check "reads WebP, $1" windows "$target/fxbox.exe" apply -c '' -o "Z:$folder/back.ppm" "Z:$folder/out.webp"
  cmp "$folder/in.ppm" "$folder/back.ppm" || die "$1: WebP changes the picture"
  local sample
  for sample in "$project"/tests/imageio/data/sample.*; do
    check "reads ${sample##*.}, $1" windows "$target/fxbox.exe" apply -c '' -o "Z:$folder/sample.ppm" "Z:$sample"
  done
}
for mode in CurrentUser AllUsers; do
  check "install, $mode" windows "$installer" /S "/$mode" "/D=Z:${target//\//\\}"
  [ -f "$target/fxbox.exe" ] || die "$mode: nothing was installed"
  check "program, $mode" windows "$target/fxbox.exe" filters
  [ "$(grep -c ZNFilter "$folder/said")" -ge 46 ] || die "$mode: filters are missing"
  readsAndWrites "$mode"
  check "program with windows, $mode" windows "$target/fxbox-desk.exe" --version
  grep -q '^fxbox-desk [0-9]' "$folder/said" || die "$mode: the program with windows says nothing"
  [ -n "$(shortcuts)" ] || die "$mode: the start menu lacks the program"
  hive=HKCU
  if [ "$mode" = AllUsers ]; then hive=HKLM; fi
  check "opens chain files, $mode" windows reg query "$hive\\Software\\Classes\\Fxbox.Chain.4\\shell\\open\\command"
  grep -q 'installed.fxbox-desk.exe" "%1"' "$folder/said" || die "$mode: another program opens chain files"
  check "chain files, $mode" windows reg query "$hive\\Software\\Classes\\.chain" /ve
  grep -q 'Fxbox.Chain.4' "$folder/said" || die "$mode: nobody opens chain files"
  [ -f "$target/schemas/apply-1.json" ] || die "$mode: schemas are missing"
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
  [ -z "$(shortcuts)" ] || die "$mode: the start menu still has the program"
  snapshot "$folder/after"
  diff "$folder/before" "$folder/after" || die "$mode: the registry has changed"
  say "registry and folder as before, $mode"
done
