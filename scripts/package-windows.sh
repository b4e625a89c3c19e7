#!/bin/bash
# Packs what build/windows holds into a zip and an installer, in build/packages/: package-windows.sh
# [BUILD-FOLDER]
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

cd "$project"
built="${1:-build/windows}"
version="$(sed -n 's/^project(fxbox4 VERSION \([0-9.]*\).*/\1/p' CMakeLists.txt)"
out=build/packages
files=build/windows-package
from=packaging/windows
rm -rf "$files" "$files.remove.nsh"
mkdir -p "$out" "$files"/{include,lib/mingw,lib/msvc,symbols,sample,licences}

# --- the parts

takeProgram() { # FILE
  cp "$1" "$files/"
  if [ -f "$1.debug" ]; then cp "$1.debug" "$files/symbols/"; fi
}
takeProgram "$built/component/Fxbox4.dll"
for format in heif raw webp; do takeProgram "$built/component/Fxbox4-$format.dll"; done
takeProgram "$built/program/fxbox.exe"
takeProgram "$built/desk/fxbox-desk.exe"
cp resources/settings/Tesmar.inf "$files/"
cp -r resources/schemas "$files/schemas"
cp LICENSE "$files/LICENSE.txt"
cp LICENSES.md README.md "$files/"

# Headers: as they are installed on the other system, without its stand-ins for this one.
cmake --install build/debian --component library --prefix "$files/installed" >/dev/null
cp -r "$files"/installed/include/fxbox4/* "$files/include/"
rm -rf "$files/installed" "$files/include/platform/native" "$files/include/platform/linux"

# An import library for either family of compilers. Names that only C++ knows are for the first.
exports="$(x86_64-w64-mingw32-objdump -p "$built/component/Fxbox4.dll" |
  sed -n '/\[Ordinal\/Name Pointer\]/,/^$/s/^[[:space:]]*\[ *[0-9]*\] *//p')"
definition() { printf 'LIBRARY Fxbox4.dll\nEXPORTS\n'; }
{ definition; echo "$exports" | grep -v '^Dll\(CanUnloadNow\|GetClassObject\|Install\|\(Unr\|R\)egisterServer\)$'; } >"$files/lib/all.def"
{ definition; echo "$exports" | grep -E '^(Fxbox|Dib|DIB|Golor|Convert|Make24)'; } >"$files/lib/msvc/Fxbox4.def"
x86_64-w64-mingw32-dlltool -d "$files/lib/all.def" -l "$files/lib/mingw/libFxbox4.dll.a"
rm "$files/lib/all.def"
llvm-dlltool-14 -m i386:x86-64 -d "$files/lib/msvc/Fxbox4.def" -l "$files/lib/msvc/Fxbox4.lib"

# The type library.
wine=/usr/lib/x86_64-linux-gnu/wine/x86_64-windows
x86_64-w64-mingw32-widl -m64 -I /usr/include/wine/wine/windows -L "$wine" -t \
  -o "$files/lib/Fxbox4.tlb" component/windows/Fxbox4.idl
cp component/windows/Fxbox4.idl "$files/lib/"

# The side-by-side manifest names every class; the program knows them.
python3=/usr/bin/python3
"$python3" scripts/side-by-side.py "$from/Fxbox4.manifest" >"$files/Fxbox4.manifest"
cp "$from"/sample/* "$files/sample/"
x86_64-w64-mingw32-gcc-posix -O2 -Icomponent "$from/sample/sample.c" -o "$files/sample/sample.exe" -lole32
cp "$files/Fxbox4.dll" "$files/Fxbox4.manifest" "$files/sample/"

for package in zlib1g libjpeg62-turbo libpng16-16 libtiff6 libwebp7 libheif1 libde265-0 libraw20 liblcms2-2 libfreetype6 libharfbuzz0b \
  libfribidi0 libcli11-dev nlohmann-json3-dev gcc-mingw-w64-x86-64-posix-runtime mingw-w64-common; do
  [ -f "/usr/share/doc/$package/copyright" ] || die "the licence of $package is missing"
  cp "/usr/share/doc/$package/copyright" "$files/licences/$package.txt"
done

# --- zip and installer

name="fxbox-$version-windows-x64"
rm -f "$out/$name.zip" "$out/$name.exe"
(cd "$files" && zip -qr "$project/$out/$name.zip" .)
# Files first, then their folders from the inside out.
{
  (cd "$files" && find . -type f -printf '%P\n') | sort | sed 's,/,\\,g; s/.*/Delete "$INSTDIR\\&"/'
  (cd "$files" && find . -mindepth 1 -type d -printf '%P\n') | sort -r | sed 's,/,\\,g; s/.*/RMDir "$INSTDIR\\&"/'
} >"$files.remove.nsh"
makensis -V2 "-DVERSION=$version" "-DFILES=$project/$files" "-DOUT=$project/$out/$name.exe" \
  "$from/fxbox.nsi"
ls "$out/$name".*
