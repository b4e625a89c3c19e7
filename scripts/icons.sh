#!/bin/bash
# Draws the icons from resources/icons/ and packs them, with the scripts, into the module's resource:
# icons.sh PACKER. Every icon has a twin for when it is in focus, from the same drawing.
set -euo pipefail
source "$(dirname "${BASH_SOURCE[0]}")/common.sh"

packer="${1:?the packer is missing}"
size=28
drawn="$(mktemp -d)"
trap 'rm -rf "$drawn"' EXIT
mkdir "$drawn/icons"
for drawing in "$project"/resources/icons/*.svg; do
  name="$(basename "$drawing" .svg)"
  rsvg-convert -w $size -h $size "$drawing" -o "$drawn/icons/$name.png"
  rsvg-convert -w $size -h $size --stylesheet "$project/resources/icons/focused.css" "$drawing" \
    -o "$drawn/icons/${name}_foc.png"
done
"$packer" "$drawn/resource.box" "$drawn/icons" "$project/resources/scripts"
mv "$drawn/resource.box" "$project/resources/KvResourceStorage.box"
say "Packed resources/KvResourceStorage.box"
