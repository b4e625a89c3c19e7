#!/bin/bash
# Writes docs/dialogs.md: every dialog as it looks on both systems, over a filter with a picture.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

cd "$project"
name=tests/dialogs/dialogs_on_screen
[ -x "build/linux/$name" ] && [ -e "build/windows/$name.exe" ] || die "run make screens"
for tool in convert xvfb-run; do
  command -v $tool >/dev/null || die "$tool is missing: run scripts/setup.sh"
done
folder="$(mktemp -d)"
trap 'rm -rf "$folder"' EXIT

# A screen of its own, so that nothing lies over the windows.
say "Taking pictures"
export FXBOX_GTK_MODULE="$project/build/linux/component/libfxbox4-gtk.so.4"
export GSK_RENDERER=cairo GTK_A11Y=test GSETTINGS_BACKEND=memory LC_ALL=C.UTF-8
env -u DISPLAY scripts/with-display.sh "build/linux/$name" pictures "$folder/linux"
env -u DISPLAY scripts/with-display.sh scripts/run-wine.sh explorer /desktop=fxbox,1280x1000 \
  "build/windows/$name.exe" pictures "$folder/windows"

say "Writing docs/dialogs.md"
mkdir -p docs/dialogs
rm -f docs/dialogs/*.png
picture() { # SYSTEM CLASS
  convert "$folder/$1/$2.png" -strip -dither None -colors 64 "PNG8:docs/dialogs/$2-$1.png"
}
{
  echo "# Dialogs"
  echo
  echo "The dialog of every filter that has one, on Linux (GTK 4) and on Windows. \`make screens\`"
  echo "writes this page; \`fxbox dialog PROGID\` opens a dialog by itself."
  env -u DISPLAY scripts/with-display.sh "build/linux/$name" list | sort -t "$(printf '\t')" -k 3 |
    while IFS="$(printf '\t')" read -r class progid gloss; do
      picture linux "$class"
      picture windows "$class"
      printf '\n## %s\n\n`%s`\n\n' "$gloss" "$progid"
      printf '| Linux | Windows |\n| --- | --- |\n'
      printf '| ![](dialogs/%s-linux.png) | ![](dialogs/%s-windows.png) |\n' "$class" "$class"
    done
} >docs/dialogs.md
